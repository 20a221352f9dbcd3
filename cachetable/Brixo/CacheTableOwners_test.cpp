// Two tables on one region at the same time: nobody is refused, and the second says who the first
// is.
#include <Brixo/CacheTable.h>

#include <Brixo/testing/Child.h>
#include <Brixo/testing/RegionFolder.h>
#include <Brixo/testing/Tables.h>
#include <Vel/TraceCapture.h>
#include <barrier>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <optional>
#include <pinbuf/pinbuf.h>
#include <string>
#include <thread>
#include <unistd.h>

namespace {

std::optional<int> holdAnswer; // in the place of pinbuf's own

} // namespace

// Stands before the library's own in the search order.
extern "C" PINBUF_API int pinbuf_hold(const char* name, pinbuf_holder* holder) {
    using Hold = int (*)(const char*, pinbuf_holder*);
    static const Hold realHold = reinterpret_cast<Hold>(::dlsym(RTLD_NEXT, "pinbuf_hold"));
    if (!holdAnswer) return realHold(name, holder);
    if (*holdAnswer == 0) {
        holder->process = 0;
        std::strcpy(holder->owner, "somebody");
    }
    return *holdAnswer;
}

namespace Brixo {
namespace {

using namespace Testing;

// Table of resource 203 or 20185, whose mixes are one number.
CacheTableIndex collidingId(U64 resource) {
    return CacheTableIndex(DeviceId(1), PhysicalResourceId(ResourceType::tableResource, resource));
}

const std::string inUse = "BrixoCacheTable/1 Region " + regionName + " is in use already, by ";

// A process that has the table open until it is killed, for the owner of this name.
class OtherAgent {
public:
    explicit OtherAgent(const char* owner) {
        int ends[2];
        if (::pipe(ends) != 0) std::abort();
        process_ = ::fork();
        if (process_ == 0) {
            ::setenv("AGENT_PROCESS_NAME", owner, 1);
            const Vel::Ptr<CacheTable> table = openTable(2, 4);
            if (::write(ends[1], "", 1) != 1) ::_exit(1);
            for (;;) ::pause();
        }
        ::close(ends[1]);
        char isOpen = 0;
        if (::read(ends[0], &isOpen, 1) != 1) std::abort();
        ::close(ends[0]);
    }

    ~OtherAgent() { kill(); }

    OtherAgent(const OtherAgent&) = delete;
    OtherAgent& operator=(const OtherAgent&) = delete;

    void kill() {
        if (process_ == 0) return;
        ::kill(process_, SIGKILL);
        statusOf(process_);
        process_ = 0;
    }

    std::string name() const { return std::to_string(process_); }

private:
    pid_t process_ = 0;
};

class CacheTableOwners : public testing::Test {
protected:
    RegionFolder regions;
    Vel::TraceCapture lines;

    CacheTableOwners() {
        Vel::TraceHandle::settingsAre("*/1");
        ::setenv("AGENT_PROCESS_NAME", "agent-7", 1);
    }

    ~CacheTableOwners() override {
        ::unsetenv("AGENT_PROCESS_NAME");
        Vel::TraceHandle::settingsAre("*/none");
        holdAnswer.reset();
    }
};

TEST_F(CacheTableOwners, SaysNothingWhenTablesFollowEachOther) {
    openTable(2, 4);
    openTable(2, 4);
    EXPECT_EQ(inChild([this] {
                  openTable(2, 4);
                  return lines.take() == inUse + "process " + std::to_string(::getppid()) +
                                             " of owner \"agent-7\"\n"
                             ? 0
                             : 1;
              }),
              0)
        << "this process may have handed out addresses in the region";
    EXPECT_EQ(lines.take(), "");
}

TEST_F(CacheTableOwners, NamesTheProcessThatHasTheRegion) {
    OtherAgent other("agent-7");
    const Vel::Ptr<CacheTable> table = openTable(2, 4);
    EXPECT_EQ(lines.take(), inUse + "process " + other.name() + " of owner \"agent-7\"\n");
    write(*table, 1, "data");
    EXPECT_EQ(entry(*table, 1), "data") << "nobody is refused";
    other.kill();
    openTable(2, 4);
    EXPECT_EQ(lines.take(), inUse + "another table of this process\n") << "the dead have no say";
}

TEST_F(CacheTableOwners, SaysThatTheProcessIsOfAnotherOwner) {
    const OtherAgent other("agent-8");
    openTable(2, 4);
    EXPECT_EQ(lines.take(), inUse + "process " + other.name() +
                                " of owner \"agent-8\"; this one is \"agent-7\"\n");
}

TEST_F(CacheTableOwners, DoesWithoutTheNumberOfAProcessThatItCannotSee) {
    holdAnswer = 0;
    openTable(2, 4);
    EXPECT_EQ(
        lines.take(),
        inUse + "a process in another name space of owner \"somebody\"; this one is \"agent-7\"\n");
}

TEST_F(CacheTableOwners, GoesOnWhenTheRegionCannotBeHeld) {
    holdAnswer = -1;
    EXPECT_TRUE(openTable(2, 4)->initialized());
    EXPECT_EQ(lines.take(), "");
}

TEST_F(CacheTableOwners, NoticesAnotherTableOfThisProcess) {
    Vel::Ptr<CacheTable> first = openTable(2, 4);
    Vel::Ptr<CacheTable> second = openTable(2, 4);
    EXPECT_EQ(lines.take(), inUse + "another table of this process\n");
    first = nullptr;
    Vel::Ptr<CacheTable> third = openTable(2, 4);
    EXPECT_EQ(lines.take(), inUse + "another table of this process\n");
    second = nullptr;
    third = nullptr;
    openTable(2, 4);
    EXPECT_EQ(lines.take(), "");
}

TEST_F(CacheTableOwners, NoticesTwoResourcesOfOneHash) {
    ASSERT_EQ(collidingId(203).resourceId().hash(), collidingId(20185).resourceId().hash());
    const Vel::Ptr<CacheTable> first = cacheTableFactory(AgentId(3), collidingId(203), 2, 4);
    write(*first, 5, "data");
    const Vel::Ptr<CacheTable> second = cacheTableFactory(AgentId(3), collidingId(20185), 2, 4);
    EXPECT_EQ(
        lines.take(),
        "BrixoCacheTable/1 Region CacheTable-3-1-1532753052 is in use already, by another table of "
        "this "
        "process: resource Value('Brixo::PhysicalResourceId', ** {'type': 'tableResource', 'id': "
        "203}) has the hash of Value('Brixo::PhysicalResourceId', ** {'type': 'tableResource', "
        "'id': 20185})\n");
    EXPECT_EQ(entry(*second, 5), "data") << "which is the other's";
}

// Threads that use objects of the framework at the same time.
class CacheTableOwnersInThreads : public CacheTableOwners {
protected:
    CacheTableOwnersInThreads() { Vel::VFPtrInterface::enableThreadSafePointers = true; }

    ~CacheTableOwnersInThreads() override { Vel::VFPtrInterface::enableThreadSafePointers = false; }
};

TEST_F(CacheTableOwnersInThreads, NoticeEachOthersTables) {
    const Vel::Ptr<CacheTable> first = openTable(2, 4);
    std::thread([] { openTable(2, 4); }).join();
    EXPECT_EQ(lines.take(), inUse + "another table of this process\n");
}

// Of two that begin at once one says so, or both.
TEST_F(CacheTableOwnersInThreads, NoticeATableThatIsOpenedAtTheSameTime) {
    openTable(2, 4); // the region is made, the trace handle too
    for (unsigned round = 0; round < 50; ++round) {
        Vel::Ptr<CacheTable> tables[2];
        std::barrier begin(2);
        const auto open = [&](Vel::Ptr<CacheTable>& table) {
            begin.arrive_and_wait();
            table = openTable(2, 4);
        };
        std::thread other([&] { open(tables[1]); });
        open(tables[0]);
        other.join();
        const std::string line = inUse + "another table of this process\n";
        const std::string said = lines.take();
        EXPECT_TRUE(said == line || said == line + line) << said;
    }
}

// Other devices and agents have regions of their own.
TEST_F(CacheTableOwners, LetsTablesOfOtherRegionsAlone) {
    const Vel::Ptr<CacheTable> first = openTable(2, 4);
    const Vel::Ptr<CacheTable> second = cacheTableFactory(AgentId(4), tableId, 2, 4);
    regions.clear();
    const Vel::Ptr<CacheTable> third = openTable(2, 4);
    EXPECT_EQ(lines.take(), "") << "a region that was removed is not the one of its name";
}

TEST_F(CacheTableOwners, ATableIsNotItsOwnOther) {
    const Vel::Ptr<CacheTable> table = openTable(2, 4);
    table->handleInitialized();
    table->doRestart();
    EXPECT_EQ(lines.take(), "");
}

} // namespace
} // namespace Brixo
