// BitId.h - names one bit of a 64-bit word.
//
// Range: any byte may be stored; only the operations of a mask care whether it is below 64.
#pragma once

#include <Orn/Export.h>
#include <Vel/Integers.h>
#include <Vel/Value.h>

namespace Orn {

class ORN_API BitId : public Vel::Value<BitId> {
public:
    VEL_VALUE(BitId)

    constexpr BitId() noexcept = default;

    constexpr explicit BitId(Vel::U8 value) noexcept : value_(value) {}

    // The bit with weight 2^value; 0 is the least significant.
    constexpr Vel::U8 value() const noexcept { return value_; }

    // Names no bit: the position before the first and after the last.
    static constexpr Vel::U8 null() noexcept { return 255; }

    static constexpr auto schema() {
        return Vel::scalarSchema<BitId>("Orn::BitId")
            .stored(2, "value", &BitId::value_)
            .constant(3, "null", &BitId::null)
            .constructedFrom("value")
            .hashedBy(Vel::Hash::plainValue);
    }

protected:
    Vel::U8 value_ = 0;
};

static_assert(sizeof(BitId) == 1);

VEL_VALUE_FUNCTIONS(ORN_API, BitId);

} // namespace Orn
