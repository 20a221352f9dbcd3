// U64Bitmask.h - a set of bits in one 64-bit word.
//
// Cost:   word operations without a branch to speak of; nothing allocates. In 32-bit code the
//         halves are worked on by themselves: bit 5 of a bit id chooses the half, bits 0 to 4 the
//         position.
// Errors: bitIdIs asserts its range; the others take a bit id modulo 64.
#pragma once

#include <Orn/BitId.h>
#include <Orn/Export.h>
#include <Vel/Assert.h>
#include <Vel/Integers.h>
#include <Vel/Value.h>
#include <bit>
#include <concepts>

namespace Orn {

namespace detail {

// The lowest bit of what is left of a word, counted from `base`; null if nothing is.
template <std::unsigned_integral Word>
constexpr BitId lowest(Word left, unsigned base = 0) noexcept {
    if (left == 0) return BitId(BitId::null());
    return BitId(static_cast<Vel::U8>(base + static_cast<unsigned>(std::countr_zero(left))));
}

} // namespace detail

class ORN_API U64Bitmask : public Vel::UnorderedValue<U64Bitmask> {
public:
    VEL_VALUE(U64Bitmask)

    constexpr U64Bitmask() noexcept = default;

    constexpr explicit U64Bitmask(Vel::U64 value) noexcept : value_(value) {}

    constexpr Vel::U64 value() const noexcept { return value_; }

    // How many members the set has.
    constexpr Vel::U32 bits() const noexcept {
        return static_cast<Vel::U32>(std::popcount(low()) + std::popcount(high()));
    }

    // Whether bit `b` modulo 64 is a member.
    constexpr bool bitId(BitId b) const noexcept {
        return ((isHigh(b) ? high() : low()) >> position(b) & 1) != 0;
    }

    // Adds a bit, whatever `v` is: false clears the bit and sets it again. Members are removed by
    // bitIdDel alone. Asserts "bitId.value() < 64".
    void bitIdIs(BitId bitId, [[maybe_unused]] bool v) {
        VEL_ASSERT_AS("bitId.value() < 64", bitId.value() < 64);
        value_ |= bit(bitId);
    }

    // Removes bit `b` modulo 64; says whether it was a member.
    bool bitIdDel(BitId b) noexcept {
        const bool was = bitId(b);
        value_ &= ~bit(b);
        return was;
    }

    // The lowest member above `b`, or the lowest of all if `b` is null; null when there is none.
    // From 64 to 254, `b` is taken modulo 64.
    constexpr BitId nextBitId(BitId b) const noexcept {
        const bool isAny = b.value() == BitId::null();
        if constexpr (sizeof(void*) == sizeof(value_)) {
            return detail::lowest(isAny ? value_ : value_ & ~Vel::U64{1} << (b.value() & 63U));
        } else {
            const Vel::U32 above = isAny ? ~Vel::U32{0} : ~Vel::U32{1} << position(b);
            if (!isAny && isHigh(b)) return detail::lowest(high() & above, 32);
            const Vel::U32 lowLeft = low() & above;
            return lowLeft != 0 ? detail::lowest(lowLeft) : detail::lowest(high(), 32);
        }
    }

    static constexpr auto schema() {
        return Vel::scalarSchema<U64Bitmask>("Orn::U64Bitmask")
            .stored(2, "value", &U64Bitmask::value_)
            .computed(3, "bits", &U64Bitmask::bits)
            .keyed(4, "bitId", &U64Bitmask::bitId, &U64Bitmask::bitIdIs, &U64Bitmask::bitIdDel,
                   &U64Bitmask::bits, &U64Bitmask::nextBitId)
            .function(5, "nextBitId", &U64Bitmask::nextBitId, "bitId")
            .constructedFrom("value")
            .hashedBy(Vel::Hash::xorFold);
    }

protected:
    Vel::U64 value_ = 0;

private:
    constexpr Vel::U32 low() const noexcept { return static_cast<Vel::U32>(value_); }

    constexpr Vel::U32 high() const noexcept { return static_cast<Vel::U32>(value_ >> 32); }

    static constexpr bool isHigh(BitId b) noexcept { return (b.value() & 32) != 0; }

    static constexpr unsigned position(BitId b) noexcept { return b.value() & 31U; }

    static constexpr Vel::U64 bit(BitId b) noexcept {
        const Vel::U32 half = Vel::U32{1} << position(b);
        return isHigh(b) ? Vel::U64{half} << 32 : Vel::U64{half};
    }
};

static_assert(sizeof(U64Bitmask) == 8);

VEL_VALUE_FUNCTIONS(ORN_API, U64Bitmask);

} // namespace Orn
