// What there is of a write that a kill interrupted, for each moment of the write. The agent here
// has its own registers alone; register 1 of them is being written.
#include "Recovery.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <tuple>

namespace {

namespace fs = std::filesystem;
using PciAgent::Fate;
using PciAgent::MirroredDevice;
using Vel::U32;

class Recovery : public testing::Test {
protected:
    Recovery() {
        std::string name = (fs::temp_directory_path() / "recovery-XXXXXX").string();
        if (::mkdtemp(name.data()) != nullptr) place = name;
        fs::create_directory(place / "regions");
        fs::permissions(place / "regions", fs::perms::owner_all);
        ::setenv("PINBUF_DIR", (place / "regions").c_str(), 1);
        journal.emplace((place / "journal").string());
    }

    ~Recovery() override { fs::remove_all(place); }

    // A process of the agent that starts now.
    PciAgent::Agent agent() { return {Brixo::AgentId(7), (place / "nothing").string(), *journal}; }

    static void put(const PciAgent::Agent& agent, U32 value) {
        unsigned char bytes[sizeof(value)];
        std::memcpy(bytes, &value, sizeof(value));
        agent.devices()[0].table->entryIs(MirroredDevice::key(1), bytes);
    }

    void complete(U32 value) {
        journal->begin(0, 1, value);
        put(agent(), value);
        journal->completed();
    }

    PciAgent::Recovery recovered() { return PciAgent::recoveryOf(agent(), *journal); }

    // What counts as written afterwards: nothing, or this value.
    void expectSettled(std::optional<U32> value) {
        EXPECT_EQ(journal->inFlight().active, 0U);
        EXPECT_EQ(journal->completedEntries(), value ? 1U : 0U);
        EXPECT_EQ(journal->at(0, 1).value, value.value_or(0));
        EXPECT_EQ(recovered().verdict.inFlight, Fate::none);
    }

    fs::path place;
    std::optional<PciAgent::WriteJournal> journal;
};

TEST_F(Recovery, NothingIsThereOfAWriteThatHasNotBegunToStore) {
    journal->begin(0, 1, 5);
    const PciAgent::Recovery found = recovered();
    EXPECT_EQ(found.verdict.inFlight, Fate::absent);
    EXPECT_EQ(found.verdict.found, 0U);
    EXPECT_TRUE(found.verdict.nothingLost());
    expectSettled(std::nullopt);
}

TEST_F(Recovery, ANewKeyStandsAloneUntilItsValueIsStored) {
    journal->begin(0, 1, 5);
    put(agent(), 0);
    const PciAgent::Recovery found = recovered();
    EXPECT_EQ(found.verdict.inFlight, Fate::keyAlone);
    EXPECT_EQ(found.verdict.found, 1U);
    EXPECT_EQ(found.verdict.unexpected, 0U);
    expectSettled(0);
}

TEST_F(Recovery, AWholeWriteIsThereThoughItHasNotReturned) {
    journal->begin(0, 1, 5);
    put(agent(), 5);
    EXPECT_EQ(recovered().verdict.inFlight, Fate::whole);
    expectSettled(5);
}

TEST_F(Recovery, OfARewriteTheOldValueTheNewOneOrBothInOneAreThere) {
    for (const auto& [written, found, fate] : {std::tuple{5U, 4U, Fate::before},
                                               {5U, 5U, Fate::whole},
                                               {4U, 4U, Fate::unchanged},
                                               {0x10005U, 0x10004U, Fate::torn}}) {
        complete(4);
        journal->begin(0, 1, written);
        put(agent(), found);
        const PciAgent::Recovery recovery = recovered();
        EXPECT_EQ(recovery.verdict.inFlight, fate) << found;
        EXPECT_EQ(recovery.foundOfWrite, found);
        EXPECT_EQ(recovery.verdict.completed, 0U);
        EXPECT_TRUE(recovery.verdict.nothingLost());
        expectSettled(found);
    }
}

TEST_F(Recovery, ACompletedWriteMustBeThere) {
    complete(4);
    EXPECT_TRUE(recovered().verdict.nothingLost());
    put(agent(), 3);
    const PciAgent::Recovery found = recovered();
    EXPECT_FALSE(found.verdict.nothingLost());
    ASSERT_EQ(found.lost.size(), 1U);
    EXPECT_EQ(found.lost[0].index, 1U);
    EXPECT_EQ(found.lost[0].written, 4U);
    EXPECT_TRUE(found.lost[0].present);
    EXPECT_EQ(found.lost[0].found, 3U);
}

TEST_F(Recovery, AnEntryThatNobodyHasWrittenIsNoticed) {
    put(agent(), 4);
    const PciAgent::Recovery found = recovered();
    EXPECT_EQ(found.verdict.unexpected, 1U);
    EXPECT_FALSE(found.verdict.nothingLost());
}

} // namespace
