// Descriptor.h - owner of one file descriptor.
//
// Owns:      the descriptor, or nothing (-1).
// Invariant: closed exactly once.
#ifndef PINBUF_DETAIL_DESCRIPTOR_H
#define PINBUF_DETAIL_DESCRIPTOR_H

#include <unistd.h>
#include <utility>

namespace pinbuf {

class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}

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
    int number_;
};

} // namespace pinbuf

#endif // PINBUF_DETAIL_DESCRIPTOR_H
