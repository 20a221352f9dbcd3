// LineAudit.h - how many of its invariants a map sees broken in itself.
// Test: LineMap_test.cpp.
#pragma once

#include <Vel/KeyHash.h>
#include <Vel/detail/LineBuild.h>

namespace Vel::detail {

template <class Member>
class LineAudit {
public:
    using Line = detail::Line<Member>;
    using Table = detail::Table<Member>;

    explicit LineAudit(MemberKind kind) noexcept : kind_(kind) {}

    // The members of the line share so many bits with the trail; their words are ranks', or folds.
    void check(const Line& line, U64 trail, unsigned bits, bool byRank) noexcept {
        if (line.is(Line::isTable)) {
            expect(line.table.start >= bits && agree(line.table.prefix, trail, bits));
            checkTable(line.table);
        } else if (line.is(Line::isTree)) {
            expect(agree(line.leaf.tree->fold, trail, bits));
            checkTree(*line.leaf.tree);
        } else {
            checkSeats(line, trail, bits, byRank);
        }
    }

    unsigned errors = 0;
    U32 members = 0;

private:
    void expect(bool holds) noexcept { errors += holds ? 0 : 1; }

    static bool agree(U64 a, U64 b, unsigned bits) noexcept {
        return bits == 0 || (a ^ b) << (64 - bits) == 0;
    }

    void checkTable(const Table& table) noexcept {
        checkMarks(table);
        U32 load = 0;
        U32 children = 0;
        for (U32 p = 0; p < table.capacity(); ++p) {
            const Line& line = table.lines[p];
            const bool exists =
                p < table.count ||
                (p >= table.half() && table.lines[p - table.half()].is(Line::isSplit));
            expect(exists || line.at.state == 0);
            expect(!line.is(Line::isSplit) ||
                   (p < table.half() && p >= table.count - table.half()));
            expect(table.marks.has(p) == !line.isEmpty());
            if (line.isEmpty()) continue;
            const unsigned bits = table.depth(p);
            const U64 own = U64{p & ((U32{1} << (bits - table.start)) - 1)} << table.start;
            const U32 before = members;
            check(line, table.prefix | own, bits, table.byRank);
            const bool isChild = line.is(Line::isTable | Line::isTree);
            children += isChild ? 1 : 0;
            load += isChild ? childLoad<Member> : members - before;
            expect(!isChild || members - before > 3);
        }
        expect(load == table.load && children == table.children);
    }

    void checkMarks(const Table& table) noexcept {
        expect(table.first == table.marks.first());
        for (U32 p = table.first; p != Marks::none;) {
            const U32 next = table.marks.next(p);
            expect(p < table.capacity());
            expect(next == Marks::none || hashesBelow(p, next));
            p = next;
        }
    }

    void checkTree(const Tree& tree) noexcept {
        members += tree.count();
        const std::uintptr_t* last = nullptr;
        for (const std::uintptr_t& member : tree.members) {
            expect(kind_.fold(member) == tree.fold);
            expect(last == nullptr || kind_.isLess(*last, member));
            last = &member;
        }
    }

    void checkSeats(const Line& line, U64 trail, unsigned bits, bool byRank) noexcept {
        expect((line.at.state & ~(Line::isSplit | Line::everySeat)) == 0);
        for (U32 s = 0; s < Line::seats; ++s) {
            if ((line.at.state >> s & 1) == 0) continue;
            ++members;
            const Member member = line.at.member[s];
            const U32 fold = kind_.isPlain() ? line.at.word[s] : kind_.fold(member);
            U32 rank = 0;
            if (byRank) expect(kind_.rankWord(member, rank));
            expect(line.at.word[s] == (byRank ? rank : fold));
            expect(agree(U64{rank} << 32 | fold, trail, bits));
            for (U32 other = 0; other < s; ++other)
                expect((line.at.state >> other & 1) == 0 ||
                       line.at.word[other] != line.at.word[s] ||
                       !kind_.isEqual(line.at.member[other], member));
        }
    }

    MemberKind kind_;
};

} // namespace Vel::detail
