// SharedBits.h - which low bits of the fold some keys have in common: those that tell none of them from another.
#pragma once

#include <Vel/Integers.h>
#include <bit>

namespace Vel {

class SharedBits {
public:
    // So many keys tell what others will share.
    static constexpr U32 enoughKeys = 64;

    constexpr void add(U32 fold) noexcept {
        if (keys_++ == 0) first_ = fold;
        differ_ |= fold ^ first_;
    }

    // How many keys were added.
    constexpr U32 keys() const noexcept { return keys_; }

    // The fold of the first key.
    constexpr U32 fold() const noexcept { return first_; }

    // The bits, from bit 0 on, that all keys share; 32 where their folds do not differ.
    constexpr unsigned bits() const noexcept {
        return static_cast<unsigned>(std::countr_zero(differ_));
    }

private:
    U32 keys_ = 0;
    U32 first_ = 0;
    U32 differ_ = 0;
};

} // namespace Vel
