#include <Vel/Notifier.h>

#include <Vel/Notifiee.h>
#include <Vel/TraceCapture.h>
#include <Vel/testing/LiveObjects.h>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <string>

namespace Vel {
namespace {

int alive = 0;

class Clock : public Notifier<Clock> {
public:
    class NotifieeConst : public Notifiee<Clock> {
    public:
        virtual void onTick(int /*time*/) {}
    };

    Clock() { ++alive; }

    ~Clock() override { --alive; }

    void tick(int time) {
        notify(131, [time](NotifieeConst& notifiee) { notifiee.onTick(time); });
    }
};

class OtherClock : public Notifier<OtherClock> {
public:
    class NotifieeConst : public Notifiee<OtherClock> {};
};

std::string said;

class Listener : public Clock::NotifieeConst {
public:
    explicit Listener(std::string name) : name_(std::move(name)) { ++alive; }

    ~Listener() override { --alive; }

    void onTick(int time) override {
        said += name_ + std::to_string(time) + " ";
        if (action) action();
    }

    using NotifieeConst::onNotificationException;

    void onNotificationException(AttributeId attribute) override {
        said += name_ + "!" + std::to_string(attribute) + " ";
        if (throwsAgain) throw std::runtime_error("again");
    }

    void onZeroReferences() override { said += name_ + "0 "; }

    std::function<void()> action;
    bool throwsAgain = false;

private:
    std::string name_;
};

class NotifierInBothModes : public testing::TestWithParam<bool> {
    const Testing::LiveObjects live;

protected:
    void SetUp() override {
        VFPtrInterface::enableThreadSafePointers = GetParam();
        said.clear();
    }

    void TearDown() override {
        a->action = b->action = c->action = nullptr;
        a = b = c = nullptr;
        clock = nullptr;
        EXPECT_EQ(alive, 0);
        VFPtrInterface::enableThreadSafePointers = false;
    }

    void registerAll() {
        for (const Ptr<Listener>& listener : {a, b, c}) {
            listener->notifierIs(clock);
            listener->isRegisteredNotifieeIs(true);
        }
    }

    // What a tick says.
    std::string tick(int time) {
        said.clear();
        clock->tick(time);
        return said;
    }

    Ptr<Clock> clock = new Clock;
    Ptr<Listener> a = new Listener("a");
    Ptr<Listener> b = new Listener("b");
    Ptr<Listener> c = new Listener("c");
};

INSTANTIATE_TEST_SUITE_P(Notifier, NotifierInBothModes, testing::Bool());

TEST_P(NotifierInBothModes, TellsWhoIsRegisteredInTheOrderOfRegistration) {
    EXPECT_EQ(tick(1), "");
    a->notifierIs(clock);
    EXPECT_EQ(tick(2), "") << "attached is not registered";
    registerAll();
    EXPECT_EQ(tick(3), "a3 b3 c3 ");
    a->isRegisteredNotifieeIs(false);
    EXPECT_EQ(tick(4), "b4 c4 ");
    a->isRegisteredNotifieeIs(true);
    EXPECT_EQ(tick(5), "b5 c5 a5 ");
}

TEST_P(NotifierInBothModes, RegisteringTwiceChangesNothing) {
    registerAll();
    registerAll();
    EXPECT_EQ(clock->notifiees().size(), 3u);
    EXPECT_EQ(tick(1), "a1 b1 c1 ");
    b->isRegisteredNotifieeIs(false);
    b->isRegisteredNotifieeIs(false);
    EXPECT_EQ(tick(2), "a2 c2 ");
}

TEST_P(NotifierInBothModes, WhoRegistersBeforeItIsAttachedJoinsThen) {
    a->isRegisteredNotifieeIs(true);
    EXPECT_TRUE(a->isRegisteredNotifiee());
    EXPECT_EQ(tick(1), "");
    a->notifierIs(clock);
    EXPECT_EQ(tick(2), "a2 ");
}

TEST_P(NotifierInBothModes, CountsAreExact) {
    registerAll();
    EXPECT_EQ(clock->references(), 4u);
    EXPECT_EQ(a->references(), 1u);
    a->action = [this] {
        EXPECT_EQ(clock->references(), 5u) << "the pass keeps its notifier";
        EXPECT_EQ(a->references(), 1u) << "and counts no notifiee";
    };
    tick(1);
    EXPECT_EQ(clock->references(), 4u);
    EXPECT_EQ(a->references(), 1u);
}

TEST_P(NotifierInBothModes, DetachingLeavesTheList) {
    registerAll();
    b->notifierIs(nullptr);
    EXPECT_EQ(b->notifier(), nullptr);
    EXPECT_EQ(clock->references(), 3u);
    EXPECT_EQ(tick(1), "a1 c1 ");
    EXPECT_TRUE(b->isRegisteredNotifiee()) << "it stays what was asked";
    b->notifierIs(clock);
    EXPECT_EQ(tick(2), "a2 c2 b2 ");
    b->isRegisteredNotifieeIs(false);
    EXPECT_EQ(tick(3), "a3 c3 ");
}

TEST_P(NotifierInBothModes, MovesToAnotherNotifier) {
    registerAll();
    const Ptr<Clock> other = new Clock;
    a->notifierIs(other);
    EXPECT_TRUE(a->isRegisteredNotifiee());
    EXPECT_EQ(tick(1), "b1 c1 ");
    said.clear();
    other->tick(7);
    EXPECT_EQ(said, "a7 ");
    a->notifierIs(nullptr);
    EXPECT_EQ(other->references(), 1u);
}

TEST_P(NotifierInBothModes, ANotifieeThatDiesLeavesTheList) {
    registerAll();
    b = new Listener("d");
    EXPECT_EQ(clock->notifiees().size(), 2u);
    EXPECT_EQ(tick(1), "a1 c1 ");
}

TEST_P(NotifierInBothModes, WhoIsRemovedDuringThePassIsStillCalledInIt) {
    registerAll();
    a->action = [this] {
        b->isRegisteredNotifieeIs(false);
        c->notifierIs(nullptr);
        a->isRegisteredNotifieeIs(false);
    };
    EXPECT_EQ(tick(1), "a1 b1 c1 ");
    EXPECT_EQ(tick(2), "");
    EXPECT_EQ(b->references(), 1u);
}

TEST_P(NotifierInBothModes, WhoIsAddedDuringThePassIsNotCalledInIt) {
    a->notifierIs(clock);
    b->notifierIs(clock);
    a->isRegisteredNotifieeIs(true);
    a->action = [this] { b->isRegisteredNotifieeIs(true); };
    EXPECT_EQ(tick(1), "a1 ");
    EXPECT_EQ(tick(2), "a2 b2 ");
}

TEST_P(NotifierInBothModes, WhoLosesItsLastReferenceDuringThePassIsCalledAndThenDies) {
    registerAll();
    const Listener* const doomed = b.ptr();
    a->action = [this] { b = new Listener("d"); };
    c->action = [doomed] {
        EXPECT_EQ(doomed->references(), 1u) << "the pass holds it";
        EXPECT_EQ(alive, 5);
    };
    EXPECT_EQ(tick(1), "a1 b1 c1 ");
    EXPECT_EQ(alive, 4);
    a->action = c->action = nullptr;
    EXPECT_EQ(tick(2), "a2 c2 ");
}

TEST_P(NotifierInBothModes, TheNotifierLivesUntilThePassEnds) {
    registerAll();
    a->action = [this] {
        for (const Ptr<Listener>& listener : {a, b, c}) listener->notifierIs(nullptr);
        clock = nullptr;
    };
    clock->tick(1);
    EXPECT_EQ(said, "a1 b1 c1 ");
    EXPECT_EQ(alive, 3) << "the clock is gone";
}

TEST_P(NotifierInBothModes, WhatIsThrownGoesToTheThrowerAndStopsNobody) {
    registerAll();
    a->action = [] { throw std::runtime_error("no"); };
    b->action = [] { throw 7; };
    EXPECT_EQ(tick(1), "a1 a!131 b1 b!131 c1 ");
}

TEST_P(NotifierInBothModes, WhatAnExceptionHandlerThrowsIsTracedAndStopsNobody) {
    const TraceCapture capture;
    TraceHandle::settingsAre("VelNotification/1");
    registerAll();
    a->action = [] { throw 7; };
    a->throwsAgain = true;
    EXPECT_EQ(tick(1), "a1 a!131 b1 c1 ");
    TraceHandle::settingsAre("");
    EXPECT_EQ(const_cast<TraceCapture&>(capture).take(),
              "VelNotification/1 onNotificationException threw: again\n");
}

TEST_P(NotifierInBothModes, PassesNest) {
    registerAll();
    a->action = [this] {
        a->action = nullptr;
        c->isRegisteredNotifieeIs(false);
        clock->tick(2);
        b = new Listener("d");
    };
    EXPECT_EQ(tick(1), "a1 a2 b2 b1 c1 ");
    EXPECT_EQ(tick(3), "a3 ");
    EXPECT_EQ(alive, 4);
}

TEST_P(NotifierInBothModes, AnInactiveNotifieeIsOutOfTheListAndComesBack) {
    registerAll();
    a->hasNotificationActiveIs(false);
    EXPECT_EQ(tick(1), "b1 c1 ");
    a->hasNotificationActiveIs(true);
    EXPECT_EQ(tick(2), "b2 c2 a2 ");
    b->hasNotificationActiveIs(false);
    b->isRegisteredNotifieeIs(false);
    b->hasNotificationActiveIs(true);
    EXPECT_EQ(tick(3), "c3 a3 ");
    b->hasNotificationActiveIs(false);
    b->isRegisteredNotifieeIs(true);
    EXPECT_EQ(tick(4), "c4 a4 ");
    b->hasNotificationActiveIs(true);
    EXPECT_EQ(tick(5), "c5 a5 b5 ");
}

TEST_P(NotifierInBothModes, ZeroReferencesTellsWhoIsLeft) {
    registerAll();
    clock->zeroReferencesIs(false);
    EXPECT_EQ(said, "");
    clock->zeroReferencesIs(true);
    EXPECT_EQ(said, "a0 b0 c0 ");
}

TEST_P(NotifierInBothModes, ACallbackOfZeroReferencesMayDropTheLastReference) {
    class Detaching : public Clock::NotifieeConst {
    public:
        void onZeroReferences() override { notifierIs(nullptr); }
    };

    Ptr<Clock> other = new Clock;
    const Ptr<Detaching> detaching = new Detaching;
    detaching->notifierIs(other);
    detaching->isRegisteredNotifieeIs(true);
    Clock* const raw = other.ptr();
    other = nullptr;
    raw->zeroReferencesIs(true);
    EXPECT_EQ(alive, 4) << "the other clock is gone";
}

TEST_P(NotifierInBothModes, ANotifieeWithoutTheCallbackIsPassedOver) {
    const Ptr<Clock::NotifieeConst> silent = new Clock::NotifieeConst;
    silent->notifierIs(clock);
    silent->isRegisteredNotifieeIs(true);
    registerAll();
    EXPECT_EQ(tick(1), "a1 b1 c1 ");
    silent->notifierIs(nullptr);
}

TEST(NotifierDeathTest, ANotifierOfAnotherClassIsRefused) {
    const Ptr<Listener> listener = new Listener("a");
    const Ptr<OtherClock> other = new OtherClock;
    EXPECT_DEATH(listener->notifierIs(other),
                 "Notifiee\\.h:[0-9]+: assertion failed: to == nullptr \\|\\| dynamic_cast<const "
                 "Notifier\\*>\\(to\\) != nullptr ");
}

} // namespace
} // namespace Vel
