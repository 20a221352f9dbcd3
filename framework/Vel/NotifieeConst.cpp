#include <Vel/NotifieeConst.h>

#include <Vel/Exception.h>
#include <Vel/TraceHandle.h>
#include <Vel/traceHelper.h>
#include <exception>

namespace Vel {

namespace {

const TraceHandle& trace() {
    static const auto* const handle = new TraceHandle("VelNotification", true);
    return *handle;
}

// Inside a handler: what was thrown, in words.
String8 thrownText() {
    try {
        throw;
    } catch (const Exception& thrown) {
        return thrown.text();
    } catch (const std::exception& thrown) {
        return String8(thrown.what());
    } catch (...) {
        return String8("something that is no exception");
    }
}

// Runs `handler` inside a handler, and lets nothing out of it.
template <class Handler>
void dropThrown(Handler handler) noexcept {
    try {
        handler();
    } catch (...) {
        try {
            VEL_TRACE(trace(), 1, "onNotificationException threw: " << thrownText());
        } catch (...) { // no memory even to say so
        }
    }
}

} // namespace

PtrInterface::NotifieeConst::NotifieeConst() { flagIs(notificationActiveFlag, true); }

PtrInterface::NotifieeConst::~NotifieeConst() = default;

String8 PtrInterface::NotifieeConst::name() const { return {}; }

void PtrInterface::NotifieeConst::notifierIs(const Ptr<const PtrInterface>& notifier) {
    notifier_.ptrAssign(notifier.ptr());
}

void PtrInterface::NotifieeConst::isRegisteredNotifieeIs(bool registered) {
    isRegistered_ = registered;
}

void PtrInterface::NotifieeConst::hasNotificationActiveIs(bool active) {
    if (active == hasNotificationActive()) return;
    if (!active) flags_.is(wasRegisteredBit, isRegistered_);
    flagIs(notificationActiveFlag, active);
    registrationIs(active);
}

void PtrInterface::NotifieeConst::registrationIs(bool active) {
    isRegisteredNotifieeIs(active && flags_.test(wasRegisteredBit));
}

void PtrInterface::NotifieeConst::vel_bitSetIs(Vel_BitSet flags) { flags_ = flags; }

void PtrInterface::NotifieeConst::onAttribute(AttributeId) {}

void PtrInterface::NotifieeConst::onCollectionNotification(String8) {}

void PtrInterface::NotifieeConst::onNotification() {}

void PtrInterface::NotifieeConst::onNotificationException() {}

void PtrInterface::NotifieeConst::onNotificationException(AttributeId) {
    onNotificationException();
}

void PtrInterface::NotifieeConst::handleNotificationException() noexcept {
    dropThrown([this] { onNotificationException(); });
}

void PtrInterface::NotifieeConst::handleNotificationException(AttributeId attribute) noexcept {
    dropThrown([this, attribute] { onNotificationException(attribute); });
}

void PtrInterface::NotifieeConst::onZeroReferences() {}

void PtrInterface::NotifieeConst::handleNotification(ActivityConfig*) {}

void PtrInterface::NotifieeConst::handleDefault(ActivityConfig*, AttributeId, bool) {}

Activity* PtrInterface::NotifieeConst::activityPtr() const { return nullptr; }

Activity* PtrInterface::NotifieeConst::actsm() const { return nullptr; }

Activity* PtrInterface::NotifieeConst::velFwkActivity() { return nullptr; }

const Activity* PtrInterface::NotifieeConst::velFwkActivity() const { return nullptr; }

bool PtrInterface::NotifieeConst::isStreamAdapter() const { return false; }

PtrInterface* PtrInterface::NotifieeConst::velRawReactor() { return this; }

Ptr<PtrInterface> PtrInterface::NotifieeConst::velReactor() { return velRawReactor(); }

unsigned PtrInterface::NotifieeConst::auditErrors(unsigned) const {
    const bool isSound = !isRegistered_ || hasNotificationActive();
    return isSound ? 0 : 1;
}

void PtrInterface::NotifieeConst::handleZeroRef() {
    if (!isRegistered_) {
        PtrInterface::handleZeroRef();
        return;
    }
    const Ptr<NotifieeConst> leaving(
        this); // a running pass may keep it; else its end comes back here
    isRegisteredNotifieeIs(false);
    isRegistered_ = false;
}

} // namespace Vel
