#include <Vel/detail/ProcessWide.h>

#include <atomic>
#include <gtest/gtest.h>
#include <mutex>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace Vel::detail {
namespace {

// How a child ends that does this; one that hangs is ended by an alarm.
template <class Body>
int statusOfChild(Body body) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::alarm(60);
        ::_exit(body() ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return status;
}

class Counter {
public:
    int next() {
        const std::lock_guard lock(mutex_);
        return ++count_;
    }

    // How often it was locked for a fork, and whether the last one made this process.
    int forks() const { return forks_; }

    bool wasChild() const { return wasChild_; }

private:
    friend class ProcessWide<Counter>;

    void beforeFork() {
        mutex_.lock();
        ++forks_;
    }

    void afterFork(bool isChild) {
        mutex_.unlock();
        wasChild_ = isChild;
    }

    std::mutex mutex_;
    int count_ = 0;
    int forks_ = 0;
    bool wasChild_ = false;
};

TEST(ProcessWide, IsMadeOnce) {
    Counter& counter = ProcessWide<Counter>::only();
    EXPECT_EQ(&ProcessWide<Counter>::only(), &counter);
}

TEST(ProcessWide, IsLockedOnceWhileAProcessForks) {
    Counter& counter = ProcessWide<Counter>::only();
    const int before = counter.forks();
    EXPECT_EQ(statusOfChild([&] { return counter.wasChild() && counter.forks() == before + 1; }),
              0);
    EXPECT_FALSE(counter.wasChild());
    EXPECT_EQ(counter.forks(), before + 1);
}

TEST(ProcessWide, LeavesNoLockTakenInAChild) {
    std::atomic<bool> isDone = false;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 2; ++thread)
        threads.emplace_back([&] {
            while (!isDone) ProcessWide<Counter>::only().next();
        });
    for (int round = 0; round < 300; ++round)
        EXPECT_EQ(statusOfChild([] { return ProcessWide<Counter>::only().next() > 0; }), 0);
    isDone = true;
    for (std::thread& thread : threads) thread.join();
}

// One whose making waits until the test lets it go on.
class Slow {
public:
    static inline std::atomic<bool> isBegun = false;
    static inline std::atomic<bool> mayEnd = false;

    Slow() {
        isBegun = true;
        while (!mayEnd) std::this_thread::yield();
    }

    void beforeFork() {}

    void afterFork(bool) {}
};

#if defined(__SANITIZE_THREAD__)
    #define VEL_ONCE_IS_WATCHED 1
#elif defined(__has_feature)
    #if __has_feature(thread_sanitizer)
        #define VEL_ONCE_IS_WATCHED 1
    #endif
#endif

#ifndef VEL_ONCE_IS_WATCHED // the thread sanitizer's own guard stays held in a child
TEST(ProcessWide, AChildMakesItsOwnIfItWasForkedInTheMidst) {
    std::thread first([] { ProcessWide<Slow>::only(); });
    while (!Slow::isBegun) std::this_thread::yield();
    const auto makesItsOwn = [] {
        Slow::mayEnd = true;
        const Slow* const made = &ProcessWide<Slow>::only();
        // Its handlers stand there twice now if the parent had registered them.
        return statusOfChild([made] { return &ProcessWide<Slow>::only() == made; }) == 0;
    };
    EXPECT_EQ(statusOfChild(makesItsOwn), 0);
    Slow::mayEnd = true;
    first.join();
    EXPECT_EQ(statusOfChild([] { return true; }), 0);
}
#endif

class Refusing {
public:
    static inline bool isRefused = true;

    Refusing() {
        if (isRefused) throw std::runtime_error("not yet");
    }

    void beforeFork() {}

    void afterFork(bool) {}
};

TEST(ProcessWide, IsTriedAgainAfterAFailure) {
#ifdef __clang__
    #if __has_feature(thread_sanitizer)
    GTEST_SKIP() << "the thread sanitizer's pthread_once does not take an exception";
    #endif
#endif
    EXPECT_THROW(ProcessWide<Refusing>::only(), std::runtime_error);
    Refusing::isRefused = false;
    EXPECT_EQ(&ProcessWide<Refusing>::only(), &ProcessWide<Refusing>::only());
}

} // namespace
} // namespace Vel::detail
