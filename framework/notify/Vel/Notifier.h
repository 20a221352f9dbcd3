// Notifier.h - base of a class that tells its registered notifiees what has changed.
//
//     class Clock : public Vel::Notifier<Clock> {
//     public:
//         class NotifieeConst : public Vel::Notifiee<Clock> {
//         public:
//             virtual void onTick() {}
//         };
//
//         void tick() { notify(tickId, [](NotifieeConst& notifiee) { notifiee.onTick(); }); }
//     };
//
// Pass:    notify() calls every notifiee that was registered when it began, in the order of
//          registration, each call guarded: what a notifiee throws goes to its
//          handleNotificationException(attribute), and the pass goes on. The notifier and who is
//          removed during the pass live until the pass ends.
// Cost:    nobody registered: one load. Otherwise one count pair for the snapshot, one for the
//          notifier, and a virtual call a notifiee; no memory (ListRaw.h).
// Threads: one at a time.
#pragma once

#include <Vel/AttributeId.h>
#include <Vel/ListRaw.h>
#include <Vel/NotifieeConst.h>
#include <Vel/Ptr.h>
#include <Vel/PtrInterface.h>
#include <Vel/value/Refused.h>
#include <type_traits>
#include <utility>

namespace Vel {

// `Derived` declares its NotifieeConst, by this name: the compiler refuses another. `Base` is what
// it is beside: PtrInterface, or a map's member.
template <class Derived, class Base = PtrInterface>
class Notifier : public Base {
public:
    using Notifiees = ListRaw<PtrInterface::NotifieeConst>;

    Notifier& operator=(const Notifier&) = delete;

    // Who is registered, in order. Notifiees register themselves, also with a notifier that is
    // const to them.
    Notifiees& notifiees() const noexcept { return notifiees_; }

    // Tells who is still registered that the notifier's last reference is gone.
    void zeroReferencesIs(bool zero) override {
        const Ptr<const Notifier> alive = kept();
        if (zero && !notifiees_.empty())
            pass(AttributeId{0},
                 [](PtrInterface::NotifieeConst& notifiee) { notifiee.onZeroReferences(); });
        Base::zeroReferencesIs(zero);
    }

protected:
    using Base::Base;

    // For a member function that goes on behind a pass: a callback may drop the last reference.
    // None where there is no reference: nobody counts the notifier, or this already is its end, and
    // nothing may revive it.
    Ptr<const Notifier> kept() const noexcept { return this->references() != 0 ? this : nullptr; }

    Notifier() = default;

    // A copy listens to nobody and nobody to it.
    Notifier(const Notifier& other) : Base(other) {}

    ~Notifier() override = default;

    // call(NotifieeConst&) for each notifiee; `attribute` is what has changed.
    template <class Call>
    void notify(AttributeId attribute, Call call) const {
        if (notifiees_.empty()) [[likely]]
            return;
        const Ptr<const Notifier> alive(this);
        // The framework's own, unless it is declared.
        using Notifiee = typename Derived::NotifieeConst;
        if constexpr (std::is_same_v<Notifiee, PtrInterface::NotifieeConst>)
            detail::refuse<Refused::NotifieeConstIsMissing<Derived>>();
        else
            pass(attribute, [&call](PtrInterface::NotifieeConst& notifiee) {
                call(static_cast<Notifiee&>(notifiee));
            });
    }

private:
    template <class Call>
    void pass(AttributeId attribute, Call call) const {
        const typename Notifiees::Pass snapshot(notifiees_);
        for (PtrInterface::NotifieeConst* const notifiee : snapshot) {
            if (notifiee == nullptr) continue;
            try {
                call(*notifiee);
            } catch (...) {
                notifiee->handleNotificationException(attribute);
            }
        }
    }

    mutable Notifiees notifiees_;
};

} // namespace Vel
