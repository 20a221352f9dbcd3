// DalId.h - which access layer of a device (DAL); 8 bits.
#pragma once

#include <Brixo/Export.h>
#include <Vel/Integers.h>
#include <Vel/Value.h>

namespace Brixo {

class BRIXO_API DalId : public Vel::Value<DalId> {
public:
    VEL_VALUE(DalId)

    constexpr DalId() noexcept = default;

    // Takes every number as it is.
    constexpr explicit DalId(Vel::U8 id) noexcept : id_(id) {}

    constexpr Vel::U8 id() const noexcept { return id_; }

    // No access layer. Not the default, which is 0.
    static constexpr Vel::U8 invalidId() noexcept { return 255; }

    static constexpr auto schema() {
        return Vel::scalarSchema<DalId>("Brixo::DalId")
            .stored(2, "id", &DalId::id_)
            .constant(3, "invalidId", &DalId::invalidId)
            .hashedBy(Vel::Hash::byteMix, 4)
            .constructedFrom("id");
    }

private:
    Vel::U8 id_ = 0;
};

static_assert(sizeof(DalId) == 1);

VEL_VALUE_FUNCTIONS(BRIXO_API, DalId);

} // namespace Brixo
