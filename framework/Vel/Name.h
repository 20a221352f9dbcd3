// Name.h - the name of a type, an attribute or an argument.
//
// Lifetime: borrowed: it views a string literal or other characters that live as long as the process. Not NUL-terminated.
#pragma once

#include <Vel/Integers.h>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace Vel {

using Name = std::string_view;

// 32 bits for a table of a type's own names: both ends of the name and its length, so names of up to 16 characters count
// whole. Not kept anywhere and not the same in every build.
inline U32 nameHash(Name name) noexcept {
    constexpr U32 spread = 0x9e3779b1U;
    const auto word = [&name](std::size_t at) {
        U32 bytes = 0;
        std::memcpy(&bytes, name.data() + at, sizeof bytes);
        return bytes;
    };
    const std::size_t size = name.size();
    U32 hash = static_cast<U32>(size);
    if (size < sizeof(U32)) {
        for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * spread;
        return hash ^ (hash >> 15);
    }
    hash = (hash ^ word(0)) * spread;
    hash = (hash ^ (hash >> 15) ^ word(size - sizeof(U32))) * spread;
    if (size > 2 * sizeof(U32)) {
        hash = (hash ^ (hash >> 15) ^ word(sizeof(U32))) * spread;
        hash = (hash ^ (hash >> 15) ^ word(size - 2 * sizeof(U32))) * spread;
    }
    return hash ^ (hash >> 15);
}

} // namespace Vel
