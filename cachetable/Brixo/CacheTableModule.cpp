#include <Brixo/CacheTableModule.h>

#include <Brixo/CacheTableTypes.h>
#include <Vel/DefineModule.h>

VEL_MODULE(velInitBrixoCacheTable, Brixo::CacheTableTypes)
