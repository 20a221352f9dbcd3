// LineGrowth.h - how a table comes to have more lines, or begins at an earlier bit.
// Test: LineMap_test.cpp.
#pragma once

#include <Vel/detail/LineBuild.h>
#include <algorithm>
#include <bit>
#include <initializer_list>
#include <new>

namespace Vel::detail {

template <class Member>
class LineGrowth {
public:
    using Line = detail::Line<Member>;
    using Table = detail::Table<Member>;

    explicit LineGrowth(MemberKind kind) noexcept : kind_(kind), build_(kind) {}

    // The table has more load than its limit. Without memory, without more bits to go by, or where
    // a large child is in the way, it stays as it is, and asks again later.
    void grow(Table& table) const noexcept {
        // Some lines in a row cost less than one now and then.
        const U32 slack = std::min<U32>(table.load / 4, 16);
        while (table.load + slack >= LineBuild<Member>::limitOf(table.count)) {
            if (split(table)) continue;
            table.limit = table.load + 64 + table.load / 8;
            return;
        }
        table.limit = LineBuild<Member>::limitOf(table.count);
    }

    // One more line. False: as above.
    bool split(Table& table) const noexcept {
        if (table.splitBit() >= table.endBit() ||
            (table.count == table.capacity() && !reach(table, table.count + 1)))
            return false;
        const U32 half = table.half();
        const U32 p = table.count - half;
        Line& from = table.lines[p];
        Line& to = table.lines[table.count];
        if (from.is(Line::isSplit)) [[unlikely]] {
            from.at.state &= ~Line::isSplit;
        } else if (from.is(Line::isTable | Line::isTree)) [[unlikely]] {
            if (!splitChild(table, p, from, to)) return false;
        } else if (from.at.state != 0) {
            divide(table, p);
        }
        if (++table.count == 2 * half) table.wide = 2 * table.wide + 1;
        return true;
    }

    // A full line is split before its turn if that makes room for the word. True: then `line` is
    // the word's.
    static bool splitEarly(Table& table, Line*& line, U32 word) noexcept {
        const U32 p = table.placeOf(*line);
        if (table.splitBit() >= table.endBit() || table.wasSplit(p)) return false;
        const U32 bit = table.half() << table.shift;
        U32 differ = 0;
        for (const U32 own : line->at.word) differ |= (own ^ word) & bit;
        if (differ == 0 || !reach(table, p + table.half() + 1)) return false;
        divide(table, p);
        table.lines[p].at.state |= Line::isSplit;
        line = &table.lineOf(word);
        return true;
    }

    static bool reach(Table& table, U32 count) noexcept {
        if (count <= table.capacity()) return true;
        const U32 more = std::bit_ceil(count);
        if (more > U32{1} << mostPlaceBits || !table.marks.reach(more)) return false;
        void* const grown =
            zeroedMemoryGrown(table.lines, table.capacity() * sizeof(Line), more * sizeof(Line));
        if (grown == nullptr) return false;
        table.lines = static_cast<Line*>(grown);
        table.room = static_cast<U8>(std::countr_zero(more));
        return true;
    }

    // The line is a table or a tree whose members share bits in which the trail differs: it becomes
    // a table over those bits, too. `shared`: so many bits do all share who may come to this line.
    // Throws std::bad_alloc.
    void startSooner(Line& line, U64 trail, unsigned shared) const {
        const bool isTable = line.is(Line::isTable);
        const U64 prefix = prefixOf(line);
        const auto start = static_cast<unsigned>(std::countr_zero(prefix ^ trail));
        Line fresh;
        Items<Member> items;
        if (isTable && line.table.byRank == (start >= 32) && items.gather(kind_, line)) {
            if (startInPlace(line.table, items, start)) return;
            const U32 count = std::max(build_.countFor(items.count + 1), line.table.count);
            if (!build_.buildTable(fresh, items.all, items.count, items.byRank, items.fold,
                                   start % 32, count))
                throw std::bad_alloc();
            build_.free(line);
            line.become(fresh);
            return;
        }
        // They are too many, and stay: a table before them, with room for some bits more, for keys
        // may come in the map's own order.
        constexpr unsigned more = 8;
        const unsigned from =
            std::max({start > more ? start - more : 0, shared, start >= 32 ? 32U : 0U});
        if (!build_.emptyTable(fresh, trail, from, U32{2} << (start - from)))
            throw std::bad_alloc();
        Table& table = fresh.table;
        const U32 p = table.place(table.wordIn(prefix));
        std::memcpy(static_cast<void*>(&table.lines[p]), &line, sizeof line);
        table.lines[p].at.state &= ~Line::isSplit;
        table.mark(p);
        table.children = 1;
        table.load = childLoad<Member>;
        line.become(fresh);
    }

private:
    // The line's members with the next bit go to the one that is split off from it.
    [[gnu::always_inline]] static void divide(Table& table, U32 p) noexcept {
        const U32 half = table.half();
        Line& to = table.lines[p + half];
        table.lines[p].divide(half << table.shift, to);
        if (to.at.state == 0) return;
        table.mark(p + half);
        if (table.lines[p].at.state == 0) table.unmark(p);
    }

    bool splitChild(Table& table, U32 p, Line& from, Line& to) const noexcept {
        const unsigned bit = table.splitBit();
        if (from.is(Line::isTree) || from.table.start > bit) { // all go to one side
            if ((prefixOf(from) >> bit & 1) == 0) return true;
            std::memcpy(static_cast<void*>(&to), &from, sizeof to);
            from.at.state = 0;
            table.unmark(p);
            table.mark(table.count);
            return true;
        }
        Items<Member> items;
        if (!items.gather(kind_, from)) return false;
        U32 stay = 0;
        while (stay < items.count && (items.all[stay].word >> bit % 32 & 1) == 0) ++stay;
        Line low;
        Line high;
        if (!build_.build(low, items.all, stay, items.byRank, items.fold)) return false;
        if (!build_.build(high, items.all + stay, items.count - stay, items.byRank, items.fold)) {
            build_.free(low);
            return false;
        }
        build_.free(from);
        --table.children;
        table.load -= childLoad<Member>;
        for (const Line* side : {&low, &high}) {
            const bool isChild = side->is(Line::isTable | Line::isTree);
            table.children += isChild ? 1 : 0;
            table.load += isChild ? childLoad<Member> : side->count();
        }
        std::memcpy(static_cast<void*>(&from), &low, sizeof low);
        std::memcpy(static_cast<void*>(&to), &high, sizeof high);
        if (low.at.state == 0) table.unmark(p);
        if (high.at.state != 0) table.mark(table.count);
        return true;
    }

    bool startInPlace(Table& table, Items<Member>& items, unsigned start) const noexcept {
        if (table.children != 0) return false;
        Table sooner = table;
        sooner.start = static_cast<U8>(start);
        sooner.shift = static_cast<U8>(start % 32);
        sooner.prefix &= (U64{1} << start) - 1;
        for (U32 i = 0, run = 0; i < items.count; ++i) {
            const bool isSame =
                i != 0 && sooner.place(items.all[i].word) == sooner.place(items.all[i - 1].word);
            run = isSame ? run + 1 : 1;
            if (run > Line::seats) return false;
        }
        for (U32 p = table.first; p != Marks::none; p = table.marks.next(p))
            table.lines[p].at.state &= Line::isSplit;
        for (U32 p = table.first; p != Marks::none;) {
            const U32 next = table.marks.next(p);
            table.marks.clear(p);
            p = next;
        }
        sooner.marks = table.marks;
        sooner.load = 0;
        sooner.first = Marks::none;
        table = sooner;
        return build_.fill(table, items.all, items.count, items.fold);
    }

    MemberKind kind_;
    LineBuild<Member> build_;
};

// What all members of a table or a tree share.
template <class Member>
U64 prefixOf(const Line<Member>& line) noexcept {
    return line.is(line.isTable) ? line.table.prefix : line.leaf.tree->fold;
}

// Without memory, where the table is large enough.
} // namespace Vel::detail
