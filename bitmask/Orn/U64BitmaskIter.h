// U64BitmaskIter.h - walks the members of a mask in ascending order, each once.
//
//     for (Orn::U64BitmaskIter it(mask); it; ++it) use(it.key());
//
// Holds:  a copy of the mask, so that its later changes are not seen; the member it stands on, null
//         when there is none; and whether it is finished. In this order: a word, a byte, a byte.
// Cost:   a step finds the next member from the one before: a shift, an AND and a search for the
//         lowest bit.
// Errors: key() and operator* assert "inRange()".
#pragma once

#include <Orn/BitId.h>
#include <Orn/U64Bitmask.h>
#include <Vel/Assert.h>

namespace Orn {

class U64BitmaskIter {
public:
    // Stands on the lowest member at once, or is finished if there is none.
    constexpr explicit U64BitmaskIter(const U64Bitmask& mask) noexcept : mask_(mask) { advance(); }

    // Goes on to the next member; does nothing once finished.
    constexpr U64BitmaskIter& operator++() noexcept {
        // Each says the same; in a loop that asks inRange() the compiler needs neither of them
        // here.
        if (!isFinished_ && inRange()) advance();
        return *this;
    }

    // Whether the iterator stands on a member.
    constexpr bool inRange() const noexcept { return current_.value() < BitId::null(); }

    constexpr explicit operator bool() const noexcept { return inRange(); }

    BitId key() const {
        VEL_ASSERT_AS("inRange()", inRange());
        return current_;
    }

    // Always true: whatever the iterator stands on is a member.
    bool operator*() const {
        VEL_ASSERT_AS("inRange()", inRange());
        return true;
    }

private:
    constexpr void advance() noexcept {
        current_ = mask_.nextBitId(current_);
        isFinished_ = !inRange();
    }

    U64Bitmask mask_;
    BitId current_{BitId::null()};
    bool isFinished_ = false;
};

} // namespace Orn
