// LineBuild.h - one answer to every change of shape: a line is built of its members, given in
// order.
//
// Up to its seats they are seated. More become a table from the first bit in which the first and
// the last differ, filled run by run by the same function; where no bit differs, a table over
// ranks, or a tree. Test: LineMap_test.cpp.
#pragma once

#include <Vel/detail/Line.h>
#include <Vel/detail/LineOrder.h>
#include <Vel/detail/MemberKind.h>
#include <Vel/detail/Tree.h>
#include <Vel/detail/ZeroedMemory.h>
#include <algorithm>
#include <bit>
#include <memory>
#include <new>

namespace Vel::detail {

// So many members may move at once: a call never stalls for longer.
inline constexpr U32 fewMembers = 8192;
// Of a table's own lines, on average, in quarters.
template <class Member>
inline constexpr U32 quartersPerLine = Seats<Member>::all == 5 ? 8 : 10;
template <class Member>
inline constexpr U32 childLoad = Seats<Member>::all + 1;
// Like the bits of a place, below the sign.
inline constexpr unsigned mostPlaceBits = 29;

template <class Member>
struct Item {
    U32 word;
    Member member;
};

// Members in order.
template <class Member>
struct Items {
    using Line = detail::Line<Member>;

    Items() noexcept = default;
    Items(const Items&) = delete;
    Items& operator=(const Items&) = delete;

    ~Items() {
        if (all != own) delete[] all;
    }

    // All of a line, unless they are more than a few. False then, and without memory.
    bool gather(MemberKind kind, const Line& line) noexcept {
        const U32 n = countOf(line);
        if (n > fewMembers) return false;
        if (n > ownRoom) {
            auto* const more = new (std::nothrow) Item<Member>[n];
            if (more == nullptr) return false;
            all = more;
        }
        if (line.is(Line::isTable)) {
            byRank = line.table.byRank;
            fold = static_cast<U32>(line.table.prefix);
        }
        gatherAll(kind, line);
        return true;
    }

    void addSeats(MemberKind kind, const Line& line) noexcept {
        for (U32 order = orderOf(kind, line); order != 0; order >>= 3) {
            const U32 s = (order & 7) - 1;
            all[count++] = {line.at.word[s], line.at.member[s]};
        }
    }

    // Where it belongs among them; there is room.
    void insert(MemberKind kind, Item<Member> item) noexcept {
        U32 at = count++;
        for (; at != 0 && isBefore(kind, item, all[at - 1]); --at) all[at] = all[at - 1];
        all[at] = item;
    }

    static constexpr U32 ownRoom = 2 * Line::seats;
    Item<Member> own[ownRoom];
    Item<Member>* all = own;
    U32 count = 0;
    bool byRank = false; // what the words are
    U32 fold = 0;        // of all, if they are ranks

    static bool isBefore(MemberKind kind, const Item<Member>& a, const Item<Member>& b) noexcept {
        return a.word != b.word ? hashesBelow(a.word, b.word) : kind.isLess(a.member, b.member);
    }

    static U32 countOf(const Line& line) noexcept {
        if (line.is(Line::isTree)) return line.leaf.tree->count();
        if (!line.is(Line::isTable)) return line.count();
        const Table<Member>& table = line.table;
        U32 n = table.load - childLoad<Member> * table.children;
        if (table.children != 0)
            for (U32 p = table.first; p != Marks::none && n <= fewMembers; p = table.marks.next(p))
                if (table.lines[p].is(Line::isTable | Line::isTree)) n += countOf(table.lines[p]);
        return n;
    }

    void gatherAll(MemberKind kind, const Line& line) noexcept {
        if (line.is(Line::isTree)) {
            for (const std::uintptr_t member : line.leaf.tree->members)
                all[count++] = {line.leaf.tree->fold, static_cast<Member>(member)};
        } else if (line.is(Line::isTable)) {
            const Table<Member>& table = line.table;
            const U32 before = count;
            for (U32 p = table.first; p != Marks::none; p = table.marks.next(p))
                gatherAll(kind, table.lines[p]);
            if (table.byRank && !byRank)
                for (U32 i = before; i < count; ++i) all[i].word = static_cast<U32>(table.prefix);
        } else {
            addSeats(kind, line);
        }
    }
};

template <class Member>
class LineBuild {
public:
    using Line = detail::Line<Member>;
    using Table = detail::Table<Member>;
    using Item = detail::Item<Member>;

    explicit LineBuild(MemberKind kind) noexcept : kind_(kind) {}

    // Makes a line of n members in order. False without memory: nothing is left of it then, and the
    // line is empty.
    bool build(Line& line, Item* items, U32 n, bool byRank, U32 fold) const noexcept {
        line.at.state = 0;
        if (n <= Line::seats) {
            for (U32 i = 0; i < n; ++i) line.seat(items[i].word, items[i].member);
            return true;
        }
        U32 differ = items[0].word ^ items[n - 1].word;
        if (differ == 0) {
            fold = items[0].word;
            if (!kind_.rankWord(items[0].member, items[0].word))
                return buildTree(line, items, n, fold);
            for (U32 i = 1; i < n; ++i) kind_.rankWord(items[i].member, items[i].word);
            differ = items[0].word ^ items[n - 1].word;
            byRank = true;
        }
        return buildTable(line, items, n, byRank, fold,
                          static_cast<unsigned>(std::countr_zero(differ)), countFor(n));
    }

    // A table from this bit of the words on; no bit below it differs. Like build().
    bool buildTable(Line& line, Item* items, U32 n, bool byRank, U32 fold, unsigned bit,
                    U32 count) const noexcept {
        const U32 word = n != 0 ? items[0].word : fold;
        const U64 trail = byRank ? U64{word} << 32 | fold : word;
        const U32 most = U32{1} << std::min(mostPlaceBits, 32 - bit);
        if (!emptyTable(line, trail, bit + (byRank ? 32 : 0), std::min(count, most))) return false;
        if (fill(line.table, items, n, fold)) return true;
        free(line);
        line.at.state = 0;
        return false;
    }

    // Puts members in order into the lines of a table that has none. Like build(): then the lines
    // are to be freed.
    bool fill(Table& table, Item* items, U32 n, U32 fold) const noexcept {
        for (U32 i = 0, end = 0; i < n; i = end) {
            const U32 p = table.place(items[i].word);
            for (end = i + 1; end < n && table.place(items[end].word) == p;) ++end;
            if (!build(table.lines[p], items + i, end - i, table.byRank, fold)) return false;
            table.mark(p);
            const bool isChild = end - i > Line::seats;
            table.children += isChild ? 1 : 0;
            table.load += isChild ? childLoad<Member> : end - i;
        }
        return true;
    }

    // A table of no members whose first `start` bits are the trail's. False without memory.
    static bool emptyTable(Line& line, U64 trail, unsigned start, U32 count) noexcept {
        Table table{};
        table.state = Line::isTable;
        table.shift = static_cast<U8>(start % 32);
        table.start = static_cast<U8>(start);
        table.byRank = start >= 32;
        table.prefix = trail & ((U64{1} << start) - 1);
        table.count = count;
        table.wide = 2 * std::bit_floor(count) - 1;
        table.limit = limitOf(count);
        table.first = Marks::none;
        table.room = static_cast<U8>(std::countr_zero(std::bit_ceil(count)));
        if (!table.marks.reach(table.capacity())) return false;
        table.lines = static_cast<Line*>(zeroedMemory(table.capacity() * sizeof(Line)));
        if (table.lines == nullptr) {
            table.marks.release();
            return false;
        }
        line.table = table;
        return true;
    }

    // Gives back the tables and trees of a line, not their members.
    static void free(const Line& line) noexcept {
        if (line.is(Line::isTable) && line.table.children != 0) {
            const Table& table = line.table;
            for (U32 p = table.first; p != Marks::none; p = table.marks.next(p))
                free(table.lines[p]);
        }
        freeAlone(line);
    }

    // The same, but not those of its lines.
    static void freeAlone(const Line& line) noexcept {
        if (line.is(Line::isTree)) delete line.leaf.tree;
        if (!line.is(Line::isTable)) return;
        Marks marks = line.table.marks;
        marks.release();
        zeroedMemoryDel(line.table.lines, line.table.capacity() * sizeof(Line));
    }

    static U32 countFor(U32 members) noexcept {
        return std::max<U32>(4, static_cast<U32>((U64{members} * 4 + quartersPerLine<Member> - 1) /
                                                 quartersPerLine<Member>));
    }

    // Of a table with so many lines.
    static U32 limitOf(U32 count) noexcept {
        return static_cast<U32>(U64{count} * quartersPerLine<Member> / 4);
    }

private:
    bool buildTree(Line& line, const Item* items, U32 n, U32 fold) const noexcept {
        try {
            auto tree = std::make_unique<Tree>(kind_, fold);
            for (U32 i = 0; i < n; ++i) tree->members.insert(tree->members.end(), items[i].member);
            line.leaf = {Line::isTree, tree.release()};
            return true;
        } catch (const std::bad_alloc&) {
            return false;
        }
    }

    MemberKind kind_;
};

} // namespace Vel::detail
