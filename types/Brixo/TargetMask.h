// TargetMask.h - the targets that one request addresses: a bit for each target id below 64.
//
// Invariant: an alias (TargetId::anyTarget, TargetId::allTargets) is set only in an empty mask. It
//            is looked at when an alias itself is set or removed, and only then: an ordinary target
//            may join an alias.
// Errors:    an id that is out of range, or an alias where it may not stand, is an assertion that
//            ends the process.
// Inherited: the bit operations of Orn::U64Bitmask act on the same word and know no aliases.
//            Reflection finds its attributes by id and by name, though the mask is registered
//            without a base.
#pragma once

#include <Brixo/DeviceId.h>
#include <Brixo/Export.h>
#include <Brixo/TargetId.h>
#include <Orn/U64Bitmask.h>
#include <Vel/Integers.h>
#include <Vel/Value.h>

namespace Brixo {

class BRIXO_API TargetMask : public Vel::Refinement<TargetMask, Orn::U64Bitmask>,
                             public Vel::Value<TargetMask> {
public:
    using _Type = Vel::ValueType<TargetMask>;
    using GenericIf_ = Vel::ValueGenericIf<TargetMask>;

    VEL_VALUE(TargetMask)

    constexpr TargetMask() noexcept = default;

    constexpr explicit TargetMask(Vel::U64 value) noexcept : Refinement(value) {}

    // The mask of the one target whose number is the device id's. Asserts as targetIdIs() does; no
    // part of the device id is cut off before.
    static TargetMask maskFromDevId(DeviceId devId);

    // How many targets the mask has.
    constexpr Vel::U32 targets() const noexcept { return bits(); }

    // Whether a target is in the mask. Asserts "target.value() < TargetId::max()".
    bool targetId(TargetId target) const;
    // Adds a target, whatever `val` is: false clears it and sets it again, and changes only what is
    // asserted. Asserts "target.value() < TargetId::max()", then "!target.alias() || (val &&
    // (targets() == 0)) || (!val && (targets() == 1))".
    void targetIdIs(TargetId target, bool val);
    // Removes a target, its number taken modulo 64; says whether it was there. Asserts
    // "!target.alias() || (targets() == 1)".
    bool targetIdDel(TargetId target);

    // The lowest target above `target`, or the lowest of all if that is null; null when there is
    // none. Numbers from 64 to 254 are taken modulo 64.
    constexpr TargetId nextTargetId(TargetId target) const noexcept {
        return TargetId(nextBitId(target).value());
    }

    static constexpr auto schema() {
        return Vel::schemaOf<Orn::U64Bitmask>.extendedAs<TargetMask>("Brixo::TargetMask")
            .function(130, "maskFromDevId", &TargetMask::maskFromDevId, "devId")
            .computed(131, "targets", &TargetMask::targets)
            .keyed(132, "targetId", &TargetMask::targetId, &TargetMask::targetIdIs,
                   &TargetMask::targetIdDel, &TargetMask::targets, &TargetMask::nextTargetId)
            .function(133, "nextTargetId", &TargetMask::nextTargetId, "targetId")
            .constructedFrom("value");
    }
};

static_assert(sizeof(TargetMask) == 8);

VEL_VALUE_FUNCTIONS(BRIXO_API, TargetMask);

} // namespace Brixo
