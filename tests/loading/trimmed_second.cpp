#include <Vel/DefineModule.h>
#include <Vel/value/DefineEnum.h>

namespace Bus {

VEL_ENUM(Bus, Width, narrow, wide);
VEL_ENUM_FUNCTIONS(, Width);
VEL_DEFINE_ENUM(Width)

VEL_ENUM(Bus, Speed, slow, fast);
VEL_ENUM_FUNCTIONS(, Speed);
VEL_DEFINE_ENUM(Speed)

} // namespace Bus

VEL_MODULE(trimmedSecond, Bus::Width, Bus::Speed)
