// MemoryConnection.h - byte connections that end in this process's memory.
#pragma once

#include <Vel/ByteConnection.h>
#include <Vel/Export.h>
#include <Vel/Integers.h>
#include <cstddef>
#include <span>
#include <vector>

namespace Vel {

class MemoryConnection {
public:
    class In;
    class Out;

    MemoryConnection() = delete; // the name that holds the two ends together
};

// Gives the bytes once, in order. Borrows them.
class VEL_API MemoryConnection::In : public ByteConnection::In {
public:
    explicit In(std::span<const U8> bytes) noexcept : left_(bytes) {}

    ~In() override;

    std::size_t read(std::span<U8> room) override;

private:
    std::span<const U8> left_;
};

// Keeps what is written.
class VEL_API MemoryConnection::Out : public ByteConnection::Out {
public:
    Out() = default;
    ~Out() override;

    void write(std::span<const U8> bytes) override;

    // Everything written so far; borrowed until the next write.
    std::span<const U8> bytes() const noexcept { return bytes_; }

private:
    std::vector<U8> bytes_;
};

} // namespace Vel
