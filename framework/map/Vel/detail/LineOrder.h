// LineOrder.h - the order of a line's members, read from their words.
// Test: LineMap_test.cpp.
#pragma once

#include <Vel/KeyHash.h>
#include <Vel/detail/Line.h>
#include <Vel/detail/MemberKind.h>

namespace Vel::detail {

template <class Member>
bool seatIsBefore(MemberKind kind, const Line<Member>& line, U32 a, U32 b) noexcept {
    if (line.at.word[a] != line.at.word[b]) [[likely]]
        return hashesBelow(line.at.word[a], line.at.word[b]);
    return kind.isLess(line.at.member[a], line.at.member[b]);
}

// The taken seats in order: a digit of three bits each, one more than the seat's number, the first
// one lowest.
template <class Member>
U32 orderOf(MemberKind kind, const Line<Member>& line) noexcept {
    U32 order = 0;
    const U32 taken = line.taken();
    for (U32 rest = taken; rest != 0; rest &= rest - 1) {
        const U32 s = line.first(rest);
        U32 place = 0;
        for (U32 others = taken ^ rest; others != 0; others &= others - 1)
            place += seatIsBefore(kind, line, line.first(others), s) ? 3U : 0U;
        const U32 below = (U32{1} << place) - 1;
        order = (order & below) | (s + 1) << place | (order & ~below) << 3;
    }
    return order;
}

// The first of the taken seats; there is one.
template <class Member>
U32 firstSeat(MemberKind kind, const Line<Member>& line) noexcept {
    U32 rest = line.taken();
    U32 best = line.first(rest);
    while ((rest &= rest - 1) != 0)
        if (const U32 s = line.first(rest); seatIsBefore(kind, line, s, best)) best = s;
    return best;
}

} // namespace Vel::detail
