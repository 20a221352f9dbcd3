#include <Vel/NotifieeConst.h>

#include <Vel/TraceHandle.h>
#include <Vel/VelAttr.h>
#include <Vel/VelType.h>
#include <Vel/detail/typeName.h>
#include <Vel/traceHelper.h>
#include <exception>
#include <ostream>
#include <typeinfo>
#include <utility>

namespace Vel {

namespace {

const TraceHandle& trace() {
    static const auto* const handle = new TraceHandle("VelNotification", true);
    return *handle;
}

// The attribute whose callback has thrown, while its notifiee is asked what to do; 0 if it is none.
constinit thread_local AttributeId thrownOn = 0;

class ThrownOn {
public:
    explicit ThrownOn(AttributeId attribute) noexcept
        : outer_(std::exchange(thrownOn, attribute)) {}

    ~ThrownOn() { thrownOn = outer_; }

    ThrownOn(const ThrownOn&) = delete;
    ThrownOn& operator=(const ThrownOn&) = delete;

private:
    AttributeId outer_;
};

// What is being handled, in words; nothing here needs memory.
struct Thrown {
    friend std::ostream& operator<<(std::ostream& out, const Thrown&) noexcept {
        try {
            throw;
        } catch (const std::exception& thrown) {
            return out << thrown.what();
        } catch (...) {
            return out << "something that is no exception";
        }
    }
};

struct ClassOf {
    const PtrInterface& object;

    friend std::ostream& operator<<(std::ostream& out, const ClassOf& of) noexcept {
        detail::writeTypeName(out, typeid(of.object));
        return out;
    }
};

// Null where the notifier's class does not know it, or cannot be described for want of memory.
const VelAttr* attributeOf(const PtrInterface* notifier, AttributeId id) noexcept {
    try {
        return notifier != nullptr ? notifier->fwkType()->attr(id) : nullptr;
    } catch (...) {
        return nullptr;
    }
}

// " on attribute lastProcessedCmdIndex", or its id; nothing for 0.
struct On {
    const PtrInterface* notifier;
    AttributeId id;

    friend std::ostream& operator<<(std::ostream& out, const On& on) noexcept {
        if (on.id == 0) return out;
        out << " on attribute ";
        const VelAttr* const attribute = attributeOf(on.notifier, on.id);
        return attribute != nullptr ? out << attribute->name() : out << on.id;
    }
};

// Runs `handler` inside a handler, and lets nothing out of it.
template <class Handler>
void dropThrown(Handler handler) noexcept {
    try {
        handler();
    } catch (...) {
        try {
            VEL_TRACE(trace(), 1, "onNotificationException threw: " << Thrown());
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
    trace(); // made while there is memory, for the time when there may be none
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

void PtrInterface::NotifieeConst::onNotificationException() {
    if (std::current_exception() == nullptr) return;
    VEL_TRACE(trace(), 1,
              ClassOf{*this} << " threw" << On{notifier_.ptr(), thrownOn} << ": " << Thrown());
}

void PtrInterface::NotifieeConst::onNotificationException(AttributeId attribute) {
    const ThrownOn on(attribute);
    onNotificationException();
}

void PtrInterface::NotifieeConst::handleNotificationException() noexcept {
    const ThrownOn on(0);
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
