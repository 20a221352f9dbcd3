// TargetId.h - which target of a request: a bit id with constants; 8 bits.
//
// Range: 0 to 63 may stand in a target mask; 62 and 63 are aliases, which stand alone there. Other
//        numbers may be stored.
#pragma once

#include <Brixo/Export.h>
#include <Orn/BitId.h>
#include <Vel/Integers.h>
#include <Vel/Value.h>

namespace Brixo {

class BRIXO_API TargetId : public Vel::Refinement<TargetId, Orn::BitId> {
public:
    VEL_VALUE(TargetId)

    constexpr TargetId() noexcept = default;

    // Takes every number as it is.
    constexpr explicit TargetId(Vel::U8 value) noexcept : Refinement(value) {}

    static constexpr Vel::U8 min() noexcept { return 0; }

    // Stands for some one target.
    static constexpr Vel::U8 anyTarget() noexcept { return 62; }

    // Stands for every target.
    static constexpr Vel::U8 allTargets() noexcept { return 63; }

    // One more than the last target.
    static constexpr Vel::U8 max() noexcept { return 64; }

    // Whether the id is anyTarget or allTargets.
    constexpr bool alias() const noexcept {
        return static_cast<Vel::U8>(value() - anyTarget()) < 2;
    }

    static constexpr auto schema() {
        return Vel::schemaOf<Orn::BitId>.refinedAs<TargetId>("Brixo::TargetId")
            .constant(130, "min", &TargetId::min)
            .constant(131, "anyTarget", &TargetId::anyTarget)
            .constant(132, "allTargets", &TargetId::allTargets)
            .constant(133, "max", &TargetId::max)
            .computed(134, "hash", &TargetId::value, Vel::Introspection::plain)
            .computed(135, "alias", &TargetId::alias);
    }
};

static_assert(sizeof(TargetId) == 1);

VEL_VALUE_FUNCTIONS(BRIXO_API, TargetId);

} // namespace Brixo
