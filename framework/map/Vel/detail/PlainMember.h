// PlainMember.h - a number in the place of a map's member: what a map of numbers keeps where it needs no object.
//
// Form: the number shifted up by one, with the lowest bit set, which no object's address has.
#pragma once

#include <cstdint>

namespace Vel {
class MapLink;
}

namespace Vel::detail {

class PlainMember {
public:
    // One bit less than an address.
    static constexpr std::uintptr_t largest = UINTPTR_MAX >> 1;

    static MapLink* of(std::uintptr_t number) noexcept {
        return reinterpret_cast<MapLink*>(number << 1 | 1); // NOLINT: never followed
    }

    static bool is(const MapLink* member) noexcept {
        return (reinterpret_cast<std::uintptr_t>(member) & 1) != 0;
    }

    static std::uintptr_t number(const MapLink* member) noexcept {
        return reinterpret_cast<std::uintptr_t>(member) >> 1;
    }
};

} // namespace Vel::detail
