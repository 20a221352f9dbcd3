// Notifiee.h - base of the notifiees of one notifier class: joins and leaves its list. See
// Notifier.h for an example.
//
// Owns:   what every notifiee owns: a reference to its notifier (NotifieeConst.h).
// Errors: a notifier of another class is a fatal assertion.
#pragma once

#include <Vel/Assert.h>
#include <Vel/NotifieeConst.h>
#include <Vel/Ptr.h>

namespace Vel {

template <class Notifier>
class Notifiee : public PtrInterface::NotifieeConst {
public:
    Notifiee() = default;
    Notifiee(const Notifiee&) = delete;
    Notifiee& operator=(const Notifiee&) = delete;

    ~Notifiee() override {
        const Notifier* const from = notifier();
        if (isInPassOf(from) || (from != nullptr && isRegisteredNotifiee()))
            from->notifiees().forget(this);
    }

    // Null while it is attached to nobody.
    const Notifier* notifier() const noexcept {
        return static_cast<const Notifier*>(PtrInterface::NotifieeConst::notifier().ptr());
    }

    void notifierIs(const Ptr<const PtrInterface>& notifier) override {
        const PtrInterface* const to = notifier.ptr();
        VEL_ASSERT(to == nullptr || dynamic_cast<const Notifier*>(to) != nullptr);
        const Ptr<const PtrInterface> from = PtrInterface::NotifieeConst::notifier();
        if (to == from.ptr()) return;
        if (isRegisteredNotifiee()) leave();
        // Nobody will know any more when one that is not counted dies: a running pass leaves it out
        // from now on.
        if (references() == 0 && isInPassOf(Notifiee::notifier()))
            Notifiee::notifier()->notifiees().forget(this);
        notifierAssign(to);
        if (isRegisteredNotifiee()) join();
    }

    // Without a notifier there is no list yet: the notifiee joins when it is attached; an inactive
    // one, when it is activated.
    void isRegisteredNotifieeIs(bool registered) override {
        if (hasNotificationActive()) {
            listedIs(registered);
        } else {
            Vel_BitSet flags = vel_bitSet();
            flags.is(wasRegisteredBit, registered);
            vel_bitSetIs(flags);
        }
    }

protected:
    void registrationIs(bool active) override {
        listedIs(active && vel_bitSet().test(wasRegisteredBit));
    }

private:
    void listedIs(bool listed) {
        if (listed == isRegisteredNotifiee()) return;
        NotifieeConst::isRegisteredNotifieeIs(listed);
        if (listed)
            join();
        else
            leave();
    }

    static bool isInPassOf(const Notifier* notifier) noexcept {
        return notifier != nullptr && notifier->notifiees().isInPass();
    }

    void join() {
        if (const Notifier* const to = notifier()) to->notifiees().push(this);
    }

    void leave() {
        if (const Notifier* const from = notifier()) from->notifiees().del(this);
    }
};

} // namespace Vel
