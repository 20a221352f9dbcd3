#include <pinbuf/detail/Undisturbed.h>

#include <cerrno>
#include <ctime>
#include <pthread.h>

namespace pinbuf {
namespace {

sigset_t fileSizeSignal() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGXFSZ);
    return set;
}

} // namespace

// None of these calls can fail with these arguments; where one did nevertheless, nothing is
// changed and nothing put back.
Undisturbed::Undisturbed() noexcept {
    if (::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancelStateBefore_) != 0)
        cancelStateBefore_ = PTHREAD_CANCEL_ENABLE;
    const sigset_t signal = fileSizeSignal();
    isBlocked_ = ::pthread_sigmask(SIG_BLOCK, &signal, &maskBefore_) == 0;
    // Only what the thread had blocked before can have been waiting.
    if (sigismember(&maskBefore_, SIGXFSZ) == 1) {
        sigset_t pending;
        wasPending_ = ::sigpending(&pending) != 0 || sigismember(&pending, SIGXFSZ) == 1;
    }
}

void Undisturbed::takeSignalBack() noexcept {
    if (!isBlocked_ || wasPending_) return;
    const sigset_t signal = fileSizeSignal();
    constexpr timespec noWait{};
    while (::sigtimedwait(&signal, nullptr, &noWait) < 0 && errno == EINTR) {}
}

Undisturbed::~Undisturbed() {
    if (isBlocked_) (void)::pthread_sigmask(SIG_SETMASK, &maskBefore_, nullptr);
    (void)::pthread_setcancelstate(cancelStateBefore_, nullptr);
}

} // namespace pinbuf
