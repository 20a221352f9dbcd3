// U64BitmaskIter.h - walks the members of a mask in ascending order, each once.
//
//     for (Orn::U64BitmaskIter it(mask); it; ++it) use(it.key());
//
// Holds:  what is left of a copy of the word: later changes of the mask are not seen.
// Errors: key() and operator* assert "inRange()".
#pragma once

#include <Orn/BitId.h>
#include <Orn/U64Bitmask.h>
#include <Vel/Assert.h>
#include <Vel/Integers.h>
#include <bit>

namespace Orn {

class U64BitmaskIter {
public:
    // Stands on the lowest member at once, or is finished if there is none.
    constexpr explicit U64BitmaskIter(const U64Bitmask& mask) noexcept : left_(mask.value()) {}

    // Goes on to the next member; does nothing once finished.
    constexpr U64BitmaskIter& operator++() noexcept {
        left_ &= left_ - 1;
        return *this;
    }

    // Whether the iterator stands on a member.
    constexpr bool inRange() const noexcept { return left_ != 0; }

    constexpr explicit operator bool() const noexcept { return inRange(); }

    BitId key() const {
        VEL_ASSERT_AS("inRange()", inRange());
        return lowest();
    }

    // Always true: whatever the iterator stands on is a member.
    bool operator*() const {
        VEL_ASSERT_AS("inRange()", inRange());
        return true;
    }

private:
    // A 32-bit processor scans the halves, as the mask does.
    constexpr BitId lowest() const noexcept {
        if constexpr (sizeof(void*) < sizeof(left_))
            return U64Bitmask(left_).nextBitId(BitId(BitId::null()));
        else
            return BitId(static_cast<Vel::U8>(std::countr_zero(left_)));
    }

    Vel::U64 left_; // the member it stands on, and those behind it
};

} // namespace Orn
