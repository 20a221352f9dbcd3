#include <Ferrolog/detail/TraceFile.h>

#include <Ferrolog/detail/SiteTable.h>
#include <Ferrolog/testing/TestFile.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>

namespace {

using namespace Ferrolog::detail;
using namespace Ferrolog::testing;
namespace fs = std::filesystem;

// The times of access and of change of contents, seconds since 1970, whatever this program's
// time_t.
void setTimes(const std::string& path, std::int64_t seconds) {
    struct {
        std::int64_t seconds;
        std::int64_t nanoseconds;
    } const times[2] = {{seconds, 0}, {seconds, 0}};

#ifdef SYS_utimensat_time64
    constexpr long call = SYS_utimensat_time64;
#else
    constexpr long call = SYS_utimensat;
#endif
    ASSERT_EQ(::syscall(call, AT_FDCWD, path.c_str(), times, 0), 0);
}

class TraceFileTest : public testing::Test {
protected:
    ~TraceFileTest() override { trace.close(); }

    // Opens the file at `path`; what it printed is in `printed`, each name of the directory cut to
    // "DIR".
    int open(const std::string& path, U32 ringBytes = minRingBytes) {
        int error = 0;
        printed = complaintsOf([&] { error = trace.open(path.c_str(), ringBytes); });
        for (std::size_t at = 0; (at = printed.find(file.directory)) != std::string::npos;) {
            printed.replace(at, file.directory.size(), "DIR");
        }
        return error;
    }

    void make() {
        ASSERT_EQ(open(file.path), 0);
        trace.close();
    }

    TestFile file;
    TraceFile trace;
    std::string printed;
};

TEST_F(TraceFileTest, MakesAFileThatBelongsToTheUserAlone) {
    EXPECT_EQ(open(file.path), 0);
    EXPECT_EQ(printed, "");

    struct stat status {};

    ASSERT_EQ(::stat(file.path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
    EXPECT_EQ(status.st_size, 45056);
    EXPECT_GE(status.st_blocks * 512, 45056); // reserved, not only promised
    EXPECT_EQ(trace.header().magic, fileMagic);
    EXPECT_EQ(trace.header().nextChunk, 1U);
}

TEST_F(TraceFileTest, RingSizesAreRoundedUp) {
    EXPECT_EQ(open(file.directory + "/a", 1), 0);
    EXPECT_EQ(trace.layout().ringBytes, U32{16} << 10);
    trace.close();
    EXPECT_EQ(open(file.directory + "/b", (16 << 10) + 1), 0);
    EXPECT_EQ(trace.layout().ringBytes, U32{32} << 10);
    trace.close();
    EXPECT_EQ(open(file.directory + "/c", 0), 0);
    EXPECT_EQ(trace.layout().ringBytes, U32{1} << 20);
}

TEST_F(TraceFileTest, SizeZeroTakesTheFileAsItIs) {
    make();
    EXPECT_EQ(open(file.path, 0), 0);
    EXPECT_EQ(trace.layout().ringBytes, minRingBytes);
    EXPECT_EQ(printed, "");
}

TEST_F(TraceFileTest, AnEmptyFileIsFilledInPlace) {
    write(file.path, "");
    EXPECT_EQ(open(file.path), 0);
    EXPECT_EQ(printed, "");
    EXPECT_FALSE(fs::exists(file.path + ".1"));
}

TEST_F(TraceFileTest, RefusesWhatIsNotAPlainFileOfItsOwn) {
    EXPECT_EQ(open(file.directory + "/none/trace"), ENOENT);
    EXPECT_EQ(printed, "Ferrolog: cannot open \"DIR/none/trace\": No such file or directory; "
                       "tracing stays off\n");

    fs::create_symlink(file.directory + "/elsewhere", file.path);
    EXPECT_EQ(open(file.path), ELOOP);
    EXPECT_EQ(printed,
              "Ferrolog: cannot open \"DIR/trace\": it is a symbolic link; tracing stays off\n");
    EXPECT_FALSE(fs::exists(file.directory + "/elsewhere"));

    EXPECT_EQ(open(file.directory), EISDIR);
    EXPECT_EQ(printed, "Ferrolog: cannot open \"DIR\": Is a directory; tracing stays off\n");

    const std::string fifo = file.directory + "/fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(open(fifo), EINVAL);
    EXPECT_EQ(printed,
              "Ferrolog: cannot open \"DIR/fifo\": it is not a regular file; tracing stays off\n");
}

TEST_F(TraceFileTest, RefusesAFileOfAnotherUser) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can make one";
    }
    write(file.path, "");
    ASSERT_EQ(::chown(file.path.c_str(), 12345, 12345), 0);
    EXPECT_EQ(open(file.path), EPERM);
    EXPECT_EQ(
        printed,
        "Ferrolog: cannot open \"DIR/trace\": it belongs to another user; tracing stays off\n");
}

TEST_F(TraceFileTest, RefusesARingThatIsTooLarge) {
    EXPECT_EQ(open(file.path, maxRingBytes + 1), EINVAL);
    EXPECT_EQ(printed, "Ferrolog: cannot open \"DIR/trace\": a ring of 268435457 bytes is larger "
                       "than 268435456; tracing stays off\n");
    EXPECT_FALSE(fs::exists(file.path));
}

TEST_F(TraceFileTest, OneProcessWritesAtATime) {
    make();
    const int other = ::open(file.path.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(::flock(other, LOCK_EX | LOCK_NB), 0);
    EXPECT_EQ(open(file.path), EBUSY);
    EXPECT_EQ(
        printed,
        "Ferrolog: cannot open \"DIR/trace\": another process writes into it; tracing stays off\n");
    ::close(other);
    EXPECT_EQ(open(file.path), 0);
}

TEST_F(TraceFileTest, WithoutSpaceItSaysSoAndLeavesNothing) {
    EXPECT_EQ(inChild([&] {
                  ::signal(SIGXFSZ, SIG_IGN);
                  const rlimit limit{20000, 20000};
                  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
                  EXPECT_EQ(open(file.path), EFBIG);
                  EXPECT_EQ(printed, "Ferrolog: cannot reserve 45056 bytes for \"DIR/trace\": File "
                                     "too large; tracing stays off\n");
                  EXPECT_FALSE(fs::exists(file.path));
              }),
              0);
}

// Then no name is used up either, however often it is tried.
TEST_F(TraceFileTest, WithoutAMappingItSaysSoAndLeavesNothing) {
    EXPECT_EQ(inChild([&] {
                  const std::string path = file.path;
                  complaintsOf([&] {
                      rlimit before{};
                      ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
                      for (int round = 0; round < 12; ++round) {
                          // One descriptor: the file's own, none to map it through.
                          const int next = ::open("/", O_PATH | O_CLOEXEC);
                          ::close(next);
                          const rlimit one{static_cast<rlim_t>(next) + 1, before.rlim_max};
                          ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &one), 0);
                          ASSERT_EQ(trace.open(path.c_str(), minRingBytes), EMFILE);
                          ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
                          ASSERT_TRUE(fs::is_empty(file.directory));
                      }
                  });
              }),
              0);
}

TEST_F(TraceFileTest, AFileThatADeadProcessHadBegunIsMadeAnewInItsPlace) {
    for (const std::size_t bytes : {8U, 20000U, 45056U, 100000U}) {
        std::string begun("FERROLO", 8);
        begun.resize(bytes, 'x');
        write(file.path, begun);
        ASSERT_EQ(open(file.path), 0);
        EXPECT_EQ(printed, "");
        trace.close();
        EXPECT_EQ(Ferrolog::Reader(file.path).notes(), std::vector<std::string>{});
        EXPECT_EQ(fs::file_size(file.path), 45056U);
        EXPECT_EQ(contents(file.path).back(), std::byte{0});
    }
    EXPECT_FALSE(fs::exists(file.path + ".1"));
}

// A process that is killed in the middle of an opening, at one moment after another.
TEST_F(TraceFileTest, AnOpeningThatIsKilledUsesNoNameUp) {
    for (int round = 0; round < 60; ++round) {
        ::unlink(file.path.c_str());
        const pid_t child = ::fork();
        if (child == 0) {
            TraceFile killed;
            killed.open(file.path.c_str(), U32{4} << 20);
            ::pause();
        }
        ::usleep(static_cast<useconds_t>(round * 20));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        ASSERT_EQ(open(file.path, U32{4} << 20), 0) << printed;
        trace.close();
        trace.unmap();
        ASSERT_EQ(printed, "") << round;
    }
}

TEST_F(TraceFileTest, AForeignFileIsMovedAside) {
    write(file.path, "precious");
    EXPECT_EQ(open(file.path), 0);
    EXPECT_EQ(printed, "Ferrolog: \"DIR/trace\" is not a whole trace file; it is moved aside\n"
                       "Ferrolog: \"DIR/trace\" is now \"DIR/trace.1\"\n");
    EXPECT_EQ(contents(file.path + ".1").size(), 8U);
}

TEST_F(TraceFileTest, ATornFileIsMovedAside) {
    make();
    fs::resize_file(file.path, 45055);
    EXPECT_EQ(open(file.path), 0);
    EXPECT_EQ(fs::file_size(file.path + ".1"), 45055U);
    trace.header().check ^= 1;
    trace.close();
    EXPECT_EQ(open(file.path), 0);
    EXPECT_EQ(printed, "Ferrolog: \"DIR/trace\" is not a whole trace file; it is moved aside\n"
                       "Ferrolog: \"DIR/trace\" is now \"DIR/trace.2\"\n");
}

// The next call sites would be given ids that mean something else: those of no site, and of the one
// for those without room.
TEST_F(TraceFileTest, AFileWithoutItsFirstSitesIsMovedAside) {
    for (const U32 sitesUsed : {0U, 1U}) {
        ASSERT_EQ(open(file.path), 0);
        trace.header().sitesUsed = sitesUsed;
        trace.close();
        ASSERT_EQ(open(file.path), 0);
        const std::string aside = std::to_string(sitesUsed + 1);
        EXPECT_EQ(printed, "Ferrolog: \"DIR/trace\" is not a whole trace file; it is moved aside\n"
                           "Ferrolog: \"DIR/trace\" is now \"DIR/trace." +
                               aside + "\"\n");
        EXPECT_EQ(trace.header().sitesUsed, 2U);
        trace.close();
    }
}

// The header's counts have no check: what the records say is not handed out again.
TEST_F(TraceFileTest, NothingThatIsInUseIsHandedOutAgain) {
    ASSERT_EQ(open(file.path), 0);
    EXPECT_EQ(SiteTable(trace).enter({"F", "first", "", 1}), 2U);
    EXPECT_EQ(SiteTable(trace).enter({"F", "second", "", 2}), 3U);
    trace.life(7).number = 7;
    trace.life(7).session = 5;
    trace.header().sitesUsed = 2;
    trace.header().textUsed = 51;
    trace.header().livesBegun = 3;
    trace.header().sessionsBegun = 3;
    trace.site(9).textOffset = 0xFFFFFFF0; // not valid
    trace.close();
    ASSERT_EQ(open(file.path), 0);
    EXPECT_EQ(printed, "");
    EXPECT_EQ(trace.header().sitesUsed, 4U);
    EXPECT_EQ(trace.header().textUsed, 51U + 6 + 7);
    EXPECT_EQ(trace.header().livesBegun, 7U);
    EXPECT_EQ(trace.header().sessionsBegun, 5U);
}

TEST_F(TraceFileTest, AfterAClosingWhatIsWrittenGoesNowhere) {
    make();
    ASSERT_EQ(open(file.path), 0);
    trace.header().livesBegun = 3;
    trace.close();
    EXPECT_EQ(trace.header().livesBegun, 0U);
    trace.header().livesBegun = 4;
    EXPECT_EQ(trace.header().livesBegun, 4U);
    trace.unmap();
    ASSERT_EQ(open(file.path), 0);
    EXPECT_EQ(trace.header().livesBegun, 3U);
}

// Address space that is just used up.
TEST_F(TraceFileTest, AClosingWithoutMemoryLeavesTheAddressesValid) {
    make();
    ASSERT_EQ(open(file.path), 0);
    EXPECT_EQ(inChild([&] {
                  const rlimit limit{addressSpace(), RLIM_INFINITY};
                  ASSERT_EQ(::setrlimit(RLIMIT_AS, &limit), 0);
                  trace.close();
                  EXPECT_EQ(trace.header().version, fileVersion);
              }),
              0);
}

// As all files will have them; 32 bits end in 2038.
TEST_F(TraceFileTest, AFileWithTimesOf2040IsOpenedAndRead) {
    make();
    constexpr std::int64_t in2040 = 2'208'988'800;
    setTimes(file.path, in2040);
    EXPECT_EQ(open(file.path), 0);
    EXPECT_EQ(printed, "");
    EXPECT_EQ(Ferrolog::Reader(file.path).error(), "");
    trace.header().check ^= 1;
    trace.close();
    setTimes(file.path, in2040);
    EXPECT_EQ(open(file.path), 0);
    EXPECT_EQ(printed, "Ferrolog: \"DIR/trace\" is not a whole trace file; it is moved aside\n"
                       "Ferrolog: \"DIR/trace\" is now \"DIR/trace.1\"\n");
}

TEST_F(TraceFileTest, AFileOfAnotherSizeIsMovedAside) {
    make();
    EXPECT_EQ(open(file.path, 32 << 10), 0);
    EXPECT_EQ(
        printed,
        "Ferrolog: \"DIR/trace\" has a ring of 16384 bytes instead of 32768; it is moved aside\n"
        "Ferrolog: \"DIR/trace\" is now \"DIR/trace.1\"\n");
    EXPECT_EQ(trace.layout().ringBytes, U32{32} << 10);
}

TEST_F(TraceFileTest, AFileWithLittleRoomForSitesIsMovedAside) {
    ASSERT_EQ(open(file.path), 0);
    trace.header().sitesUsed = 48;
    trace.header().textUsed = 6144;
    trace.close();
    ASSERT_EQ(open(file.path), 0);
    EXPECT_EQ(printed, "");
    trace.header().sitesUsed = 49;
    trace.close();
    ASSERT_EQ(open(file.path), 0);
    EXPECT_EQ(printed,
              "Ferrolog: \"DIR/trace\" has little room left for call sites; it is moved aside\n"
              "Ferrolog: \"DIR/trace\" is now \"DIR/trace.1\"\n");
    trace.header().textUsed = 6145;
    trace.close();
    ASSERT_EQ(open(file.path), 0);
    EXPECT_TRUE(fs::exists(file.path + ".2"));
}

TEST_F(TraceFileTest, NothingIsOverwrittenWhenNineFilesStandAside) {
    for (char digit = '1'; digit <= '9'; ++digit) {
        write(file.path + '.' + digit, {digit});
    }
    write(file.path, "precious");
    EXPECT_EQ(open(file.path), EEXIST);
    EXPECT_EQ(printed, "Ferrolog: \"DIR/trace\" is not a whole trace file; it is moved aside\n"
                       "Ferrolog: cannot move \"DIR/trace\" aside: \"DIR/trace.1\" to "
                       "\"DIR/trace.9\" exist; tracing stays off\n");
    EXPECT_EQ(contents(file.path).size(), 8U);
    EXPECT_EQ(contents(file.path + ".9").size(), 1U);
}

TEST_F(TraceFileTest, WhatTheDeadHeldIsFreeAgain) {
    ASSERT_EQ(open(file.path), 0);
    trace.header().lanes[3] = {7, 9};
    trace.chunk(8).owner = 4;
    trace.chunk(8).users = 2;
    trace.chunk(8).ordinal = 8;
    trace.close();
    ASSERT_EQ(open(file.path), 0);
    EXPECT_EQ(trace.header().lanes[3].owner, 0U);
    EXPECT_EQ(trace.header().lanes[3].chunk, 0U);
    EXPECT_EQ(trace.chunk(8).owner, 0U);
    EXPECT_EQ(trace.chunk(8).users, 0U);
    EXPECT_EQ(trace.chunk(8).ordinal, 8U); // its messages stay
}

} // namespace
