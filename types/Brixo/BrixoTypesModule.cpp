#include <Brixo/BrixoTypesModule.h>

#include <Brixo/BrixoTypes.h>
#include <Vel/DefineModule.h>

VEL_MODULE(velInitBrixoTypes, Brixo::BrixoTypes)
