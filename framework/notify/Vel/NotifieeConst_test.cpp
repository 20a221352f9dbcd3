#include <Vel/NotifieeConst.h>

#include <Vel/RangeException.h>
#include <Vel/TraceCapture.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <vector>

namespace Vel {
namespace {

class Plain : public PtrInterface {};

class Listener : public PtrInterface::NotifieeConst {
public:
    using NotifieeConst::onNotificationException;

    void onNotificationException() override {
        said += "exception ";
        if (throwsAgain) throw std::runtime_error("again");
    }

    std::string said;
    bool throwsAgain = false;

protected:
    void registrationIs(bool active) override {
        said += active ? "active " : "inactive ";
        NotifieeConst::registrationIs(active);
    }
};

TEST(NotifieeConst, IsBornActiveAndUnregistered) {
    const Ptr<Listener> listener = new Listener;
    EXPECT_TRUE(listener->hasNotificationActive());
    EXPECT_EQ(listener->references(), 1u) << "the bit is no count";
    EXPECT_FALSE(listener->isRegisteredNotifiee());
    EXPECT_EQ(listener->vel_bitSet().word(), 0x4000000U);
    EXPECT_EQ(listener->notifier(), nullptr);
    EXPECT_EQ(listener->name(), "");
    EXPECT_EQ(listener->auditErrors(9), 0u);
}

TEST(NotifieeConst, HoldsItsNotifierByOneReference) {
    const Ptr<Plain> first = new Plain;
    const Ptr<Plain> second = new Plain;
    const Ptr<PtrInterface::NotifieeConst> listener = new Listener;
    listener->notifierIs(first);
    listener->notifierIs(first);
    EXPECT_EQ(first->references(), 2u);
    listener->notifierIs(second);
    EXPECT_EQ(first->references(), 1u);
    EXPECT_EQ(second->references(), 2u);
    listener->notifierIs(nullptr);
    EXPECT_EQ(second->references(), 1u);
}

TEST(NotifieeConst, StoresTheRegisteredFlag) {
    const Ptr<Listener> listener = new Listener;
    listener->isRegisteredNotifieeIs(true);
    EXPECT_TRUE(listener->isRegisteredNotifiee());
    EXPECT_EQ(listener->auditErrors(0), 0u);
    listener->isRegisteredNotifieeIs(false);
    EXPECT_FALSE(listener->isRegisteredNotifiee());
}

TEST(NotifieeConst, ActivationCallsTheHookOnlyOnAChange) {
    const Ptr<Listener> listener = new Listener;
    listener->hasNotificationActiveIs(true);
    EXPECT_EQ(listener->said, "");
    listener->hasNotificationActiveIs(false);
    listener->hasNotificationActiveIs(false);
    EXPECT_EQ(listener->said, "inactive ");
    EXPECT_FALSE(listener->hasNotificationActive());
    listener->hasNotificationActiveIs(true);
    EXPECT_EQ(listener->said, "inactive active ");
    EXPECT_TRUE(listener->hasNotificationActive());
}

TEST(NotifieeConst, DeactivationKeepsTheRegisteredFlagInBit19) {
    const Ptr<Listener> listener = new Listener;
    listener->isRegisteredNotifieeIs(true);
    listener->hasNotificationActiveIs(false);
    EXPECT_EQ(listener->vel_bitSet().word(), 0x4080000U);
    EXPECT_FALSE(listener->isRegisteredNotifiee());
    listener->hasNotificationActiveIs(true);
    EXPECT_TRUE(listener->isRegisteredNotifiee());
    listener->isRegisteredNotifieeIs(false);
    listener->hasNotificationActiveIs(false);
    EXPECT_EQ(listener->vel_bitSet().word(), 0x4000000U);
    listener->hasNotificationActiveIs(true);
    EXPECT_FALSE(listener->isRegisteredNotifiee());
}

TEST(NotifieeConst, TheAttributeFormOfAnExceptionCallsTheOther) {
    const Ptr<Listener> listener = new Listener;
    listener->handleNotificationException();
    listener->handleNotificationException(131);
    EXPECT_EQ(listener->said, "exception exception ");
}

TEST(NotifieeConst, WhatAnExceptionHandlerThrowsIsDropped) {
    const Ptr<Listener> listener = new Listener;
    listener->throwsAgain = true;
    listener->handleNotificationException(131);
    EXPECT_EQ(listener->said, "exception ");
}

// One that decides nothing.
class Careless : public PtrInterface::NotifieeConst {
public:
    template <class Thrown, class... Attribute>
    void handleThrown(const Thrown& thrown, Attribute... attribute) {
        try {
            throw thrown;
        } catch (...) {
            handleNotificationException(attribute...);
        }
    }
};

TEST(NotifieeConst, WhatACallbackThrowsIsTracedUnlessTheNotifieeDecides) {
    TraceCapture capture;
    const Ptr<Careless> careless = new Careless;
    careless->handleThrown(std::runtime_error("no"), AttributeId{131});
    EXPECT_EQ(capture.take(), "VelNotification/1 Vel::(anonymous namespace)::Careless threw on "
                              "attribute 131: no\n");
    careless->handleThrown(7, AttributeId{131});
    EXPECT_EQ(capture.take(), "VelNotification/1 Vel::(anonymous namespace)::Careless threw on "
                              "attribute 131: something that is no exception\n");
    careless->handleThrown(RangeException("too far", {}));
    careless->handleThrown(std::runtime_error("end"), AttributeId{0});
    EXPECT_EQ(capture.take(),
              "VelNotification/1 Vel::(anonymous namespace)::Careless threw: too far\n"
              "VelNotification/1 Vel::(anonymous namespace)::Careless threw: end\n");
    const Ptr<Listener> listener = new Listener;
    try {
        throw 7;
    } catch (...) {
        listener->handleNotificationException(131);
    }
    EXPECT_EQ(capture.take(), "");
}

TEST(NotifieeConst, WhoDecidesMayHaveItTracedToo) {
    class Both : public Careless {
    public:
        using NotifieeConst::onNotificationException;

        void onNotificationException(AttributeId attribute) override {
            ++decided;
            NotifieeConst::onNotificationException(attribute);
            NotifieeConst::onNotificationException();
        }

        int decided = 0;
    };

    TraceCapture capture;
    const Ptr<Both> both = new Both;
    both->handleThrown(std::runtime_error("no"), AttributeId{131});
    const std::string lines = capture.take();
    EXPECT_EQ(both->decided, 1);
    EXPECT_TRUE(lines.ends_with("Both threw: no\n")) << lines;
    EXPECT_NE(lines.find("Both threw on attribute 131: no\n"), std::string::npos) << lines;
}

TEST(NotifieeConst, NothingIsTracedWhereNothingWasThrownOrTheHandleIsOff) {
    TraceCapture capture;
    const Ptr<Careless> careless = new Careless;
    careless->onNotificationException();
    careless->onNotificationException(131);
    TraceHandle::settingsAre("VelNotification/none");
    careless->handleThrown(7, AttributeId{131});
    TraceHandle::settingsAre("VelNotification/0-1");
    EXPECT_EQ(capture.take(), "");
}

TEST(NotifieeConst, NothingElseDoesAnythingUnlessOverridden) {
    const Ptr<PtrInterface::NotifieeConst> listener = new PtrInterface::NotifieeConst;
    listener->onAttribute(2);
    listener->onCollectionNotification("mask");
    listener->onNotification();
    listener->onNotificationException();
    listener->onZeroReferences();
    listener->handleNotification(nullptr);
    listener->handleDefault(nullptr, 2, true);
    const PtrInterface::NotifieeConst& constant = *listener;
    EXPECT_EQ(listener->activityPtr(), nullptr);
    EXPECT_EQ(listener->actsm(), nullptr);
    EXPECT_EQ(listener->velFwkActivity(), nullptr);
    EXPECT_EQ(constant.velFwkActivity(), nullptr);
    EXPECT_FALSE(listener->isStreamAdapter());
    EXPECT_EQ(listener->velRawReactor(), listener.ptr());
    EXPECT_EQ(listener->velReactor(), listener.ptr());
    listener->vel_bitSetIs(PtrInterface::NotifieeConst::Vel_BitSet(5));
    EXPECT_EQ(listener->vel_bitSet().word(), 5u);
    EXPECT_EQ(listener->references(), 1u);
}

} // namespace
} // namespace Vel
