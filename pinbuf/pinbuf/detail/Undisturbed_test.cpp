#include <pinbuf/detail/Undisturbed.h>

#include <atomic>
#include <gtest/gtest.h>
#include <pinbuf/detail/TestSupport.h>
#include <pthread.h>
#include <thread>

namespace pinbuf {
namespace {

using test::inChild;

bool isPending(int signal) {
    sigset_t pending;
    ::sigpending(&pending);
    return sigismember(&pending, signal) == 1;
}

bool isBlocked(int signal) {
    sigset_t blocked;
    ::pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    return sigismember(&blocked, signal) == 1;
}

TEST(Undisturbed, TakesBackASignalOfTheCall) {
    {
        Undisturbed undisturbed;
        ::raise(SIGXFSZ);
        EXPECT_TRUE(isPending(SIGXFSZ));
        undisturbed.takeSignalBack();
    }
    EXPECT_FALSE(isPending(SIGXFSZ));
    EXPECT_FALSE(isBlocked(SIGXFSZ));
}

TEST(Undisturbed, LeavesOtherSignalsAlone) {
    EXPECT_EQ(inChild([] {
                  const Undisturbed undisturbed;
                  ::raise(SIGTERM);
                  return 0;
              }),
              -SIGTERM);
}

TEST(Undisturbed, LeavesASignalThatWaitedBefore) {
    EXPECT_EQ(inChild([] {
                  sigset_t set;
                  sigemptyset(&set);
                  sigaddset(&set, SIGXFSZ);
                  ::pthread_sigmask(SIG_BLOCK, &set, nullptr);
                  ::raise(SIGXFSZ);
                  {
                      Undisturbed undisturbed;
                      undisturbed.takeSignalBack();
                  }
                  return isPending(SIGXFSZ) && isBlocked(SIGXFSZ) ? 0 : 1;
              }),
              0);
}

TEST(Undisturbed, KeepsASignalBlockedThatWasBlocked) {
    EXPECT_EQ(inChild([] {
                  sigset_t set;
                  sigemptyset(&set);
                  sigaddset(&set, SIGXFSZ);
                  ::pthread_sigmask(SIG_BLOCK, &set, nullptr);
                  {
                      Undisturbed undisturbed;
                      ::raise(SIGXFSZ);
                      undisturbed.takeSignalBack();
                  }
                  return !isPending(SIGXFSZ) && isBlocked(SIGXFSZ) ? 0 : 1;
              }),
              0);
}

TEST(Undisturbed, PutsACancellationOff) {
    struct Seen {
        std::atomic<bool> isInside{false};
        std::atomic<bool> isCancelled{false};
        bool wentOn = false;
        bool wentOnOutside = false;
    } seen;

    pthread_t thread{};
    const auto body = [](void* context) -> void* {
        Seen& what = *static_cast<Seen*>(context);
        {
            const Undisturbed undisturbed;
            what.isInside = true;
            while (!what.isCancelled) std::this_thread::yield();
            ::pthread_testcancel();
            what.wentOn = true;
        }
        ::pthread_testcancel();
        what.wentOnOutside = true;
        return nullptr;
    };
    ASSERT_EQ(::pthread_create(&thread, nullptr, body, &seen), 0);
    while (!seen.isInside) std::this_thread::yield();
    ::pthread_cancel(thread);
    seen.isCancelled = true;
    void* result = nullptr;
    ::pthread_join(thread, &result);
    EXPECT_EQ(result, PTHREAD_CANCELED);
    EXPECT_TRUE(seen.wentOn);
    EXPECT_FALSE(seen.wentOnOutside);
}

} // namespace
} // namespace pinbuf
