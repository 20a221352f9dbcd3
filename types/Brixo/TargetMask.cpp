#include <Brixo/TargetMask.h>

#include <Vel/Assert.h>
#include <Vel/value/Define.h>
#include <algorithm>

namespace Brixo {

VEL_DEFINE_VALUE(TargetMask)

TargetMask TargetMask::maskFromDevId(DeviceId devId) {
    constexpr Vel::U16 outside = 0xff; // no target either, and it fits
    TargetMask mask;
    mask.targetIdIs(TargetId(static_cast<Vel::U8>(std::min(devId.value(), outside))), true);
    return mask;
}

bool TargetMask::targetId(TargetId target) const {
    VEL_ASSERT_AS("target.value() < TargetId::max()", target.value() < TargetId::max());
    return bitId(target);
}

void TargetMask::targetIdIs(TargetId target, bool val) {
    VEL_ASSERT_AS("target.value() < TargetId::max()", target.value() < TargetId::max());
    VEL_ASSERT_AS("!target.alias() || (val && (targets() == 0)) || (!val && (targets() == 1))",
                  !target.alias() || (val && (targets() == 0)) || (!val && (targets() == 1)));
    bitIdIs(target, val);
}

bool TargetMask::targetIdDel(TargetId target) {
    VEL_ASSERT_AS("!target.alias() || (targets() == 1)", !target.alias() || (targets() == 1));
    return bitIdDel(target);
}

} // namespace Brixo
