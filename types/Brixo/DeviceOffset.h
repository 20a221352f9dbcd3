// DeviceOffset.h - an address inside a device, in bytes from its start; 32 bits.
#pragma once

#include <Brixo/Export.h>
#include <Vel/Integers.h>
#include <Vel/Value.h>

namespace Brixo {

class BRIXO_API DeviceOffset : public Vel::Value<DeviceOffset> {
public:
    VEL_VALUE(DeviceOffset)

    constexpr DeviceOffset() noexcept = default;

    // Takes every number as it is.
    constexpr explicit DeviceOffset(Vel::U32 value) noexcept : value_(value) {}

    constexpr Vel::U32 value() const noexcept { return value_; }

    // No address of any device. Not the default, which is 0.
    static constexpr Vel::U32 null() noexcept { return 0xffffffff; }

    static constexpr auto schema() {
        return Vel::scalarSchema<DeviceOffset>("Brixo::DeviceOffset")
            .stored(2, "value", &DeviceOffset::value_)
            .hashedBy(Vel::Hash::plainValue, 3, Vel::Introspection::plain)
            .constant(4, "null", &DeviceOffset::null)
            .constructedFrom("value");
    }

private:
    Vel::U32 value_ = 0;
};

static_assert(sizeof(DeviceOffset) == 4);

VEL_VALUE_FUNCTIONS(BRIXO_API, DeviceOffset);

} // namespace Brixo
