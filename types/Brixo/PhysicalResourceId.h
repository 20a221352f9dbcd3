// PhysicalResourceId.h - a table or register of a device, as the hardware names it: its kind and a 64-bit number.
//
// Order: by kind, as a signed number, then by number. Hash: one-at-a-time mix over 4 bytes of kind and 8 of number.
// Size:  natural alignment: 12 bytes in 32-bit, 16 in 64-bit. Everything that leaves the process goes field by field.
#pragma once

#include <Brixo/Export.h>
#include <Brixo/ResourceType.h>
#include <Vel/Integers.h>
#include <Vel/Value.h>

namespace Brixo {

class BRIXO_API PhysicalResourceId : public Vel::Value<PhysicalResourceId> {
public:
    VEL_VALUE(PhysicalResourceId)

    // invalidResource, number 0.
    constexpr PhysicalResourceId() noexcept = default;

    constexpr PhysicalResourceId(ResourceType type, Vel::U64 id) noexcept : type_(type), id_(id) {}

    constexpr ResourceType type() const noexcept { return type_; }

    constexpr Vel::U64 id() const noexcept { return id_; }

    static constexpr auto schema() {
        return Vel::valueSchema<PhysicalResourceId>("Brixo::PhysicalResourceId")
            .stored(2, "type", &PhysicalResourceId::type_)
            .stored(3, "id", &PhysicalResourceId::id_)
            .hashedBy(Vel::Hash::byteMix, 4)
            .constructedFrom("type", "id");
    }

protected:
    ResourceType type_ = ResourceType::invalidResource;
    Vel::U64 id_ = 0;
};

VEL_VALUE_FUNCTIONS(BRIXO_API, PhysicalResourceId);

} // namespace Brixo
