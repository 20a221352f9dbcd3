#include <Vel/TraceHandle.h>

#include <Vel/TraceCapture.h>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace Vel {
namespace {

// What a child process writes to standard error while it runs `body` with these variables set.
template <class Body>
std::string stderrOfChild(const char* settings, const char* file, Body body) {
    int ends[2];
    EXPECT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(ends[1], STDERR_FILENO);
        ::close(ends[0]);
        ::close(ends[1]);
        if (settings != nullptr) ::setenv("VEL_TRACE", settings, 1);
        if (file != nullptr) ::setenv("VEL_TRACE_FILE", file, 1);
        body();
        ::_exit(0);
    }
    ::close(ends[1]);
    std::string text;
    char buffer[4096];
    for (ssize_t n; (n = ::read(ends[0], buffer, sizeof(buffer))) > 0;)
        text.append(buffer, static_cast<std::size_t>(n));
    ::close(ends[0]);
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    return text;
}

// The form of one line, with `rest` after the process number.
auto lineWith(const std::string& rest) {
    return testing::MatchesRegex(
        "[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{6}Z [0-9]+ " + rest + "\n");
}

// The environment is read once in a process, when its first handle is made: each of these runs in a
// child, before this process makes a handle of its own.
TEST(TraceEnvironment, GivesTheFirstSettings) {
    EXPECT_THAT(stderrOfChild("Widget/3-5+9", nullptr,
                              [] {
                                  const TraceHandle widget("Widget", true);
                                  const TraceHandle gadget("Gadget", false);
                                  if (widget.levelsOn() == 0b1000111000 && gadget.levelsOn() == 0)
                                      widget.write(3, "as set");
                              }),
                lineWith("Widget/3 as set"));
}

TEST(TraceEnvironment, ReportsWhatIsMalformedAndKeepsTheRest) {
    EXPECT_EQ(stderrOfChild("Widget/3x,/4,Gadget,,Widget/5-3,Widget/,Widget/1+,*/2,W\n/77", nullptr,
                            [] {
                                const TraceHandle widget("Widget", true);
                                if (widget.levelsOn() != 0b100) ::abort();
                            }),
              "VEL_TRACE: \"Widget/3x\": levels are all, none, or digits and ranges joined by +; "
              "entry ignored\n"
              "VEL_TRACE: \"/4\": not of the form name/levels; entry ignored\n"
              "VEL_TRACE: \"Gadget\": not of the form name/levels; entry ignored\n"
              "VEL_TRACE: \"\": not of the form name/levels; entry ignored\n"
              "VEL_TRACE: \"Widget/5-3\": levels are all, none, or digits and ranges joined by +; "
              "entry ignored\n"
              "VEL_TRACE: \"Widget/\": levels are all, none, or digits and ranges joined by +; "
              "entry ignored\n"
              "VEL_TRACE: \"Widget/1+\": levels are all, none, or digits and ranges joined by +; "
              "entry ignored\n"
              "VEL_TRACE: \"W\\x0a/77\": levels are all, none, or digits and ranges joined by +; "
              "entry ignored\n");
}

class TraceFile : public testing::Test {
protected:
    TraceFile() {
        char pattern[] = "/tmp/vel-trace-XXXXXX";
        directory_ = ::mkdtemp(pattern);
        path_ = directory_ / "trace";
    }

    ~TraceFile() override { std::filesystem::remove_all(directory_); }

    std::string contents() const {
        std::ostringstream all;
        all << std::ifstream(path_).rdbuf();
        return all.str();
    }

    std::filesystem::path directory_;
    std::filesystem::path path_;
};

TEST_F(TraceFile, TakesTheLinesAndIsAppendedTo) {
    for (const char* text : {"first", "second"})
        EXPECT_EQ(stderrOfChild("Widget/all", path_.c_str(),
                                [&] { TraceHandle("Widget", false).write(9, text); }),
                  "");
    const std::string all = contents();
    const std::size_t second = all.find('\n') + 1;
    EXPECT_THAT(all.substr(0, second), lineWith("Widget/9 first"));
    EXPECT_THAT(all.substr(second), lineWith("Widget/9 second"));

    struct stat status {};

    ASSERT_EQ(::stat(path_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0600u);
}

// A clock that is far ahead is enough for such a file; a program of 32 bits reads it all the same.
TEST_F(TraceFile, TakesTheLinesWhateverItsTimesAre) {
    ASSERT_EQ(std::system(("touch -d 2040-01-01 " + path_.string()).c_str()), 0);
    EXPECT_EQ(stderrOfChild("Widget/all", path_.c_str(),
                            [] { TraceHandle("Widget", false).write(9, "late"); }),
              "");
    EXPECT_THAT(contents(), lineWith("Widget/9 late"));
}

TEST_F(TraceFile, ThatCannotBeOpenedIsReportedAndStandardErrorServes) {
    const std::string path = directory_ / "missing" / "trace";
    const std::string all =
        stderrOfChild(nullptr, path.c_str(), [] { TraceHandle("Widget", true).write(1, "odd"); });
    const std::string complaint =
        "VEL_TRACE_FILE: \"" + path + "\": No such file or directory; tracing to standard error\n";
    ASSERT_TRUE(all.starts_with(complaint)) << all;
    EXPECT_THAT(all.substr(complaint.size()), lineWith("Widget/1 odd"));
}

class TraceFileThatIsNone : public TraceFile {
protected:
    // What is said of the path, and where the lines go then.
    void expectRefused(const std::string& why) {
        const std::string all = stderrOfChild(nullptr, path_.c_str(), [] {
            ::alarm(60); // ends one that waits for somebody
            TraceHandle("Widget", true).write(1, "odd");
        });
        const std::string complaint =
            "VEL_TRACE_FILE: \"" + path_.string() + "\": " + why + "; tracing to standard error\n";
        ASSERT_TRUE(all.starts_with(complaint)) << all;
        EXPECT_THAT(all.substr(complaint.size()), lineWith("Widget/1 odd"));
    }
};

TEST_F(TraceFileThatIsNone, AFifoThatNobodyReads) {
    ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    expectRefused("it is not a regular file");
}

TEST_F(TraceFileThatIsNone, AFifoThatSomebodyReads) {
    ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    const int reader = ::open(path_.c_str(), O_RDONLY | O_NONBLOCK);
    expectRefused("it is not a regular file");
    char byte = 0;
    EXPECT_EQ(::read(reader, &byte, 1), 0) << "nothing was written into it";
    ::close(reader);
}

TEST_F(TraceFileThatIsNone, ASymbolicLink) {
    const std::filesystem::path target = directory_ / "target";
    std::filesystem::create_symlink(target, path_);
    expectRefused("it is a symbolic link");
    EXPECT_FALSE(std::filesystem::exists(target));
}

TEST_F(TraceFileThatIsNone, ADirectory) {
    std::filesystem::create_directory(path_);
    expectRefused("Is a directory");
}

TEST_F(TraceFileThatIsNone, OneOfAnotherUser) {
    if (::geteuid() != 0) GTEST_SKIP() << "only the super-user can give a file away";
    std::ofstream(path_) << "theirs\n";
    ASSERT_EQ(::chown(path_.c_str(), 65534, 65534), 0);
    expectRefused("it belongs to another user");
    EXPECT_EQ(contents(), "theirs\n");
}

TEST_F(TraceFile, IsNoStandardStreamWhereTheseAreClosed) {
    const pid_t child = ::fork();
    if (child == 0) {
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::close(stream);
        ::setenv("VEL_TRACE_FILE", path_.c_str(), 1);
        TraceHandle("Widget", true).write(1, "odd");
        int open = 0;
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            if (::fcntl(stream, F_GETFD) != -1) ++open;
        ::_exit(open);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_THAT(contents(), lineWith("Widget/1 odd"));
}

TEST(TraceHandle, HasAnomaliesOnOrNothing) {
    EXPECT_EQ(TraceHandle("Widget", true).levelsOn(), 0b11);
    EXPECT_EQ(TraceHandle("Widget", false).levelsOn(), 0);
}

TEST(TraceHandle, SwitchesLevelsOneByOne) {
    TraceHandle handle("Widget", false);
    for (unsigned level = 0; level < 10; ++level) {
        EXPECT_FALSE(handle.isOn(level));
        handle.levelIs(level, true);
        EXPECT_TRUE(handle.isOn(level));
        EXPECT_EQ(handle.levelsOn(), 1u << level);
        handle.levelIs(level, false);
    }
    handle.levelIs(10, true);
    handle.levelsOnIs(0xffff);
    EXPECT_EQ(handle.levelsOn(), TraceHandle::allLevels);
    for (const unsigned level : {10u, 16u, 31u, 32u, 0x80000000u}) EXPECT_FALSE(handle.isOn(level));
}

TEST(TraceHandle, FollowsSettingsMadeBeforeAndAfterItsBirth) {
    EXPECT_TRUE(TraceHandle::settingsAre("TraceA/0-2+9"));
    TraceHandle a("TraceA", false);
    TraceHandle b("TraceB", true);
    EXPECT_EQ(a.levelsOn(), 0b1000000111);
    EXPECT_TRUE(TraceHandle::settingsAre("TraceA/none,TraceB/all"));
    EXPECT_EQ(a.levelsOn(), 0);
    EXPECT_EQ(b.levelsOn(), TraceHandle::allLevels);
}

TEST(TraceHandle, ObeysTheLastEntryThatNamesIt) {
    EXPECT_TRUE(TraceHandle::settingsAre("TraceC/5,Trace*/1,TraceD/2"));
    TraceHandle c("TraceC", false);
    TraceHandle d("TraceD", false);
    TraceHandle other("Other", false);
    EXPECT_EQ(c.levelsOn(), 1 << 1);
    EXPECT_EQ(d.levelsOn(), 1 << 2);
    EXPECT_EQ(other.levelsOn(), 0);
    EXPECT_TRUE(TraceHandle::settingsAre("TraceC/5"));
    EXPECT_EQ(TraceHandle("TraceC", false).levelsOn(), 1 << 5);
    EXPECT_EQ(TraceHandle("TraceE", false).levelsOn(), 1 << 1);
    EXPECT_TRUE(TraceHandle::settingsAre("*/none"));
    EXPECT_EQ(c.levelsOn(), 0);
    EXPECT_EQ(TraceHandle("Another", true).levelsOn(), 0);
}

TEST(TraceHandle, SplitsNameAndLevelsAtTheLastSlash) {
    EXPECT_TRUE(TraceHandle::settingsAre("a/b/7"));
    EXPECT_EQ(TraceHandle("a/b", false).levelsOn(), 1 << 7);
}

TEST(TraceHandle, SaysThatSettingsAreMalformed) {
    testing::internal::CaptureStderr();
    EXPECT_FALSE(TraceHandle::settingsAre("TraceF/1--3,TraceF/4"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "trace settings: \"TraceF/1--3\": levels are all, none, or digits and ranges joined "
              "by +; entry ignored\n");
    EXPECT_EQ(TraceHandle("TraceF", false).levelsOn(), 1 << 4);
}

TEST(TraceHandle, WritesOneLineWhateverTheTextHolds) {
    const TraceHandle handle("Widget", false);
    testing::internal::CaptureStderr();
    handle.write(8, "a\nb\x7f\tc \xc3\xa4");
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                lineWith("Widget/8 a\\\\x0ab\\\\x7f\\\\x09c \xc3\xa4"));
}

TEST(TraceHandle, LeavesTheErrorNumberAlone) {
    const TraceHandle handle("Widget", false);
    testing::internal::CaptureStderr();
    const int saved = ::dup(STDERR_FILENO);
    ::close(STDERR_FILENO); // so that writing fails and sets it
    errno = ENOENT;
    handle.write(1, "lost");
    const int after = errno;
    ::dup2(saved, STDERR_FILENO);
    ::close(saved);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(after, ENOENT);
}

TEST(TraceHandle, SendsLinesToTheInnermostSink) {
    const TraceHandle handle("Widget", false);
    TraceCapture outer;
    {
        TraceCapture inner;
        handle.write(1, "in\n");
        EXPECT_EQ(inner.take(), "Widget/1 in\n\n");
        EXPECT_EQ(inner.take(), "");
    }
    handle.write(2, "out");
    EXPECT_EQ(outer.take(), "Widget/2 out\n");
}

TEST(TraceHandle, IsMadeInAChildWhateverOtherThreadsDo) {
    std::atomic<bool> isDone = false;
    TraceCapture capture;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 2; ++thread)
        threads.emplace_back([&] {
            while (!isDone) TraceHandle("Other", false).write(1, "x");
        });
    int status = 0;
    for (int round = 0; round < 300 && status == 0; ++round) {
        const pid_t child = ::fork();
        if (child == 0) {
            ::alarm(60); // ends one that hangs
            TraceHandle::sinkIs(nullptr);
            const TraceHandle handle("Child", false);
            TraceHandle::settingsAre("Child/3");
            ::_exit(handle.isOn(3) ? 0 : 1);
        }
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0) << "round " << round;
    }
    isDone = true;
    for (std::thread& thread : threads) thread.join();
}

TEST(TraceHandle, IsUsedBySeveralThreads) {
    TraceHandle shared("Shared", false);
    TraceCapture capture;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 100; ++i) {
                TraceHandle own("Own", false);
                shared.levelIs(5, true);
                TraceHandle::settingsAre("Shared/5,Own/all");
                if (shared.isOn(5)) shared.write(5, "x");
            }
        });
    for (std::thread& thread : threads) thread.join();
    std::string expected;
    for (int i = 0; i < 400; ++i) expected += "Shared/5 x\n";
    EXPECT_EQ(capture.take(), expected);
}

} // namespace
} // namespace Vel
