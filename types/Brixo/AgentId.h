// AgentId.h - which agent process; 16 bits.
#pragma once

#include <Brixo/Export.h>
#include <Vel/Integers.h>
#include <Vel/Value.h>

namespace Brixo {

class BRIXO_API AgentId : public Vel::Value<AgentId> {
public:
    VEL_VALUE(AgentId)

    constexpr AgentId() noexcept = default;

    // Takes every number as it is.
    constexpr explicit AgentId(Vel::U16 value) noexcept : value_(value) {}

    constexpr Vel::U16 value() const noexcept { return value_; }

    // No agent. Not the default, which is 0.
    static constexpr Vel::U16 null() noexcept { return 0xffff; }

    static constexpr auto schema() {
        return Vel::scalarSchema<AgentId>("Brixo::AgentId")
            .stored(2, "value", &AgentId::value_)
            .hashedBy(Vel::Hash::plainValue, 3, Vel::Introspection::plain)
            .constant(4, "null", &AgentId::null)
            .constructedFrom("value");
    }

private:
    Vel::U16 value_ = 0;
};

static_assert(sizeof(AgentId) == 2);

VEL_VALUE_FUNCTIONS(BRIXO_API, AgentId);

} // namespace Brixo
