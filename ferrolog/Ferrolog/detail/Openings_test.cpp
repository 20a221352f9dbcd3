#include <Ferrolog/detail/Openings.h>

#include <Ferrolog/testing/TestFile.h>

#include <cerrno>
#include <sys/resource.h>
#include <thread>

namespace {

using namespace Ferrolog::detail;
using namespace Ferrolog::testing;
using Ferrolog::Reader;

class OpeningsTest : public testing::Test {
protected:
    ~OpeningsTest() override { endOpening(); }

    int open(const char* name = "/trace") {
        return beginOpening((file.directory + name).c_str(), minRingBytes, ++epoch);
    }

    void append(Lane& lane) {
        ferrolog_site site{"T", "text", "", 1, 0};
        const Visit visit;
        Recorder& recorder = visit.recorder();
        recorder.append(lane, recorder.tagOf(site), nullptr);
    }

    std::size_t mappings() const { return mappingsOf(file.directory); }

    TestFile file;
    U32 epoch = 1;
};

TEST_F(OpeningsTest, AVisitFindsTheOpenFile) {
    EXPECT_FALSE(Visit());
    ASSERT_EQ(open(), 0);
    EXPECT_EQ(Visit().recorder().epoch(), 2U);
    endOpening();
    EXPECT_FALSE(Visit());
    endOpening();
}

TEST_F(OpeningsTest, AnOpeningThatFailsLeavesNoneToVisit) {
    EXPECT_EQ(complaintsOf([&] { EXPECT_EQ(open("/none/trace"), ENOENT); }),
              "Ferrolog: cannot open \"" + file.directory +
                  "/none/trace\": No such file or directory; tracing stays off\n");
    EXPECT_FALSE(Visit());
}

TEST_F(OpeningsTest, TheMappingOfAClosedFileGoesWithTheNextOpening) {
    for (int round = 0; round < 5; ++round) {
        ASSERT_EQ(open(), 0);
        EXPECT_EQ(mappings(), 1U);
        Lane lane;
        append(lane);
        Recorder::giveBack(lane);
        endOpening();
    }
}

TEST_F(OpeningsTest, AVisitKeepsTheMapping) {
    ASSERT_EQ(open(), 0);
    {
        const Visit visit;
        endOpening();
        ASSERT_EQ(open("/other"), 0);
        EXPECT_EQ(mappings(), 2U);
        EXPECT_EQ(visit.recorder().epoch(), 2U);
        endOpening();
    }
    ASSERT_EQ(open(), 0); // found to be deserted when this is closed
    endOpening();
    ASSERT_EQ(open(), 0);
    EXPECT_EQ(mappings(), 1U);
}

// Who may still be in it writes into memory of the process, not into a file that others write into.
TEST_F(OpeningsTest, TheMappingOfAClosedFileIsTheFilesNoMore) {
    Lane lane;
    ASSERT_EQ(open(), 0);
    append(lane);
    endOpening();
    U32& owner = lane.chunk->owner;
    EXPECT_EQ(owner, 0U);
    owner = 9;
    ASSERT_EQ(open(), 0);
    EXPECT_EQ(owner, 9U);
    Recorder::giveBack(lane);
}

TEST_F(OpeningsTest, ALaneKeepsTheMappingForAWholeOpeningLonger) {
    Lane lane;
    ASSERT_EQ(open(), 0);
    append(lane);
    endOpening();
    for (const char* name : {"/2", "/3", "/4"}) {
        ASSERT_EQ(open(name), 0);
        EXPECT_EQ(mappings(), 2U);
        endOpening();
    }
    ASSERT_EQ(open("/5"), 0);
    EXPECT_EQ(mappings(), 2U);
    Recorder::giveBack(lane);
    EXPECT_EQ(mappings(), 2U); // the thread may have been interrupted in the middle of an append
    endOpening();
    ASSERT_EQ(open("/6"), 0);
    EXPECT_EQ(mappings(), 1U);
}

TEST_F(OpeningsTest, TheLaneOfAThreadThatEndedWithoutAWordKeepsNothing) {
    Lane lane;
    ASSERT_EQ(open(), 0);
    std::thread([&] { append(lane); }).join();
    // The kernel may take a moment longer to forget a thread than it takes to join it.
    while (::tgkill(::getpid(), static_cast<pid_t>(lane.thread), 0) == 0) {
        std::this_thread::yield();
    }
    endOpening();
    ASSERT_EQ(open("/2"), 0);
    EXPECT_EQ(mappings(), 1U);
}

TEST_F(OpeningsTest, AChildHasNoneOfTheThreadsOfItsParent) {
    Lane lane;
    ASSERT_EQ(open(), 0);
    append(lane);
    EXPECT_EQ(inChild([&] { // the library's handlers have run
                  endOpening();
                  ASSERT_EQ(open("/2"), 0);
                  EXPECT_EQ(mappings(), 1U);
              }),
              0);
    Recorder::giveBack(lane); // or the mapping stays for the tests that follow
}

// Address space for one mapping more in each round, until there is enough.
TEST_F(OpeningsTest, WithoutMemoryItSaysSoAndCanBeRepeated) {
    EXPECT_EQ(inChild([&] {
                  Lane lane;
                  ASSERT_EQ(open(), 0); // and what earlier tests left goes
                  append(lane);
                  endOpening();
                  const rlimit unlimited{RLIM_INFINITY, RLIM_INFINITY};
                  int failures = 0;
                  complaintsOf([&] {
                      for (rlim_t pages = 0;; ++pages) {
                          const rlimit limit{addressSpace() + pages * 4096, RLIM_INFINITY};
                          ASSERT_EQ(::setrlimit(RLIMIT_AS, &limit), 0);
                          const int error = beginOpening(file.path.c_str(), minRingBytes, 2);
                          ASSERT_EQ(::setrlimit(RLIMIT_AS, &unlimited), 0);
                          if (error == 0) {
                              break;
                          }
                          ASSERT_EQ(error, ENOMEM);
                          ++failures;
                      }
                  });
                  EXPECT_GT(failures, 10); // of the twelve pages of the file, and one
                  EXPECT_EQ(mappings(), 2U);
                  EXPECT_FALSE(std::filesystem::exists(file.path + ".1"));
              }),
              0);
}

} // namespace
