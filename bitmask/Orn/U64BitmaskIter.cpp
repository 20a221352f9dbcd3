#include <Orn/U64BitmaskIter.h>

#include <Vel/Module.h>

namespace {

// The iterator's module has no type to register.
[[gnu::constructor]] void holdStreams() { Vel::Module::holdStreams(); }

} // namespace
