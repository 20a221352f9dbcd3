#include <Vel/FdConnection.h>

#include <Vel/Exception.h>
#include <Vel/format.h>
#include <cerrno>
#include <poll.h>
#include <system_error>
#include <unistd.h>

namespace Vel {

namespace {

[[noreturn]] void throwFailure(const char* action, int descriptor, int error) {
    throw Exception(format("cannot %s descriptor %d: %s", action, descriptor,
                           std::generic_category().message(error).c_str()),
                    Exception::Id::connection);
}

// After a call that failed: waits until it is worth another try, or throws.
void waitOrThrow(const char* action, int descriptor, short readiness) {
    const int error = errno;
    if (error == EINTR) return;
    if (error != EAGAIN) throwFailure(action, descriptor, error);
    pollfd ready{descriptor, readiness, 0};
    while (::poll(&ready, 1, -1) < 0)
        if (errno != EINTR) throwFailure(action, descriptor, errno);
}

} // namespace

FdConnection::In::~In() = default;
FdConnection::Out::~Out() = default;

std::size_t FdConnection::In::read(std::span<U8> room) {
    while (true) {
        const ssize_t count = ::read(descriptor_, room.data(), room.size());
        if (count >= 0) return static_cast<std::size_t>(count);
        waitOrThrow("read from", descriptor_, POLLIN);
    }
}

void FdConnection::Out::write(std::span<const U8> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor_, bytes.data(), bytes.size());
        if (count >= 0)
            bytes = bytes.subspan(static_cast<std::size_t>(count));
        else
            waitOrThrow("write to", descriptor_, POLLOUT);
    }
}

} // namespace Vel
