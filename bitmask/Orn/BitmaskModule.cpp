#include <Orn/BitmaskModule.h>

#include <Orn/BitId.h>
#include <Orn/U64Bitmask.h>
#include <Vel/DefineModule.h>

VEL_MODULE(velInitU64Bitmask, Orn::BitId, Orn::U64Bitmask)
