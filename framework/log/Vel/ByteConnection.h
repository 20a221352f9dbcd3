// ByteConnection.h - a stream of bytes to somewhere, or from somewhere.
//
// Kinds:   MemoryConnection.h, FdConnection.h; whoever has another transport derives its own.
// Errors:  Exception with Id::connection. The end of the bytes is none.
// Threads: one connection belongs to one thread.
// Test: none; interfaces; the connections that implement them are tested.
#pragma once

#include <Vel/Export.h>
#include <Vel/Integers.h>
#include <Vel/PtrInterface.h>
#include <cstddef>
#include <span>

namespace Vel {

class ByteConnection {
public:
    class In;
    class Out;

    ByteConnection() = delete; // the name that holds the two ends together
};

class VEL_API ByteConnection::In : public PtrInterface {
public:
    ~In() override;

    // Waits until at least one byte is there, stores as many as are there and fit, and returns how
    // many; 0 when no more will come. `room` is not empty.
    virtual std::size_t read(std::span<U8> room) = 0;
};

class VEL_API ByteConnection::Out : public PtrInterface {
public:
    ~Out() override;

    // Takes all of `bytes` or throws; what was taken before a throw is not told, so the stream is
    // of no more use then.
    virtual void write(std::span<const U8> bytes) = 0;
};

} // namespace Vel
