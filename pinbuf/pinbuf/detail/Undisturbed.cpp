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
    if (::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancelStateBefore_) != 0) {
        cancelStateBefore_ = PTHREAD_CANCEL_ENABLE;
    }
    const sigset_t signal = fileSizeSignal();
    sigset_t pending;
    mayTakeBack_ = ::sigpending(&pending) == 0 && sigismember(&pending, SIGXFSZ) == 0 &&
                   ::pthread_sigmask(SIG_BLOCK, &signal, &maskBefore_) == 0;
}

Undisturbed::~Undisturbed() {
    if (mayTakeBack_) {
        const sigset_t signal = fileSizeSignal();
        constexpr timespec noWait{};
        while (::sigtimedwait(&signal, nullptr, &noWait) < 0 && errno == EINTR) {}
        ::pthread_sigmask(SIG_SETMASK, &maskBefore_, nullptr);
    }
    ::pthread_setcancelstate(cancelStateBefore_, nullptr);
}

} // namespace pinbuf
