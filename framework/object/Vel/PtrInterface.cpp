#include <Vel/PtrInterface.h>

#include <Vel/PtrTrack.h>

namespace Vel {

void PtrInterface::referencesLeak() const {
    referencesInc();
    if (PtrTrack::ptrifTrackOn_) PtrTrack::ptrifLeak(this);
}

void PtrInterface::hasNotificationActiveIs(bool active) { flagIs(notificationActiveFlag, active); }

void PtrInterface::flagIs(U32 bit, bool value) noexcept {
    if (enableThreadSafePointers) {
        if (value)
            word().fetch_or(bit);
        else
            word().fetch_and(~bit);
    } else {
        word_ = value ? word_ | bit : word_ & ~bit;
    }
}

unsigned PtrInterface::auditErrors(unsigned) const { return 0; }

unsigned PtrInterface::velAuditErrors(unsigned) const { return 0; }

void PtrInterface::handleZeroRef() {
    zeroReferencesIs(true);
    if (references() == 0) delete this;
}

void PtrInterface::zeroReferencesIs(bool) {}

} // namespace Vel
