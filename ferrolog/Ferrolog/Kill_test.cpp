// A process that is killed while it traces: at random moments, and after every single instruction.
#include <Ferrolog/Trace.h>
#include <Ferrolog/testing/TestFile.h>

#include <array>
#include <atomic>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <random>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <thread>

namespace {

using Ferrolog::CallSite;
using Ferrolog::Message;
using Ferrolog::Reader;
using namespace Ferrolog::testing;

// What the writers say they have done, in memory that outlives them.
struct Progress {
    std::array<std::atomic<std::uint32_t>, 3> completed;
};

class SharedProgress {
public:
    SharedProgress()
        : progress_(static_cast<Progress*>(::mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE,
                                                  MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {}

    SharedProgress(const SharedProgress&) = delete;
    SharedProgress& operator=(const SharedProgress&) = delete;

    ~SharedProgress() { ::munmap(progress_, sizeof(Progress)); }

    Progress* operator->() { return progress_; }

    Progress& operator*() { return *progress_; }

private:
    Progress* progress_;
};

void writeForEver(std::uint32_t writer, std::uint32_t number, SharedProgress& progress) {
    for (;; ++number) {
        FERROLOG("Kill", "writer ", writer, " number ", number, " check ", ~number);
        progress->completed[writer] = number + 1;
    }
}

// What holds after a kill at any instruction.
void expectConsistent(const Reader& reader, const Progress& progress, unsigned writers) {
    ASSERT_EQ(reader.error(), "");
    EXPECT_EQ(reader.notes(), std::vector<std::string>{});
    std::vector<std::uint32_t> next(writers, 0);
    std::uint64_t count = 0;
    for (const Message& message : reader.messages()) {
        const auto words = reader.words(message);
        ASSERT_EQ(words.size(), 3U);
        ASSERT_LT(words[0], writers);
        ASSERT_EQ(words[1], ~words[2]) << "torn";
        if (next[words[0]] != 0) {
            EXPECT_EQ(words[1], next[words[0]]) << "writer " << words[0];
        }
        next[words[0]] = words[1] + 1;
        EXPECT_NE(message.timeNs, 0U);
        ++count;
    }
    // The newest message of each writer is there: all that it completed, and perhaps the one it was
    // at.
    std::uint64_t completed = 0;
    for (unsigned writer = 0; writer < writers; ++writer) {
        const std::uint32_t done = progress.completed[writer];
        completed += done;
        if (next[writer] != 0) {
            EXPECT_GE(next[writer], done);
            EXPECT_LE(next[writer], done + 1);
        }
    }
    const CallSite site = siteOf(reader, "writer %i number %i check %i");
    EXPECT_EQ(site.present, count);
    EXPECT_GE(site.present + site.lost, completed);
}

TEST(Kill, AtRandomMomentsLosesNoCompletedMessage) {
    const std::uint32_t seed = 20261123;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    TestFile file;
    SharedProgress progress;
    unsigned kills = 0;
    // Where the machine is busy, many are killed before they have begun.
    constexpr unsigned enoughLives = 30;
    std::size_t lives = 0;
    for (unsigned round = 0; round < 240 || (lives < enoughLives && round < 20000); ++round) {
        SCOPED_TRACE(round);
        const unsigned writers = 1 + round % 3;
        const std::uint32_t started = progress->completed[0];
        const pid_t child = ::fork();
        if (child == 0) {
            if (ferrolog_open(file.path.c_str(), smallRing) != 0) {
                ::_exit(1);
            }
            std::vector<std::thread> threads;
            for (unsigned writer = 1; writer < writers; ++writer) {
                threads.emplace_back(
                    [&, writer] { writeForEver(writer, progress->completed[writer], progress); });
            }
            writeForEver(0, progress->completed[0], progress);
        }
        ::usleep(static_cast<useconds_t>(random() % 3000));
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
        ++kills;

        const Reader reader(file.path);
        lives = reader.lives().size();
        if (lives == 0) {
            continue;
        } // killed before the file was whole
        ASSERT_EQ(reader.notes(), std::vector<std::string>{});
        const CallSite site = siteOf(reader, "writer %i number %i check %i");
        // Every message that was completed in any round is present or counted as lost; beyond them
        // there is at most the one that each writer of each round was at.
        std::uint64_t completed = 0;
        std::array<std::uint32_t, 3> newest{};
        for (unsigned writer = 0; writer < 3; ++writer) {
            completed += progress->completed[writer];
        }
        EXPECT_GE(site.present + site.lost, completed);
        EXPECT_LE(site.present + site.lost, completed + 3 * kills);
        for (const Message& message : reader.messages()) {
            const auto words = reader.words(message);
            ASSERT_EQ(words.size(), 3U);
            ASSERT_LT(words[0], 3U);
            ASSERT_EQ(words[1], ~words[2]) << "torn";
            newest[words[0]] = std::max(newest[words[0]], words[1] + 1);
        }
        for (unsigned writer = 0; writer < 3; ++writer) {
            const std::uint32_t done = progress->completed[writer];
            EXPECT_TRUE(newest[writer] == 0 || newest[writer] <= done + 1);
            // With more than one writer, the others may have filled the ring meanwhile.
            if (writers == 1 && writer == 0 && done > started) {
                EXPECT_GE(newest[0], done);
            }
        }
    }
    // The file was torn at most while it was made, which the first rounds may do; then one life
    // follows the other.
    EXPECT_GE(lives, enoughLives);
}

void writeSome(std::uint32_t from, std::uint32_t to, SharedProgress& progress) {
    for (std::uint32_t number = from; number < to; ++number) {
        FERROLOG("Kill", "writer ", 0U, " number ", number, " check ", ~number);
        progress->completed[0] = number + 1;
    }
}

// Most instructions do not touch the file: tells those after which there is something new to read.
class SeenStates {
public:
    explicit SeenStates(const std::string& path) : seen_(contents(path)) {
        const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        file_ = ::mmap(nullptr, seen_.size(), PROT_READ, MAP_SHARED, descriptor, 0);
        ::close(descriptor);
    }

    SeenStates(const SeenStates&) = delete;
    SeenStates& operator=(const SeenStates&) = delete;

    ~SeenStates() { ::munmap(file_, seen_.size()); }

    bool isNew(std::uint32_t completed) {
        if (completed == completed_ && std::memcmp(seen_.data(), file_, seen_.size()) == 0) {
            return false;
        }
        completed_ = completed;
        std::memcpy(seen_.data(), file_, seen_.size());
        return true;
    }

private:
    std::vector<std::byte> seen_;
    void* file_ = nullptr;
    std::uint32_t completed_ = 0;
};

// Lets `body` run in a child one instruction at a time, and reads the file after each.
template <class Body>
void readAfterEveryInstruction(const TestFile& file, SharedProgress& progress, Body body) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        ::raise(SIGSTOP);
        body();
        ::_exit(0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, WUNTRACED), child);
    if (::ptrace(PTRACE_SINGLESTEP, child, nullptr, nullptr) != 0) {
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        GTEST_SKIP() << "this machine lets no process be traced";
    }
    SeenStates states(file.path);
    unsigned instructions = 0;
    unsigned read = 0;
    while (::waitpid(child, &status, 0) == child && WIFSTOPPED(status) &&
           !testing::Test::HasFailure()) {
        ++instructions;
        if (states.isNew(progress->completed[0])) {
            SCOPED_TRACE("after instruction " + std::to_string(instructions));
            const Reader reader(file.path);
            expectConsistent(reader, *progress, 1);
            const CallSite site = siteOf(reader, "writer %i number %i check %i");
            EXPECT_LE(site.present + site.lost, progress->completed[0] + std::uint64_t{1});
            ++read;
        }
        ::ptrace(PTRACE_SINGLESTEP, child, nullptr, nullptr);
    }
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    EXPECT_GT(read, 100U) << instructions << " instructions";
}

TEST(Kill, AfterAnyInstructionOfTheFirstMessagesLosesNothing) {
    TestFile file;
    ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
    // Enters the site, begins a life, borrows a lane, takes a chunk, fills it, takes the next.
    SharedProgress progress;
    readAfterEveryInstruction(file, progress, [&] { writeSome(0, 12, progress); });
}

TEST(Kill, AfterAnyInstructionOfAWrapAroundLosesNoCount) {
    TestFile file;
    ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
    SharedProgress progress;
    writeSome(0, 5000, progress);
    readAfterEveryInstruction(file, progress, [&] { writeSome(5000, 5012, progress); });
    EXPECT_GT(Reader(file.path).lost(), 4000U);
}

} // namespace
