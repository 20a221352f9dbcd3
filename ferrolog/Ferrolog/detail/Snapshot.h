// Snapshot.h - copies of a trace file, taken one after the other while its writer may be at work.
//
// A message counts if it was committed in the first copy; its words come from the second, which was
// made later, so they were all there. A chunk counts if its ordinal is the same in all three: then
// nobody took it in between. Sites and lives come from the third: whatever a message refers to was
// there before the message.
#pragma once

#include <Ferrolog/detail/Layout.h>

#include <cstring>
#include <span>
#include <string>
#include <vector>

namespace Ferrolog::detail {

// Bytes that may end early: beyond the end everything reads as zero.
class Bytes {
public:
    Bytes() = default;

    explicit Bytes(std::span<std::byte const> bytes) : bytes_(bytes) {}

    U64 size() const { return bytes_.size(); }

    template <class T>
    T get(U64 offset) const {
        T value{};
        if (offset < bytes_.size()) {
            const auto rest = bytes_.subspan(static_cast<std::size_t>(offset));
            std::memcpy(&value, rest.data(), std::min(sizeof value, rest.size()));
        }
        return value;
    }

    // Empty if a part of it is missing.
    std::string text(U64 offset, std::size_t count) const {
        if (offset > bytes_.size() || count > bytes_.size() - offset) return {};
        const auto part = bytes_.subspan(static_cast<std::size_t>(offset), count);
        return {reinterpret_cast<const char*>(part.data()), part.size()};
    }

private:
    std::span<std::byte const> bytes_;
};

struct Snapshot {
    std::vector<std::byte> storage[3];
    Bytes first;
    Bytes second;
    Bytes third;
    std::string error; // why there is no snapshot; "" if there is

    static Snapshot ofFile(const std::string& path);
    static Snapshot ofBytes(std::span<std::byte const> bytes);
};

} // namespace Ferrolog::detail
