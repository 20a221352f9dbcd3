#include <pinbuf/detail/Turn.h>

#include <atomic>
#include <cerrno>
#include <ctime>
#include <pinbuf/detail/Error.h>
#include <pthread.h>

namespace pinbuf {
namespace {

constinit pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
constinit std::atomic<bool> isTaken{false};
constinit std::atomic<unsigned> forkCount{0};
constinit std::atomic<unsigned> tornFork{0};

// In the child, which has one thread and is not in a turn.
void beginChild() {
    const unsigned fork = forkCount.load(std::memory_order_relaxed) + 1;
    forkCount.store(fork, std::memory_order_relaxed);
    if (isTaken.load(std::memory_order_relaxed)) tornFork.store(fork, std::memory_order_relaxed);
    isTaken.store(false, std::memory_order_relaxed);
    mutex = PTHREAD_MUTEX_INITIALIZER;
}

// Before the first turn: a fork that came earlier has nothing to put right.
void watchForks() {
    static constinit pthread_once_t once = PTHREAD_ONCE_INIT;
    static constinit int error = 0;
    ::pthread_once(&once, [] { error = ::pthread_atfork(nullptr, nullptr, beginChild); });
    if (error != 0) throw Failure("cannot watch for forks", error);
}

} // namespace

Turn::Turn() {
    watchForks();
    // A clock that is set meanwhile only shifts the notice. (The thread sanitizer of Clang 14 does
    // not know the form that takes a steady clock.)
    timespec until{};
    ::clock_gettime(CLOCK_REALTIME, &until);
    until.tv_sec += 1;
    int error = ::pthread_mutex_timedlock(&mutex, &until);
    if (error == ETIMEDOUT) {
        notice("waiting for another thread of this process, which is in a call");
        error = ::pthread_mutex_lock(&mutex);
    }
    if (error != 0) throw Failure("cannot wait for the other threads", error);
    isTaken.store(true, std::memory_order_relaxed);
    std::atomic_thread_fence(std::memory_order_seq_cst); // a fork sees it before any change
}

Turn::~Turn() {
    isTaken.store(false, std::memory_order_release); // and after the last
    ::pthread_mutex_unlock(&mutex);
}

unsigned Turn::forks() { return forkCount.load(std::memory_order_relaxed); }

unsigned Turn::lastTornFork() { return tornFork.load(std::memory_order_relaxed); }

} // namespace pinbuf
