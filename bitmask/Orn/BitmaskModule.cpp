#include <Orn/BitmaskModule.h>

#include <Orn/BitmaskTypes.h>
#include <Vel/DefineModule.h>

VEL_MODULE(velInitU64Bitmask, Orn::BitmaskTypes)
