// A comma stands behind the last enumerator.
// GCC: static assertion failed: enumerators of Net::Colour are names alone, numbered from 0: red, green,
// Clang: static_assert failed due to requirement '::Vel::areBareNames("red, green,")' "enumerators of Net::Colour are names alone, numbered from 0: red, green,"
#include <Vel/value/DefineEnum.h>

namespace Net {

#ifdef MISTAKE
VEL_ENUM(Net, Colour, red, green, );
#else
VEL_ENUM(Net, Colour, red, green);
#endif
VEL_ENUM_FUNCTIONS(, Colour);
VEL_DEFINE_ENUM(Colour)

} // namespace Net
