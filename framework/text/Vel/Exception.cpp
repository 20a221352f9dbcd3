#include <Vel/Exception.h>

#include <Vel/Expect.h>
#include <utility>

namespace Vel {

// NOLINTBEGIN(bugprone-throw-keyword-missing): the ids are copied, not thrown
Exception::Exception(String8 text, IdBitArray ids)
    : text_(std::move(text)), ids_(ids), expected_(Expect::isExpected(ids)) {}

// NOLINTEND(bugprone-throw-keyword-missing)

Exception::~Exception() = default;

} // namespace Vel
