// DeviceId.h - which device; 16 bits.
#pragma once

#include <Brixo/Export.h>
#include <Vel/Integers.h>
#include <Vel/Value.h>

namespace Brixo {

class BRIXO_API DeviceId : public Vel::Value<DeviceId> {
public:
    VEL_VALUE(DeviceId)

    constexpr DeviceId() noexcept = default;

    // Takes every number as it is.
    constexpr explicit DeviceId(Vel::U16 value) noexcept : value_(value) {}

    constexpr Vel::U16 value() const noexcept { return value_; }

    static constexpr auto schema() {
        return Vel::scalarSchema<DeviceId>("Brixo::DeviceId")
            .stored(2, "value", &DeviceId::value_)
            .hashedBy(Vel::Hash::plainValue, 3, Vel::Introspection::plain)
            .constructedFrom("value");
    }

private:
    Vel::U16 value_ = 0;
};

static_assert(sizeof(DeviceId) == 2);

VEL_VALUE_FUNCTIONS(BRIXO_API, DeviceId);

} // namespace Brixo
