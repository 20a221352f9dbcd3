#include <Brixo/DalProcessingStatus.h>

#include <Brixo/testing/CollectionConformance.h>
#include <Vel/TraceCapture.h>
#include <Vel/testing/LiveObjects.h>
#include <Vel/testing/Registered.h>
#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace Brixo {
namespace {

using Vel::Ptr;
using Vel::U32;
using Vel::U64;

struct ErrorCodes {
    using Owner = DalProcessingStatus;

    static Ptr<Owner> owner() { return dalProcessingStatusFactory(DalId(1)); }

    static U64 key(U32 n) { return U64{n} << 32 | n; } // all of one hash

    static int value(U32 n, U32 variant) { return static_cast<int>(n * 8 + variant) - 12'000; }

    static auto create(Owner& owner, U32 n, U32 variant) {
        return owner.newErrorCode(key(n), value(n, variant));
    }

    static void set(Owner& owner, U32 n, U32 variant) {
        owner.errorCodeIs(key(n), value(n, variant));
    }

    BRIXO_COLLECTION_FUNCTIONS(errorCode, ErrorCode)
};

struct ErrorBuckets {
    using Owner = DalProcessingStatus;

    static Ptr<Owner> owner() { return dalProcessingStatusFactory(DalId(1)); }

    static int key(U32 n) { return 1500 - static_cast<int>(n); }

    static U32 value(U32 n, U32 variant) { return n * 8 + variant + 1; }

    static auto create(Owner& owner, U32 n, U32 variant) {
        return owner.newErrorBucket(key(n), value(n, variant));
    }

    static void set(Owner& owner, U32 n, U32 variant) {
        owner.errorBucketIs(key(n), value(n, variant));
    }

    BRIXO_COLLECTION_FUNCTIONS(errorBucket, ErrorBucket)
};

} // namespace

namespace Testing {
INSTANTIATE_TYPED_TEST_SUITE_P(ErrorCode, CollectionConformance, ErrorCodes);
INSTANTIATE_TYPED_TEST_SUITE_P(ErrorBucket, CollectionConformance, ErrorBuckets);
} // namespace Testing

namespace {

int alive = 0;

class Watcher : public DalProcessingStatus::NotifieeConst {
public:
    Watcher() { ++alive; }

    ~Watcher() override { --alive; }

    void onLastProcessedCmdIndex() override {
        seen.push_back(notifier()->lastProcessedCmdIndex());
        if (action) action();
    }

    using NotifieeConst::onNotificationException;

    void onNotificationException(Vel::AttributeId attribute) override {
        thrown.push_back(attribute);
    }

    void onZeroReferences() override { ++orphaned; }

    std::vector<U64> seen;
    std::vector<Vel::AttributeId> thrown;
    int orphaned = 0;
    std::function<void()> action;
};

class DalProcessingStatusInBothModes : public testing::TestWithParam<bool> {
    const Vel::Testing::LiveObjects live;

protected:
    void SetUp() override { Vel::VFPtrInterface::enableThreadSafePointers = GetParam(); }

    void TearDown() override {
        EXPECT_EQ(alive, 0);
        Vel::VFPtrInterface::enableThreadSafePointers = false;
    }

    static Ptr<Watcher> watcherOf(const Ptr<DalProcessingStatus>& status) {
        Ptr<Watcher> watcher = new Watcher;
        watcher->notifierIs(status);
        watcher->isRegisteredNotifieeIs(true);
        return watcher;
    }
};

INSTANTIATE_TEST_SUITE_P(DalProcessingStatus, DalProcessingStatusInBothModes, testing::Bool());

TEST_P(DalProcessingStatusInBothModes, StartsWithNothing) {
    const Ptr<DalProcessingStatus> status = dalProcessingStatusFactory(DalId(3));
    EXPECT_EQ(status->references(), 1u);
    EXPECT_EQ(status->dalId(), DalId(3));
    EXPECT_EQ(status->fwkKey(), DalId(3));
    EXPECT_EQ(status->lastEnqueuedCmdIndex(), 0u);
    EXPECT_EQ(status->lastProcessedCmdIndex(), 0u);
    EXPECT_FALSE(status->trackErrors());
    EXPECT_EQ(status->errorCodes(), 0u);
    EXPECT_EQ(status->errorBuckets(), 0u);
    EXPECT_TRUE(status->notifiees().empty());
    EXPECT_EQ(status->auditErrors(9), 0u);
}

TEST_P(DalProcessingStatusInBothModes, StoresWithoutTellingAnybody) {
    const Ptr<DalProcessingStatus> status = dalProcessingStatusFactory(DalId(3));
    const Ptr<Watcher> watcher = watcherOf(status);
    status->lastEnqueuedCmdIndexIs(0x100000007);
    status->trackErrorsIs(true);
    status->errorCodeIs(7, -1);
    status->errorBucketIs(-7, 1);
    status->errorCodeNotify(7);
    status->errorBucketNotify(-7);
    EXPECT_EQ(status->lastEnqueuedCmdIndex(), 0x100000007u);
    EXPECT_TRUE(status->trackErrors());
    EXPECT_TRUE(watcher->seen.empty());
}

TEST_P(DalProcessingStatusInBothModes, TellsEachWatcherOfANewIndexOnce) {
    const Ptr<DalProcessingStatus> status = dalProcessingStatusFactory(DalId(3));
    const Ptr<Watcher> first = watcherOf(status);
    const Ptr<Watcher> second = watcherOf(status);
    EXPECT_EQ(status->references(), 3u);
    status->lastProcessedCmdIndexIs(0);
    status->lastProcessedCmdIndexIs(5);
    status->lastProcessedCmdIndexIs(5);
    status->lastProcessedCmdIndexIs(4);
    EXPECT_EQ(first->seen, (std::vector<U64>{5, 4})) << "it may go back";
    EXPECT_EQ(second->seen, first->seen);
    EXPECT_EQ(status->references(), 3u);
    EXPECT_EQ(first->references(), 1u);
}

TEST_P(DalProcessingStatusInBothModes, AWatcherThatThrowsStopsNobody) {
    const Ptr<DalProcessingStatus> status = dalProcessingStatusFactory(DalId(3));
    const Ptr<Watcher> first = watcherOf(status);
    const Ptr<Watcher> second = watcherOf(status);
    first->action = [] { throw std::runtime_error("no"); };
    status->lastProcessedCmdIndexIs(5);
    EXPECT_EQ(first->thrown, std::vector<Vel::AttributeId>{132});
    EXPECT_EQ(second->seen, std::vector<U64>{5});
    EXPECT_TRUE(second->thrown.empty());
}

// It decides nothing about what its callbacks throw.
class Careless : public DalProcessingStatus::NotifieeConst {
public:
    void onLastProcessedCmdIndex() override {
        if (leaves) notifierIs(nullptr);
        throw std::runtime_error("no pen");
    }

    bool leaves = false;
};

TEST_P(DalProcessingStatusInBothModes, WhatAWatcherThrowsIsTracedByDefault) {
    const Ptr<DalProcessingStatus> status = dalProcessingStatusFactory(DalId(3));
    const Ptr<Careless> careless = new Careless;
    careless->notifierIs(status);
    careless->isRegisteredNotifieeIs(true);
    const Ptr<Watcher> second = watcherOf(status);
    Vel::TraceCapture capture;
    status->lastProcessedCmdIndexIs(5);
    EXPECT_EQ(capture.take(), "VelNotification/1 Brixo::(anonymous namespace)::Careless threw on "
                              "attribute lastProcessedCmdIndex: no pen\n");
    careless->leaves = true;
    status->lastProcessedCmdIndexIs(6);
    EXPECT_EQ(capture.take(), "VelNotification/1 Brixo::(anonymous namespace)::Careless threw on "
                              "attribute 132: no pen\n");
    EXPECT_EQ(second->seen, (std::vector<U64>{5, 6}));
}

TEST_P(DalProcessingStatusInBothModes, AWatcherMayComeAndGoInsideACallback) {
    const Ptr<DalProcessingStatus> status = dalProcessingStatusFactory(DalId(3));
    const Ptr<Watcher> first = watcherOf(status);
    const Ptr<Watcher> second = watcherOf(status);
    Ptr<Watcher> third;
    first->action = [&] {
        first->isRegisteredNotifieeIs(false);
        second->isRegisteredNotifieeIs(false);
        third = watcherOf(status);
    };
    status->lastProcessedCmdIndexIs(5);
    EXPECT_EQ(second->seen, std::vector<U64>{5}) << "still called";
    EXPECT_TRUE(third->seen.empty()) << "not yet called";
    status->lastProcessedCmdIndexIs(6);
    EXPECT_EQ(first->seen, std::vector<U64>{5});
    EXPECT_EQ(third->seen, std::vector<U64>{6});
    first->action = nullptr;
}

TEST_P(DalProcessingStatusInBothModes, AWatcherMaySetTheIndexAgain) {
    const Ptr<DalProcessingStatus> status = dalProcessingStatusFactory(DalId(3));
    const Ptr<Watcher> first = watcherOf(status);
    const Ptr<Watcher> second = watcherOf(status);
    first->action = [&] { status->lastProcessedCmdIndexIs(9); };
    status->lastProcessedCmdIndexIs(5);
    EXPECT_EQ(first->seen, (std::vector<U64>{5, 9}));
    EXPECT_EQ(second->seen, (std::vector<U64>{9, 9}));
}

TEST_P(DalProcessingStatusInBothModes, AWatcherKeepsItsStatus) {
    Ptr<DalProcessingStatus> status = dalProcessingStatusFactory(DalId(3));
    const Ptr<Watcher> watcher = watcherOf(status);
    status = nullptr;
    EXPECT_EQ(watcher->notifier()->dalId(), DalId(3));
    EXPECT_EQ(watcher->notifier()->references(), 1u);
}

TEST_P(DalProcessingStatusInBothModes, WatchersAreToldThatTheirStatusIsGone) {
    const Ptr<DalProcessingStatus> status = dalProcessingStatusFactory(DalId(3));
    const Ptr<Watcher> watcher = watcherOf(status);
    status->zeroReferencesIs(true);
    EXPECT_EQ(watcher->orphaned, 1);
}

TEST_P(DalProcessingStatusInBothModes, ANotifieeWithoutACallbackIsPassedOver) {
    const Ptr<DalProcessingStatus> status = dalProcessingStatusFactory(DalId(3));
    const Ptr<DalProcessingStatus::NotifieeConst> silent = new DalProcessingStatus::NotifieeConst;
    silent->notifierIs(status);
    silent->isRegisteredNotifieeIs(true);
    status->lastProcessedCmdIndexIs(1);
    EXPECT_EQ(status->notifiees().size(), 1u);
}

TEST(DalProcessingStatus, CountsErrorsInBuckets) {
    const Ptr<DalProcessingStatus> status = dalProcessingStatusFactory(DalId(3));
    EXPECT_EQ(status->errorBucketInc(7, 3), 3u);
    EXPECT_EQ(status->errorBucket(7), 3u);
    const auto* const node = status->errorBucket().find(7);
    EXPECT_EQ(status->errorBucketInc(7, 3), 6u);
    EXPECT_EQ(status->errorBucketInc(7, 0xffffffff), 5u) << "it wraps";
    EXPECT_EQ(status->errorBucket().find(7), node);
    EXPECT_EQ(status->errorBucketInc(-7, 0), 0u);
    EXPECT_EQ(status->errorBuckets(), 2u);
    EXPECT_FALSE(status->trackErrors()) << "nobody asked for it";
}

TEST(DalProcessingStatus, TellsSwappedErrorCodesApart) {
    const Ptr<DalProcessingStatus> status = dalProcessingStatusFactory(DalId(3));
    status->errorCodeIs(0x100000002, 12);
    status->errorCodeIs(0x200000001, 21);
    EXPECT_EQ(status->errorCode(0x100000002), 12);
    EXPECT_EQ(status->errorCode(0x200000001), 21);
}

// Each thread has watchers of its own; the status is counted by all of them.
TEST(DalProcessingStatus, IsCountedFromManyThreads) {
    Vel::VFPtrInterface::enableThreadSafePointers = true;
    const Ptr<DalProcessingStatus> status = dalProcessingStatusFactory(DalId(3));
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&status] {
            for (int step = 0; step < 20'000; ++step) {
                const Ptr<DalProcessingStatus> copy = status;
                Ptr<const Vel::PtrInterface> moved = copy;
                moved = nullptr;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(status->references(), 1u);
    Vel::VFPtrInterface::enableThreadSafePointers = false;
}

TEST(DalProcessingStatus, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Brixo::DalProcessingStatus"),
              "entity(dalId: Brixo::DalId)\n"
              "130 dalId: Brixo::DalId; stored\n"
              "131 lastEnqueuedCmdIndex: U64; stored\n"
              "132 lastProcessedCmdIndex: U64; stored\n"
              "133 trackErrors: bool; stored\n"
              "134 errorCode[U64]: int; stored\n"
              "135 errorBucket[int]: U32; stored\n"
              "0 fwkKey: Brixo::DalId\n");
}

} // namespace
} // namespace Brixo
