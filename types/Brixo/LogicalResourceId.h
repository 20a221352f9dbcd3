// LogicalResourceId.h - a table or register of a device, as requesters name it: its kind and a 64-bit number.
//
// Order: by kind, as a signed number, then by number. Hash: one-at-a-time mix over 4 bytes of kind and 8 of number.
// Size:  natural alignment: 12 bytes in 32-bit, 16 in 64-bit. Everything that leaves the process goes field by field.
#pragma once

#include <Brixo/Export.h>
#include <Brixo/ResourceType.h>
#include <Vel/Integers.h>
#include <Vel/Value.h>

namespace Brixo {

class BRIXO_API LogicalResourceId : public Vel::Value<LogicalResourceId> {
public:
    VEL_VALUE(LogicalResourceId)

    // invalidResource, number 0.
    constexpr LogicalResourceId() noexcept = default;

    constexpr LogicalResourceId(ResourceType type, Vel::U64 id) noexcept : type_(type), id_(id) {}

    constexpr ResourceType type() const noexcept { return type_; }

    constexpr Vel::U64 id() const noexcept { return id_; }

    static constexpr auto schema() {
        return Vel::valueSchema<LogicalResourceId>("Brixo::LogicalResourceId")
            .stored(2, "type", &LogicalResourceId::type_)
            .stored(3, "id", &LogicalResourceId::id_)
            .hashedBy(Vel::Hash::byteMix, 4)
            .constructedFrom("type", "id");
    }

protected:
    ResourceType type_ = ResourceType::invalidResource;
    Vel::U64 id_ = 0;
};

VEL_VALUE_FUNCTIONS(BRIXO_API, LogicalResourceId);

} // namespace Brixo
