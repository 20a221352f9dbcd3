#include <Ferrolog/detail/Turn.h>

#include <Ferrolog/detail/Layout.h>

#include <atomic>

namespace Ferrolog::detail {

namespace {

// Who asks draws a number, and has the turn once it is called.
constinit std::atomic<U32> drawn = 0; // so many numbers: free while the last has been given back
constinit std::atomic<U32> called = 0;

// In the static block of the thread: reaching them must not allocate.
//
// Whether the thread has a turn or waits for one: set before a number is drawn, and cleared after
// it was given back, so that a handler never draws one in between.
[[gnu::tls_model("initial-exec")]] constinit thread_local bool isWithin = false;
[[gnu::tls_model("initial-exec")]] constinit thread_local bool hasOneForFork = false;
[[gnu::tls_model("initial-exec")]] constinit thread_local U32 number = 0; // of who is within

void isWithinIs(bool value) {
    std::atomic_signal_fence(std::memory_order_seq_cst);
    isWithin = value;
    std::atomic_signal_fence(std::memory_order_seq_cst);
}

bool take() {
    if (isWithin) return false;
    isWithinIs(true);
    number = drawn;
    for (U32 next = number; !drawn.compare_exchange_strong(next, number + 1); next = number)
        number = next;
    for (U32 now = called; now != number; now = called) called.wait(now);
    return true;
}

void give() {
    U32 forgotten = number; // see giveInChild
    drawn.compare_exchange_strong(forgotten, number + 1);
    called = number + 1;
    called.notify_all();
    isWithinIs(false);
}

} // namespace

Turn Turn::waitedFor() { return Turn(take()); }

Turn Turn::ifFree() {
    if (isWithin) return Turn(false);
    isWithinIs(true);
    number = called;
    U32 next = number;
    const bool isOurs = drawn.compare_exchange_strong(next, number + 1);
    if (!isOurs) isWithinIs(false);
    return Turn(isOurs);
}

Turn::~Turn() {
    if (isOurs_) give();
}

void Turn::takeForFork() { hasOneForFork = take(); }

void Turn::giveInParent() {
    if (hasOneForFork) {
        hasOneForFork = false;
        give();
    }
}

void Turn::giveInChild() {
    // If we forked in a handler, it has interrupted one who is within, at any instruction: the
    // number is drawn, called or given back, or still to be drawn. In each case all goes on from
    // here.
    drawn = number;
    called = number;
    giveInParent();
}

} // namespace Ferrolog::detail
