// LineWalk.h - the order of a map's members, from line to line.
// Test: LineMap_test.cpp.
#pragma once

#include <Vel/KeyHash.h>
#include <Vel/detail/LineMap.h>
#include <Vel/detail/LineOrder.h>
#include <Vel/detail/Tree.h>
#include <cstdint>

namespace Vel::detail {

template <class Member>
class LineWalk {
public:
    using Line = detail::Line<Member>;
    using Table = detail::Table<Member>;
    using Spot = typename LineMap<Member>::Spot;

    LineWalk(MemberKind kind, Spot& spot) noexcept : kind_(kind), spot_(spot) {}

    // Stands on the first member of a line, a table's, or the root. Null in an empty map.
    const Member* standOnFirst(const Line& first, const Table* table, U32 place) noexcept {
        const Line* line = &first;
        while (line->is(Line::isTable)) {
            table = &line->table;
            place = table->first;
            if (place == Marks::none) return nullptr;
            line = &table->lines[place];
        }
        spot_.far = Marks::none;
        if (line->is(Line::isTree))
            return standInTree(line->leaf.tree->members.begin(), *line->leaf.tree);
        if (line->isEmpty()) return nullptr;
        spot_.table = table;
        spot_.place = place;
        return standInSeats(*line, orderOf(kind_, *line));
    }

    // Stands on the first member behind this one of this fold, or, without a member, on the first
    // of the fold or behind it. Null if this line has none.
    const Member* standBehind(U32 fold, const Member* member, const Line& line, const Table* of,
                              U32 place) noexcept {
        if (line.is(Line::isTable)) return standBehindInTable(fold, member, line, of, place);
        if (line.is(Line::isTree)) {
            const Tree& tree = *line.leaf.tree;
            if (tree.fold != fold)
                return hashesBelow(fold, tree.fold) ? standOnFirst(line, of, place) : nullptr;
            const auto& members = tree.members;
            return standInTree(member != nullptr ? members.upper_bound(*member) : members.begin(),
                               tree);
        }
        return standBehindInSeats(fold, member, line, of, place);
    }

    // Stands on the first member of the next line of the spot's table that has some. Null if there
    // is none.
    const Member* standInNextLine() noexcept {
        const Table& table = *spot_.table;
        constexpr U32 enough = 4; // empty lines, before the marks are asked
        U32 p = spot_.place;
        for (U32 empty = 0;; ++empty) {
            if (table.lines[p].is(Line::isSplit)) {
                p += table.half();
            } else if (empty < enough) {
                p = table.after(p);
                if (table.isLarge()) fetchAhead(table);
            } else {
                p = table.marks.next(p);
                spot_.far = Marks::none;
            }
            if (p == Marks::none) return nullptr;
            const Line& line = table.lines[p];
            if (line.is(Line::isTable | Line::isTree)) [[unlikely]]
                return standOnFirst(line, &table, p);
            if (line.isEmpty()) continue;
            spot_.place = p;
            return standInSeats(line, orderOf(kind_, line));
        }
    }

    // What first() looks at next if what it gives is taken away. Always inline: to GCC a function
    // that only fetches does nothing, and it drops the call.
    [[gnu::always_inline]] static void fetchBehind(MemberKind kind, const Table& table,
                                                   U32 p) noexcept {
        for (U32 n = 1; n <= linesToNear; ++n) {
            p = table.after(p);
            if (p == Marks::none) return;
            if (n == 2) fetchInside(kind, table.lines[p]);
            if (n == linesToNear) {
                __builtin_prefetch(&table.lines[p], 1);
                table.marks.fetch(p);
            }
        }
    }

private:
    const Member* standBehindInTable(U32 fold, const Member* member, const Line& line,
                                     const Table* of, U32 place) noexcept {
        const Table& table = line.table;
        U32 rankWord = 0;
        if (table.byRank && member != nullptr) kind_.rankWord(*member, rankWord);
        const U64 trail = U64{rankWord} << 32 | fold;
        if (const U64 differ = table.differs(trail); differ != 0) {
            const bool isBefore = (table.prefix & differ & (0 - differ)) != 0;
            return isBefore ? standOnFirst(line, of, place) : nullptr;
        }
        const Line& next = table.lineOf(table.wordIn(trail));
        U32 p = table.placeOf(next);
        if (const Member* const found = standBehind(fold, member, next, &table, p)) return found;
        p = table.marks.next(p);
        return p != Marks::none ? standOnFirst(table.lines[p], &table, p) : nullptr;
    }

    const Member* standBehindInSeats(U32 fold, const Member* member, const Line& line,
                                     const Table* of, U32 place) noexcept {
        U32 word = fold;
        if (of != nullptr && of->byRank) {
            word = 0;
            if (member != nullptr) kind_.rankWord(*member, word);
        }
        for (U32 order = orderOf(kind_, line); order != 0; order >>= 3) {
            const U32 s = (order & 7) - 1;
            const bool isBehind =
                line.at.word[s] != word
                    ? hashesBelow(word, line.at.word[s])
                    : member == nullptr || kind_.isLess(*member, line.at.member[s]);
            if (!isBehind) continue;
            spot_.table = of;
            spot_.place = place;
            spot_.far = Marks::none;
            return standInSeats(line, order);
        }
        return nullptr;
    }

    static constexpr U32 linesToNear = 4;
    static constexpr U32 linesToFar = 8;

    const Member* standInSeats(const Line& line, U32 order) noexcept {
        spot_.line = &line;
        spot_.order = order;
        return LineMap<Member>::standOnNext(spot_);
    }

    const Member* standInTree(Tree::Members::const_iterator at, const Tree& tree) noexcept {
        spot_.table = nullptr;
        spot_.order = 0;
        // In a 32-bit process a member is an address; in others only addresses have trees.
        return at != tree.members.end() ? reinterpret_cast<const Member*>(&*at) : nullptr;
    }

    [[gnu::always_inline]] void fetchAhead(const Table& table) noexcept {
        if (spot_.far == Marks::none) {
            spot_.far = spot_.near = spot_.place;
            for (U32 n = 0; n < linesToFar && spot_.far != Marks::none; ++n) {
                spot_.far = table.after(spot_.far);
                if (spot_.far != Marks::none) __builtin_prefetch(&table.lines[spot_.far]);
                if (n < linesToNear) spot_.near = spot_.far;
            }
            return;
        }
        spot_.near = table.after(spot_.near);
        if (spot_.near != Marks::none) fetchInside(kind_, table.lines[spot_.near]);
        if (const U32 far = table.after(spot_.far); far != Marks::none) {
            spot_.far = far;
            __builtin_prefetch(&table.lines[far]);
        }
    }

    // Of a line that has arrived: its members, or its first lines.
    [[gnu::always_inline]] static void fetchInside(MemberKind kind, const Line& line) noexcept {
        if (line.is(Line::isTable)) {
            for (U32 p = 0; p < 4; ++p)
                __builtin_prefetch(&line.table.lines[p < line.table.count ? p : 0]);
        } else if (!kind.isPlain() && !line.is(Line::isTree)) {
#pragma GCC unroll 8
            for (U32 s = 0; s < Line::seats; ++s) // without a branch: of an empty seat, the line
                __builtin_prefetch((line.at.state >> s & 1) != 0
                                       ? MemberKind::object(line.at.member[s])
                                       : static_cast<const void*>(&line));
        }
    }

    MemberKind kind_;
    Spot& spot_;
};

} // namespace Vel::detail
