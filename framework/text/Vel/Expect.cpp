#include <Vel/Expect.h>

namespace Vel {

namespace {
constinit thread_local Exception::IdBitArray expectedHere;
}

Expect::Expect(Exception::Id id) noexcept : outer_(expectedHere) { expectedHere.add(id); }

Expect::~Expect() { expectedHere = outer_; }

bool Expect::isExpected(Exception::IdBitArray ids) noexcept { return expectedHere.hasAnyOf(ids); }

} // namespace Vel
