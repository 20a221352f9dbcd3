#include <Vel/MemoryConnection.h>

#include <algorithm>

namespace Vel {

MemoryConnection::In::~In() = default;
MemoryConnection::Out::~Out() = default;

std::size_t MemoryConnection::In::read(std::span<U8> room) {
    const std::span<const U8> given = left_.first(std::min(left_.size(), room.size()));
    std::ranges::copy(given, room.begin());
    left_ = left_.subspan(given.size());
    return given.size();
}

void MemoryConnection::Out::write(std::span<const U8> bytes) {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

} // namespace Vel
