#include <Vel/Ptr.h>

#include <Vel/PtrInterface.h>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace Vel {
namespace {

int alive = 0;

class Base : public PtrInterface {
public:
    Base() { ++alive; }

    ~Base() override { --alive; }
};

class Derived : public Base {
public:
    Ptr<Derived> next;
};

class PtrInBothModes : public testing::TestWithParam<bool> {
protected:
    void SetUp() override { VFPtrInterface::enableThreadSafePointers = GetParam(); }

    void TearDown() override {
        EXPECT_EQ(alive, 0);
        VFPtrInterface::enableThreadSafePointers = false;
    }
};

INSTANTIATE_TEST_SUITE_P(Ptr, PtrInBothModes, testing::Bool());

TEST_P(PtrInBothModes, CountsEachHolder) {
    Ptr<Base> a = new Base;
    EXPECT_EQ(a->references(), 1u);
    {
        const Ptr<Base> b(a);
        const Ptr<Base> c = b;
        EXPECT_EQ(a->references(), 3u);
    }
    EXPECT_EQ(a->references(), 1u);
}

TEST_P(PtrInBothModes, AssigningTheHeldObjectLeavesTheCountUnchanged) {
    Ptr<Base> a = new Base;
    a = a.ptr();
    a.ptrAssign(a.ptr());
    const Ptr<Base>& alias = a;
    a = alias;
    EXPECT_EQ(a->references(), 1u);
}

TEST_P(PtrInBothModes, AssigningFromWhatTheHeldObjectHoldsIsSafe) {
    Ptr<Derived> head = new Derived;
    head->next = new Derived;
    head = head->next;
    EXPECT_EQ(alive, 1);
    EXPECT_EQ(head->references(), 1u);
}

TEST_P(PtrInBothModes, AMoveTouchesNoCount) {
    Ptr<Base> a = new Base;
    Ptr<Base> b = std::move(a);
    EXPECT_FALSE(a);
    EXPECT_EQ(b->references(), 1u);
    a = std::move(b);
    EXPECT_EQ(a->references(), 1u);
}

TEST_P(PtrInBothModes, ConvertsToTheBase) {
    const Ptr<Derived> derived = new Derived;
    const Ptr<Base> base = derived;
    const Ptr<const Base> constant = base;
    EXPECT_EQ(derived->references(), 3u);
    EXPECT_TRUE(base == derived);
    EXPECT_TRUE(constant == base);
    EXPECT_EQ(std::hash<Ptr<Base>>{}(base), std::hash<Base*>{}(derived.ptr()));
}

TEST_P(PtrInBothModes, ReleaseHandsTheReferenceOver) {
    Ptr<Base> a = new Base;
    Base* raw = a.release();
    EXPECT_EQ(raw->references(), 1u);
    raw->referencesDec();
}

TEST(Ptr, NullIsFalseAndEqualToNull) {
    const Ptr<Base> null;
    EXPECT_FALSE(null);
    EXPECT_TRUE(null == nullptr);
    EXPECT_EQ(null.ptr(), nullptr);
}

TEST(Ptr, ThreadsShareATargetWhileTheSwitchIsSet) {
    VFPtrInterface::enableThreadSafePointers = true;
    {
        const Ptr<Base> shared = new Base;
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([&shared] {
                for (int i = 0; i < 20'000; ++i) {
                    Ptr<Base> mine(shared);
                    const Ptr<Base> other(std::move(mine));
                    other->hasNotificationActiveIs(i % 2 == 0);
                }
            });
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(shared->references(), 1u);
    }
    EXPECT_EQ(alive, 0);
    VFPtrInterface::enableThreadSafePointers = false;
}

} // namespace
} // namespace Vel
