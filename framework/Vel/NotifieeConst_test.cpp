#include <Vel/NotifieeConst.h>

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
