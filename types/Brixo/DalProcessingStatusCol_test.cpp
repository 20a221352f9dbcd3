#include <Brixo/DalProcessingStatusCol.h>

#include <Vel/RangeException.h>
#include <Vel/testing/LiveObjects.h>
#include <Vel/testing/Registered.h>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace Brixo {
namespace {

using Vel::Ptr;
using Vel::U8;

class Watcher : public DalProcessingStatusCol::NotifieeConst {
public:
    using NotifieeConst::onProcessingStatus;

    void onProcessingStatus(DalId dalId) override {
        said +=
            (notifier()->processingStatus(dalId) ? "+" : "-") + std::to_string(dalId.id()) + " ";
        if (action) action(dalId);
    }

    using NotifieeConst::onNotificationException;

    void onNotificationException(Vel::AttributeId attribute) override {
        said += "!" + std::to_string(attribute) + " ";
    }

    std::string take() { return std::exchange(said, ""); }

    std::string said;
    std::function<void(DalId)> action;
};

class DalProcessingStatusColInBothModes : public testing::TestWithParam<bool> {
    const Vel::Testing::LiveObjects live;

protected:
    void SetUp() override {
        Vel::VFPtrInterface::enableThreadSafePointers = GetParam();
        watcher->notifierIs(col);
        watcher->isRegisteredNotifieeIs(true);
    }

    void TearDown() override {
        watcher->action = nullptr;
        watcher->notifierIs(nullptr);
        EXPECT_EQ(col->references(), 1u);
        Vel::VFPtrInterface::enableThreadSafePointers = false;
    }

    Ptr<DalProcessingStatusCol> col = new DalProcessingStatusCol;
    Ptr<Watcher> watcher = new Watcher;
};

INSTANTIATE_TEST_SUITE_P(DalProcessingStatusCol, DalProcessingStatusColInBothModes,
                         testing::Bool());

TEST_P(DalProcessingStatusColInBothModes, IsEmptyAtFirst) {
    EXPECT_EQ(col->processingStatuss(), 0u);
    EXPECT_EQ(col->processingStatus(DalId(1)), nullptr);
    EXPECT_EQ(col->auditErrors(9), 0u);
}

TEST_P(DalProcessingStatusColInBothModes, MakesAStatusOnceAndTellsOnce) {
    const Ptr<DalProcessingStatus> status = col->processingStatusIs(DalId(7));
    EXPECT_EQ(watcher->take(), "+7 ");
    EXPECT_EQ(status->dalId(), DalId(7));
    EXPECT_EQ(status->references(), 2u);
    EXPECT_EQ(col->processingStatusIs(DalId(7)), status);
    EXPECT_EQ(watcher->take(), "");
    EXPECT_EQ(col->processingStatus(DalId(7)), status);
    EXPECT_EQ(col->processingStatuss(), 1u);
}

TEST_P(DalProcessingStatusColInBothModes, NewTellsNobody) {
    const Ptr<DalProcessingStatus> status = col->newProcessingStatus(DalId(7));
    EXPECT_EQ(watcher->take(), "");
    EXPECT_EQ(col->processingStatus(DalId(7)), status);
    col->processingStatusNotify(DalId(7));
    EXPECT_EQ(watcher->take(), "+7 ");
}

TEST_P(DalProcessingStatusColInBothModes, RemovalDestroysNothingThatOthersHold) {
    const Ptr<DalProcessingStatus> status = col->processingStatusIs(DalId(7));
    status->lastProcessedCmdIndexIs(12);
    watcher->take();
    EXPECT_EQ(col->processingStatusDel(DalId(7)), status);
    EXPECT_EQ(watcher->take(), "-7 ");
    EXPECT_EQ(status->references(), 1u);
    EXPECT_EQ(status->lastProcessedCmdIndex(), 12u);
    EXPECT_EQ(col->processingStatus(DalId(7)), nullptr);
    EXPECT_NE(col->processingStatusIs(DalId(7)), status);
}

TEST_P(DalProcessingStatusColInBothModes, DeletingAnAbsentIdTellsNobody) {
    col->processingStatusIs(DalId(7));
    watcher->take();
    EXPECT_EQ(col->processingStatusDel(DalId(8)), nullptr);
    EXPECT_EQ(watcher->take(), "");
    EXPECT_EQ(col->processingStatuss(), 1u);
}

TEST_P(DalProcessingStatusColInBothModes, DeletesThroughAnIterator) {
    for (const U8 id : {U8{1}, U8{2}, U8{3}}) col->processingStatusIs(DalId(id));
    watcher->take();
    std::multiset<unsigned> left;
    for (const auto& [dalId, status] : col->processingStatus()) {
        EXPECT_EQ(status->dalId(), dalId);
        left.insert(dalId.id());
    }
    EXPECT_EQ(left, (std::multiset<unsigned>{1, 2, 3}));
    auto position = col->processingStatus().begin();
    while (position) {
        const DalId dalId = position.key();
        EXPECT_EQ(col->processingStatusDel(position)->dalId(), dalId);
        EXPECT_EQ(watcher->take(), "-" + std::to_string(dalId.id()) + " ");
    }
    EXPECT_EQ(col->processingStatuss(), 0u);
}

TEST_P(DalProcessingStatusColInBothModes, DelAllTellsOfEach) {
    std::string expected;
    for (unsigned id = 0; id < 256; ++id) col->processingStatusIs(DalId(static_cast<U8>(id)));
    for (const auto& [dalId, status] : col->processingStatus())
        expected += "-" + std::to_string(dalId.id()) + " ";
    watcher->take();
    col->processingStatusDelAll();
    EXPECT_EQ(watcher->take(), expected);
    EXPECT_EQ(col->processingStatuss(), 0u);
}

TEST_P(DalProcessingStatusColInBothModes, WhatACallbackOfDelAllAddsStays) {
    for (const U8 id : {U8{1}, U8{2}, U8{3}}) col->processingStatusIs(DalId(id));
    watcher->take();
    bool isFirst = true;
    watcher->action = [&](DalId) {
        if (!std::exchange(isFirst, false)) return;
        for (const U8 id : {U8{1}, U8{2}, U8{3}}) {
            col->processingStatusDel(DalId(id));
            col->processingStatusIs(DalId(id));
        }
    };
    col->processingStatusDelAll();
    EXPECT_EQ(col->processingStatuss(), 3u);
}

TEST_P(DalProcessingStatusColInBothModes, DelAllEndsWellWhenACallbackDropsTheCollection) {
    Ptr<DalProcessingStatusCol> other = new DalProcessingStatusCol;
    const Ptr<Watcher> dropping = new Watcher;
    dropping->notifierIs(other);
    dropping->isRegisteredNotifieeIs(true);
    for (const U8 id : {U8{1}, U8{2}, U8{3}}) other->processingStatusIs(DalId(id));
    const Ptr<DalProcessingStatus> last = other->processingStatus(DalId(3));
    dropping->take();
    dropping->action = [&](DalId) {
        dropping->notifierIs(nullptr);
        other = nullptr;
    };
    DalProcessingStatusCol* const raw = other.ptr();
    const DalId first = raw->processingStatus().begin().key();
    raw->processingStatusDelAll();
    EXPECT_EQ(dropping->take(), "-" + std::to_string(first.id()) + " ") << "it listens no more";
    EXPECT_EQ(last->references(), 1u) << "the collection is gone, and its members with it";
}

// The ids in the order of the collection.
std::vector<DalId> walked(const DalProcessingStatusCol& col) {
    std::vector<DalId> ids;
    for (const auto& [dalId, status] : col.processingStatus()) ids.push_back(dalId);
    return ids;
}

TEST_P(DalProcessingStatusColInBothModes, AnIteratorPassesOverWhatTheCallbackRemoves) {
    for (unsigned id = 0; id < 256; ++id) col->processingStatusIs(DalId(static_cast<U8>(id)));
    const std::vector<DalId> ids = walked(*col);
    watcher->take();
    watcher->action = [&](DalId) {
        watcher->action = nullptr;
        for (const std::size_t at : {0U, 2U, 3U, 4U, 255U}) col->processingStatusDel(ids[at]);
    };
    auto position = ++col->processingStatus().begin();
    ASSERT_EQ(position.key(), ids[1]);
    col->processingStatusDel(position);
    ASSERT_TRUE(position);
    EXPECT_EQ(position.key(), ids[5]);
    for (std::size_t at = 5; at < 255; ++at) {
        ASSERT_TRUE(position);
        EXPECT_EQ(col->processingStatusDel(position)->dalId(), ids[at]);
    }
    EXPECT_FALSE(position);
    EXPECT_EQ(col->processingStatuss(), 0u);
}

TEST_P(DalProcessingStatusColInBothModes, AnIteratorIsAtTheEndWhenTheCallbackRemovesTheRest) {
    for (const U8 id : {U8{1}, U8{2}, U8{3}, U8{4}}) col->processingStatusIs(DalId(id));
    watcher->action = [&](DalId) {
        watcher->action = nullptr;
        col->processingStatusDelAll();
    };
    auto position = col->processingStatus().begin();
    col->processingStatusDel(position);
    EXPECT_FALSE(position);
    EXPECT_EQ(col->processingStatuss(), 0u);
}

TEST_P(DalProcessingStatusColInBothModes, AnIteratorDoesNotTurnBackForWhatTheCallbackAdds) {
    for (const U8 id : {U8{1}, U8{2}, U8{3}, U8{4}}) col->processingStatusIs(DalId(id));
    const std::vector<DalId> ids = walked(*col);
    col->processingStatusDel(ids[2]);
    watcher->action = [&](DalId dalId) {
        watcher->action = nullptr;
        col->processingStatusIs(dalId);
        col->processingStatusIs(ids[2]);
    };
    auto position = ++col->processingStatus().begin();
    EXPECT_EQ(col->processingStatusDel(position)->dalId(), ids[1]);
    ASSERT_TRUE(position);
    EXPECT_EQ(position.key(), ids[2]) << "who was added behind it is met";
    EXPECT_EQ(walked(*col), ids);
}

TEST_P(DalProcessingStatusColInBothModes, AnIteratorIsAtTheEndWhenTheCallbackDropsTheCollection) {
    Ptr<DalProcessingStatusCol> other = new DalProcessingStatusCol;
    const Ptr<Watcher> dropping = new Watcher;
    dropping->notifierIs(other);
    dropping->isRegisteredNotifieeIs(true);
    for (const U8 id : {U8{1}, U8{2}}) other->processingStatusIs(DalId(id));
    dropping->action = [&](DalId) {
        dropping->notifierIs(nullptr);
        other = nullptr;
    };
    DalProcessingStatusCol* const raw = other.ptr();
    auto position = raw->processingStatus().begin();
    EXPECT_NE(raw->processingStatusDel(position), nullptr);
    EXPECT_FALSE(position);
}

TEST(DalProcessingStatusCol, OneThatNobodyCountsIsKeptByNobody) {
    DalProcessingStatusCol col;
    for (const U8 id : {U8{1}, U8{2}, U8{3}}) col.processingStatusIs(DalId(id));
    auto position = col.processingStatus().begin();
    col.processingStatusDel(position);
    EXPECT_TRUE(position);
    EXPECT_EQ(col.processingStatuss(), 2u);
    col.processingStatusDelAll();
    EXPECT_EQ(col.processingStatuss(), 0u);
}

TEST_P(DalProcessingStatusColInBothModes, AWatcherThatThrowsStopsNobody) {
    const Ptr<Watcher> second = new Watcher;
    second->notifierIs(col);
    second->isRegisteredNotifieeIs(true);
    watcher->action = [](DalId) { throw std::runtime_error("no"); };
    EXPECT_NE(col->processingStatusIs(DalId(7)), nullptr);
    EXPECT_EQ(watcher->take(), "+7 !130 ");
    EXPECT_EQ(second->take(), "+7 ");
    second->notifierIs(nullptr);
}

TEST_P(DalProcessingStatusColInBothModes, TheOtherCallbacksDoNothing) {
    watcher->onProcessingStatus();
    watcher->onProcessingStatusvelImmediate();
    const Ptr<DalProcessingStatusCol::NotifieeConst> silent =
        new DalProcessingStatusCol::NotifieeConst;
    silent->notifierIs(col);
    silent->isRegisteredNotifieeIs(true);
    col->processingStatusIs(DalId(1));
    EXPECT_EQ(watcher->take(), "+1 ");
    silent->notifierIs(nullptr);
}

TEST_P(DalProcessingStatusColInBothModes, AgreesWithASet) {
    const unsigned seed = 20261121;
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::set<unsigned> model;
    std::string expected;
    for (int step = 0; step < 100'000; ++step) {
        const unsigned number = static_cast<unsigned>(random()) % 256;
        const DalId dalId(static_cast<U8>(number));
        if (random() % 2 == 0) {
            if (model.insert(number).second) expected += "+" + std::to_string(number) + " ";
            ASSERT_EQ(col->processingStatusIs(dalId)->dalId(), dalId);
        } else {
            const bool wasThere = model.erase(number) != 0;
            if (wasThere) expected += "-" + std::to_string(number) + " ";
            ASSERT_EQ(col->processingStatusDel(dalId) != nullptr, wasThere);
        }
        ASSERT_EQ(col->processingStatuss(), model.size());
    }
    EXPECT_EQ(watcher->take(), expected);
    EXPECT_EQ(col->processingStatus().auditErrors(9), 0u);
}

// A collection that can make no status.
class Barren : public DalProcessingStatusCol {
public:
    Ptr<DalProcessingStatus> newProcessingStatus(DalId) override { return nullptr; }
};

TEST(DalProcessingStatusCol, SaysThatNothingWasMade) {
    const Ptr<Barren> col = new Barren;
    try {
        col->processingStatusIs(DalId(1));
        ADD_FAILURE() << "nothing was thrown";
    } catch (const Vel::RangeException& refused) {
        EXPECT_STREQ(refused.what(), "null ValidPtr");
    }
}

TEST(DalProcessingStatusCol, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Brixo::DalProcessingStatusCol"),
              "entity\n"
              "130 processingStatus[dalId: Brixo::DalId](dalId: Brixo::DalId): "
              "Brixo::DalProcessingStatus\n");
}

} // namespace
} // namespace Brixo
