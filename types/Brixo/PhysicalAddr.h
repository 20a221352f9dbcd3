// PhysicalAddr.h - a physical memory address; 32 bits. In the global namespace.
//
// Compared for equality only: addresses of different devices have no order worth having, and no
// hash.
#pragma once

#include <Brixo/Export.h>
#include <Vel/Integers.h>
#include <Vel/Value.h>

class BRIXO_API PhysicalAddr : public Vel::UnorderedValue<PhysicalAddr> {
public:
    VEL_VALUE(PhysicalAddr)

    constexpr PhysicalAddr() noexcept = default;

    // Takes every number as it is.
    constexpr explicit PhysicalAddr(Vel::U32 value) noexcept : value_(value) {}

    constexpr Vel::U32 value() const noexcept { return value_; }

    static constexpr auto schema() {
        return Vel::scalarSchema<PhysicalAddr>("PhysicalAddr")
            .stored(2, "value", &PhysicalAddr::value_)
            .constructedFrom("value")
            .hashedBy(Vel::Hash::none);
    }

private:
    Vel::U32 value_ = 0;
};

static_assert(sizeof(PhysicalAddr) == 4);

VEL_VALUE_FUNCTIONS(BRIXO_API, PhysicalAddr);
