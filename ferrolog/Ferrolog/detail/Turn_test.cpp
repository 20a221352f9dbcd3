#include <Ferrolog/detail/Turn.h>

#include <Ferrolog/testing/TestFile.h>

#include <atomic>
#include <csignal>
#include <thread>

namespace {

using Ferrolog::detail::Turn;
using Ferrolog::testing::inChild;

bool isFreeForOthers() {
    bool isFree = false;
    std::thread([&] { isFree = static_cast<bool>(Turn::ifFree()); }).join();
    return isFree;
}

TEST(Turn, OneThreadHasItAtATime) {
    {
        Turn const turn = Turn::ifFree();
        EXPECT_TRUE(turn);
        EXPECT_FALSE(isFreeForOthers());
    }
    EXPECT_TRUE(isFreeForOthers());
}

TEST(Turn, TheOthersWaitForIt) {
    std::atomic<bool> given = false;
    std::thread other;
    {
        Turn const turn = Turn::waitedFor();
        other = std::thread([&] {
            Turn const next = Turn::waitedFor();
            EXPECT_TRUE(next);
            EXPECT_TRUE(given);
        });
        std::this_thread::yield();
        given = true;
    }
    other.join();
}

TEST(Turn, ASignalHandlerGetsNoneFromTheThreadThatItInterrupts) {
    static int asked = 0;
    ::signal(SIGUSR1, [](int) {
        EXPECT_FALSE(Turn::ifFree());
        EXPECT_FALSE(Turn::waitedFor());
        ++asked;
    });
    {
        Turn const turn = Turn::waitedFor();
        ::raise(SIGUSR1);
        EXPECT_EQ(asked, 1);
        EXPECT_FALSE(isFreeForOthers()); // what the handler did gave nothing back
    }
    EXPECT_TRUE(isFreeForOthers());
}

TEST(Turn, AForkHasIt) {
    Turn::takeForFork();
    EXPECT_FALSE(isFreeForOthers());
    Turn::giveAfterFork();
    EXPECT_TRUE(isFreeForOthers());
    {
        // From a signal handler, say: the turn is not the fork's, and stays.
        Turn const turn = Turn::waitedFor();
        Turn::takeForFork();
        Turn::giveAfterFork();
        EXPECT_FALSE(isFreeForOthers());
    }
    EXPECT_TRUE(isFreeForOthers());
}

} // namespace
