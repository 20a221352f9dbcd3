#include <Vel/Exception.h>

#include <Vel/Expect.h>
#include <utility>

namespace Vel {

Exception::Exception(String8 text, IdBitArray ids)
    : text_(std::move(text)), ids_(ids), expected_(Expect::isExpected(ids)) {}

Exception::~Exception() = default;

} // namespace Vel
