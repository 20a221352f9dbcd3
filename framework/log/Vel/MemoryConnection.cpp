#include <Vel/MemoryConnection.h>

#include <algorithm>
#include <cstring>

namespace Vel {

MemoryConnection::In::~In() = default;
MemoryConnection::Out::~Out() = default;

std::size_t MemoryConnection::In::read(std::span<U8> room) {
    const std::span<const U8> given = left_.first(std::min(left_.size(), room.size()));
    if (!given.empty()) std::memcpy(room.data(), given.data(), given.size());
    left_ = left_.subspan(given.size());
    return given.size();
}

void MemoryConnection::Out::write(std::span<const U8> bytes) {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

} // namespace Vel
