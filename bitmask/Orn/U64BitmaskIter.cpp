#include <Orn/U64BitmaskIter.h>

#include <ios>

namespace {

const std::ios_base::Init stream; // the iterator's module has no type to register

} // namespace
