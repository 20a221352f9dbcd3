// An enumerator is given a value.
// GCC: static assertion failed: enumerators of Net::Colour are names alone, numbered from 0: red = 1, green
// Clang: static_assert failed due to requirement '::Vel::areBareNames("red = 1, green")' "enumerators of Net::Colour are names alone, numbered from 0: red = 1, green"
#include <Vel/value/DefineEnum.h>

namespace Net {

#ifdef MISTAKE
VEL_ENUM(Net, Colour, red = 1, green);
#else
VEL_ENUM(Net, Colour, red, green);
#endif
VEL_ENUM_FUNCTIONS(, Colour);
VEL_DEFINE_ENUM(Colour)

} // namespace Net
