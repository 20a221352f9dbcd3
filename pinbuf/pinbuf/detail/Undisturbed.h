// Undisturbed.h - lets a call of the face come to its end.
//
// Cancelled: not while this lives; a cancellation waits until the thread is out of the call.
// SIGXFSZ:   is what the kernel sends beside an error number to who makes a file larger than the
//            process may. It waits while this lives. Who reports the error takes back the signal
//            that came with it; one that waited before is left alone.
// Threads:   concerns the calling thread alone.
#pragma once

#include <csignal>

namespace pinbuf {

class Undisturbed {
public:
    Undisturbed() noexcept;
    ~Undisturbed();
    Undisturbed(const Undisturbed&) = delete;
    Undisturbed& operator=(const Undisturbed&) = delete;

    // Before a failure is reported.
    void takeSignalBack() noexcept;

private:
    sigset_t maskBefore_{};
    bool isBlocked_ = false; // by this
    bool wasPending_ = false;
    int cancelStateBefore_ = 0;
};

} // namespace pinbuf
