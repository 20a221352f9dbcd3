// NotifieeConst.h - one listener: who it listens to, whether it is registered, and what it is told.
//
// Owns:       one reference to its notifier, which lists its notifiees raw.
// Registered: only a registered notifiee is told anything, in the order of registration.
//             Registering twice changes nothing. A notifiee that loses its last reference leaves
//             its notifier's list by itself.
// Active:     a notifiee is born active. An inactive one is out of the list and remembers, in bit
//             19 of its flag word, whether it comes back when it is activated.
// Callbacks:  do nothing unless overridden. What a callback throws goes to the same notifiee's
//             handleNotificationException() and stops nobody. Unless the notifiee decides otherwise
//             it is traced, by the handle "VelNotification" at level 1, which is on while no
//             setting turns it off; so is what an overridden onNotificationException() throws.
// Threads:    those of the notifier: one at a time.
#pragma once

#include <Vel/AttributeId.h>
#include <Vel/BitSet.h>
#include <Vel/Export.h>
#include <Vel/Ptr.h>
#include <Vel/PtrInterface.h>
#include <Vel/String8.h>

namespace Vel {

class Activity;       // what schedules a notifiee; nothing here makes one
class ActivityConfig; // how an activity wants to be notified

class VEL_API PtrInterface::NotifieeConst : public PtrInterface {
public:
    using Vel_BitSet = BitSet<29, unsigned>;

    static constexpr unsigned initialFlags = 0x4000000U;
    static constexpr int wasRegisteredBit = 19;

    NotifieeConst();
    ~NotifieeConst() override;

    // "" unless overridden.
    virtual String8 name() const;

    const Ptr<const PtrInterface>& notifier() const noexcept { return notifier_; }

    // Attaches to a notifier, or detaches with null. A registered notifiee leaves the one list and
    // joins the end of the other.
    virtual void notifierIs(const Ptr<const PtrInterface>& notifier);

    bool isRegisteredNotifiee() const noexcept { return isRegistered_; }

    // Stores the flag; with a notifier, joins its list or leaves it (Notifiee.h). Without one, it
    // joins when it is attached.
    virtual void isRegisteredNotifieeIs(bool registered);

    // Nothing happens if the notifiee is as asked. Otherwise bit 29 of the count word changes, and
    // registrationIs() is called with the new value; before that, an inactive notifiee keeps in bit
    // 19 whether it was registered.
    void hasNotificationActiveIs(bool active) override;

    Vel_BitSet vel_bitSet() const noexcept { return flags_; }

    virtual void vel_bitSetIs(Vel_BitSet flags);

    // What a generated notifiee is told through when its attribute has no callback of its own.
    virtual void onAttribute(AttributeId attribute);
    virtual void onCollectionNotification(String8 attribute);
    virtual void onNotification();

    // A callback has thrown. Called inside the handler, so std::current_exception() is what was
    // thrown. The form with the attribute calls the form without, which traces one line:
    //     Progress threw on attribute lastProcessedCmdIndex: no pen
    // with the id where the notifier's class does not know the attribute, and without one if it is
    // 0: the end of the notifier, or nobody said. Needs no memory: without any the line is cut, and
    // the class's name as the compiler gave it.
    virtual void onNotificationException();
    virtual void onNotificationException(AttributeId attribute);

    // What the notification loop calls: the on... form, with what it throws traced and dropped.
    virtual void handleNotificationException() noexcept;
    virtual void handleNotificationException(AttributeId attribute) noexcept;

    // The last reference to the notifier is gone.
    virtual void onZeroReferences();

    // Entry points of an activity. Nothing here calls them; they do nothing unless overridden.
    virtual void handleNotification(ActivityConfig* config);
    virtual void handleDefault(ActivityConfig* config, AttributeId attribute, bool isCollection);
    virtual Activity* activityPtr() const;
    virtual Activity* actsm() const;
    virtual Activity* velFwkActivity();
    virtual const Activity* velFwkActivity() const;

    // Whether it only copies what it is told to somewhere else. False unless overridden.
    virtual bool isStreamAdapter() const;

    // The object whose callbacks run: this one unless overridden.
    virtual PtrInterface* velRawReactor();
    virtual Ptr<PtrInterface> velReactor();

    unsigned auditErrors(unsigned level) const override;

    // Leaves the notifier's list, then does what every object does.
    void handleZeroRef() override;

protected:
    // The registration hook: joins the list again if bit 19 says so, or leaves it.
    virtual void registrationIs(bool active);

    void notifierAssign(const PtrInterface* notifier) { notifier_.ptrAssign(notifier); }

private:
    Ptr<const PtrInterface> notifier_;
    Vel_BitSet flags_{initialFlags};
    bool isRegistered_ = false;
};

} // namespace Vel
