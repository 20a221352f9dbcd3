#include <Ferrolog/detail/Turn.h>

#include <atomic>
#include <mutex>

namespace Ferrolog::detail {

namespace {

constinit std::mutex mutex;

// In the static block of the thread: reaching them must not allocate.
//
// Whether the thread has a turn or waits for one: set before the mutex is touched, and cleared
// after, so that a handler never touches it in between.
[[gnu::tls_model("initial-exec")]] constinit thread_local bool isWithin = false;
[[gnu::tls_model("initial-exec")]] constinit thread_local bool hasOneForFork = false;

void isWithinIs(bool value) {
    std::atomic_signal_fence(std::memory_order_seq_cst);
    isWithin = value;
    std::atomic_signal_fence(std::memory_order_seq_cst);
}

bool take() {
    if (isWithin) {
        return false;
    }
    isWithinIs(true);
    mutex.lock();
    return true;
}

void give() {
    mutex.unlock();
    isWithinIs(false);
}

} // namespace

Turn Turn::waitedFor() { return Turn(take()); }

Turn Turn::ifFree() {
    if (isWithin) {
        return Turn(false);
    }
    isWithinIs(true);
    bool const isOurs = mutex.try_lock();
    if (!isOurs) {
        isWithinIs(false);
    }
    return Turn(isOurs);
}

Turn::~Turn() {
    if (isOurs_) {
        give();
    }
}

void Turn::takeForFork() { hasOneForFork = take(); }

void Turn::giveAfterFork() {
    if (hasOneForFork) {
        hasOneForFork = false;
        give();
    }
}

} // namespace Ferrolog::detail
