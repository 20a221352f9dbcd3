#include <Brixo/CacheTableModule.h>

#include <Brixo/CacheTable.h>
#include <Brixo/CacheTableIndex.h>
#include <Vel/DefineModule.h>

VEL_MODULE(velInitBrixoCacheTable, Brixo::CacheTableIndex, Brixo::CacheTable)
