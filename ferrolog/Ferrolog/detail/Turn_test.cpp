#include <Ferrolog/detail/Turn.h>

#include <Ferrolog/testing/TestFile.h>

#include <atomic>
#include <csignal>
#include <fstream>
#include <memory>
#include <string>
#include <thread>

namespace {

using Ferrolog::detail::Turn;
using Ferrolog::testing::inChild;

// As /proc says it: 'S' for one that sleeps.
char stateOf(pid_t thread) {
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    const std::size_t nameEnd = text.rfind(") ");
    return nameEnd == std::string::npos ? '?' : text[nameEnd + 2];
}

bool isFreeForOthers() {
    bool isFree = false;
    std::thread([&] { isFree = static_cast<bool>(Turn::ifFree()); }).join();
    return isFree;
}

TEST(Turn, OneThreadHasItAtATime) {
    {
        const Turn turn = Turn::ifFree();
        EXPECT_TRUE(turn);
        EXPECT_FALSE(isFreeForOthers());
    }
    EXPECT_TRUE(isFreeForOthers());
}

TEST(Turn, TheOthersWaitForIt) {
    std::atomic<bool> given = false;
    std::thread other;
    {
        const Turn turn = Turn::waitedFor();
        other = std::thread([&] {
            const Turn next = Turn::waitedFor();
            EXPECT_TRUE(next);
            EXPECT_TRUE(given);
        });
        std::this_thread::yield();
        given = true;
    }
    other.join();
}

// Starts a thread that asks for a turn while we have it, and returns when it waits.
std::thread waiting(std::atomic<bool>& hadOne) {
    std::atomic<pid_t> id = 0;
    std::thread thread([&] {
        id = ::gettid();
        const Turn turn = Turn::waitedFor();
        hadOne = true;
    });
    while (id == 0 || stateOf(id) != 'S') {
        std::this_thread::yield();
    }
    return thread;
}

TEST(Turn, WhoAskedFirstHasItFirst) {
    std::atomic<bool> otherHadOne = false;
    std::thread other;
    {
        const Turn turn = Turn::waitedFor();
        other = waiting(otherHadOne);
    }
    {
        const Turn turn = Turn::waitedFor();
        EXPECT_TRUE(otherHadOne);
    }
    other.join();
}

TEST(Turn, AChildDoesNotWaitForThoseWhoWaitedInItsParent) {
    std::atomic<bool> otherHadOne = false;
    std::unique_ptr<Turn> turn(new Turn(Turn::waitedFor()));
    std::thread other = waiting(otherHadOne);
    EXPECT_EQ(inChild([&] {    // forked with a turn, as in a signal handler
                  ::alarm(60); // kills who waits for ever
                  EXPECT_FALSE(Turn::ifFree());
                  turn.reset();
                  EXPECT_TRUE(Turn::waitedFor());
                  EXPECT_TRUE(Turn::ifFree());
                  EXPECT_FALSE(otherHadOne);
              }),
              0);
    turn.reset();
    other.join();
    EXPECT_TRUE(Turn::ifFree());
}

TEST(Turn, ASignalHandlerGetsNoneFromTheThreadThatItInterrupts) {
    static int asked = 0;
    ::signal(SIGUSR1, [](int) {
        EXPECT_FALSE(Turn::ifFree());
        EXPECT_FALSE(Turn::waitedFor());
        ++asked;
    });
    {
        const Turn turn = Turn::waitedFor();
        ::raise(SIGUSR1);
        EXPECT_EQ(asked, 1);
        EXPECT_FALSE(isFreeForOthers()); // what the handler did gave nothing back
    }
    EXPECT_TRUE(isFreeForOthers());
}

TEST(Turn, AForkHasIt) {
    Turn::takeForFork();
    EXPECT_FALSE(isFreeForOthers());
    Turn::giveInParent();
    EXPECT_TRUE(isFreeForOthers());
    {
        // From a signal handler, say: the turn is not the fork's, and stays.
        const Turn turn = Turn::waitedFor();
        Turn::takeForFork();
        Turn::giveInParent();
        EXPECT_FALSE(isFreeForOthers());
    }
    EXPECT_TRUE(isFreeForOthers());
}

} // namespace
