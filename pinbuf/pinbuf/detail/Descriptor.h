// Descriptor.h - owner of one file descriptor.
//
// Owns:      the descriptor, or nothing (-1).
// Invariant: closed exactly once, and never number 0 to 2: in a process that has closed a standard
//            stream the next text for that stream would otherwise be written into our file.
#pragma once

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace pinbuf {

class Descriptor {
public:
    // Takes what open() and the like return; then closed on exec, above the standard streams. When
    // that fails it owns nothing and errno says why.
    explicit Descriptor(int number) : number_(aboveStandardStreams(number)) {}

    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}

    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }

    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }

    int number() const { return number_; }

    bool isOpen() const { return number_ >= 0; }

    // Gives the descriptor away to something that closes it.
    int release() { return std::exchange(number_, -1); }

private:
    static int aboveStandardStreams(int number) {
        if (number < 0 || number > STDERR_FILENO) return number;
        const int other = ::fcntl(number, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
        const int error = errno;
        ::close(number);
        errno = error == EINVAL ? EMFILE : error; // EINVAL: no number above is allowed at all
        return other;
    }

    int number_;
};

} // namespace pinbuf
