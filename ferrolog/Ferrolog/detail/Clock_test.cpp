#include <Ferrolog/detail/Clock.h>

#include <Ferrolog/testing/TestFile.h>

#include <sys/auxv.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

namespace {

using namespace Ferrolog::detail;
using Ferrolog::testing::TestDirectory;

class Clock : public testing::TestWithParam<ClockKind> {};

TEST_P(Clock, AnchorsOfOneMomentLieBetweenTheReadingsAroundThem) {
    const U64 ticksBefore = ticksNow(GetParam());
    const U64 realtimeBefore = nanoseconds(CLOCK_REALTIME);
    const Anchor anchor = takeAnchor(GetParam());
    EXPECT_GE(anchor.ticks, ticksBefore);
    EXPECT_LE(anchor.ticks, ticksNow(GetParam()));
    EXPECT_GE(anchor.realtimeNs, realtimeBefore);
    EXPECT_LE(anchor.realtimeNs, nanoseconds(CLOCK_REALTIME));
    EXPECT_LE(anchor.monotonicNs, nanoseconds(CLOCK_MONOTONIC));
}

TEST_P(Clock, SecondAnchorIsAtLeastATenthOfAMillisecondLater) {
    const Anchor first = takeAnchor(GetParam());
    const Anchor second = takeSecondAnchor(GetParam(), first);
    EXPECT_GE(second.monotonicNs - first.monotonicNs, 100'000U);
    EXPECT_GT(second.ticks, first.ticks);
}

INSTANTIATE_TEST_SUITE_P(Kinds, Clock, testing::Values(chooseClock(), ClockKind::monotonicNs));

TEST(ClockSpeed, IsTicksPerSecondBetweenTwoAnchors) {
    EXPECT_EQ(ticksPerSecond({1000, 0, 0}, {4000, 1000, 0}), 3'000'000'000U);
    EXPECT_EQ(ticksPerSecond({5, 5, 0}, {5, 1005, 0}),
              1'000'000'000U); // ticks stand still: a guess
    EXPECT_EQ(ticksPerSecond({5, 5, 0}, {9, 5, 0}), 1'000'000'000U);
    EXPECT_EQ(ticksPerSecond({0, 0, 0}, {1, U64{1} << 62, 0}), 1U);
    EXPECT_EQ(ticksPerSecond({0, 0, 0}, {U64{1} << 62, 1, 0}), 1'000'000'000'000U);
}

TEST(ClockChoice, TheEnvironmentMayAskForTheMonotonicClock) {
    ASSERT_EQ(::setenv("FERROLOG_CLOCK", "monotonic", 1), 0);
    EXPECT_EQ(chooseClock(), ClockKind::monotonicNs);
    ::unsetenv("FERROLOG_CLOCK");
}

// A copy of this program that belongs to another user runs this test, too.
TEST(ClockChoice, ASetUserIdProgramIgnoresTheEnvironment) {
    const ClockKind best = chooseClock();
    if (std::getenv("FERROLOG_CLOCK") != nullptr) {
        const bool isSetUserId = ::getauxval(AT_SECURE) != 0;
        ::_exit(isSetUserId && best == ClockKind::timeStampCounter ? 0 : 1);
    }
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can make such a program";
    }
    if (best != ClockKind::timeStampCounter) {
        GTEST_SKIP() << "this machine leaves no choice";
    }
    TestDirectory file;

    struct statvfs system {};

    ASSERT_EQ(::statvfs(file.directory.c_str(), &system), 0);
    if ((system.f_flag & ST_NOSUID) != 0) {
        GTEST_SKIP() << "this file system has no such programs";
    }
    std::filesystem::copy_file("/proc/self/exe", file.path);
    ASSERT_EQ(::chown(file.path.c_str(), 12345, 12345), 0);
    ASSERT_EQ(::chmod(file.path.c_str(), 04755), 0);
    const std::string command = "FERROLOG_CLOCK=monotonic " + file.path +
                                " --gtest_filter=ClockChoice.ASetUserId* >/dev/null";
    EXPECT_EQ(std::system(command.c_str()), 0);
}

} // namespace
