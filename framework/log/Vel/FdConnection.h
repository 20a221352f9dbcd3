// FdConnection.h - byte connections over a file descriptor: a file, a pipe, a socket.
//
// Owns:   nothing; the caller opened the descriptor and closes it after the connection's last use.
// Waits:  also where the descriptor is non-blocking, and goes on after a signal.
// Errors: Exception with Id::connection that names the descriptor and the system's reason. A pipe
//         or socket whose reader is gone also raises SIGPIPE, unless the process ignores that.
#pragma once

#include <Vel/ByteConnection.h>
#include <Vel/Export.h>

namespace Vel {

class FdConnection {
public:
    class In;
    class Out;

    FdConnection() = delete; // the name that holds the two ends together
};

class VEL_API FdConnection::In : public ByteConnection::In {
public:
    explicit In(int descriptor) noexcept : descriptor_(descriptor) {}

    ~In() override;

    std::size_t read(std::span<U8> room) override;

private:
    int descriptor_;
};

class VEL_API FdConnection::Out : public ByteConnection::Out {
public:
    explicit Out(int descriptor) noexcept : descriptor_(descriptor) {}

    ~Out() override;

    void write(std::span<const U8> bytes) override;

private:
    int descriptor_;
};

} // namespace Vel
