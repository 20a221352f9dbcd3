#include <Vel/Notifiee.h>

#include <Vel/Notifier.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace Vel {
namespace {

class Bell : public Notifier<Bell> {
public:
    class NotifieeConst : public Notifiee<Bell> {
    public:
        virtual void onRing() {}
    };

    void ring() {
        notify(130, [](NotifieeConst& notifiee) { notifiee.onRing(); });
    }
};

TEST(Notifiee, KnowsItsNotifierByItsClass) {
    const Ptr<Bell> bell = new Bell;
    const Ptr<Bell::NotifieeConst> listener = new Bell::NotifieeConst;
    EXPECT_EQ(listener->notifier(), nullptr);
    listener->notifierIs(bell);
    const Bell* const notifier = listener->notifier();
    EXPECT_EQ(notifier, bell.ptr());
    EXPECT_EQ(bell->references(), 2u);
}

TEST(Notifiee, OneThatIsNotCountedLeavesTheListWhenItIsDestroyed) {
    const Ptr<Bell> bell = new Bell;
    {
        Bell::NotifieeConst listener;
        listener.notifierIs(bell);
        listener.isRegisteredNotifieeIs(true);
        EXPECT_EQ(bell->notifiees().size(), 1u);
    }
    EXPECT_EQ(bell->notifiees().size(), 0u);
    EXPECT_EQ(bell->references(), 1u);
}

TEST(Notifiee, OneThatIsDestroyedDuringAPassIsNotCalled) {
    class Destroyer : public Bell::NotifieeConst {
    public:
        void onRing() override { doomed.reset(); }

        std::unique_ptr<Bell::NotifieeConst> doomed;
    };

    class Doomed : public Bell::NotifieeConst {
    public:
        void onRing() override { ADD_FAILURE() << "it is gone"; }
    };

    const Ptr<Bell> bell = new Bell;
    const Ptr<Destroyer> destroyer = new Destroyer;
    destroyer->notifierIs(bell);
    destroyer->isRegisteredNotifieeIs(true);
    destroyer->doomed = std::make_unique<Doomed>();
    destroyer->doomed->notifierIs(bell);
    destroyer->doomed->isRegisteredNotifieeIs(true);
    bell->ring();
    EXPECT_EQ(bell->notifiees().size(), 1u);
}

TEST(Notifiee, OneThatIsDetachedAndDestroyedDuringAPassIsNotCalled) {
    class Doomed : public Bell::NotifieeConst {
    public:
        void onRing() override { ADD_FAILURE() << "it is gone"; }
    };

    class Destroyer : public Bell::NotifieeConst {
    public:
        void onRing() override {
            unregistered->isRegisteredNotifieeIs(false);
            unregistered->notifierIs(nullptr);
            unregistered.reset();
            detached->notifierIs(nullptr);
            detached.reset();
        }

        std::unique_ptr<Doomed> unregistered = std::make_unique<Doomed>();
        std::unique_ptr<Doomed> detached = std::make_unique<Doomed>();
    };

    const Ptr<Bell> bell = new Bell;
    const Ptr<Destroyer> destroyer = new Destroyer;
    for (Bell::NotifieeConst* const listener :
         {static_cast<Bell::NotifieeConst*>(destroyer.ptr()),
          static_cast<Bell::NotifieeConst*>(destroyer->unregistered.get()),
          static_cast<Bell::NotifieeConst*>(destroyer->detached.get())}) {
        listener->notifierIs(bell);
        listener->isRegisteredNotifieeIs(true);
    }
    bell->ring();
    EXPECT_EQ(bell->notifiees().size(), 1u);
    EXPECT_EQ(bell->references(), 2u);
}

TEST(Notifiee, OneThatIsNotCountedMayLeaveInsideItsCallback) {
    class Leaving : public Bell::NotifieeConst {
    public:
        void onRing() override {
            ++rings;
            isRegisteredNotifieeIs(false);
        }

        int rings = 0;
    };

    const Ptr<Bell> bell = new Bell;
    Leaving listener;
    listener.notifierIs(bell);
    listener.isRegisteredNotifieeIs(true);
    bell->ring();
    bell->ring();
    EXPECT_EQ(listener.rings, 1);
    EXPECT_EQ(listener.references(), 0u);
}

} // namespace
} // namespace Vel
