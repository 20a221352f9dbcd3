// LineMap.h - an ordered map of members that are addresses of objects, or numbers: docs/map.md
// draws it.
//
// Owns:    its lines, not its members: who gives them counts them.
// Order:   ascending reversed fold, then by key; of the members alone.
// Cost:    find, add, take: one line of the cache a level; two levels are rare.
// Asked:   by a Probe, which is copied: fold(), rankWord() where keys have ranks, is(member),
//          key(), or null and member().
// Errors:  add() and reserve() throw std::bad_alloc: the members are as they were.
// Threads: no lock inside; the owner serialises every call. A const call writes nothing.
// ABI:     layout, a line and two counters, and inline code are compiled into clients; what is rare
//          is the library's.
#pragma once

#include <Vel/Export.h>
#include <Vel/Integers.h>
#include <Vel/detail/Line.h>
#include <Vel/detail/MemberKind.h>
#include <cstddef>
#include <cstdint>

namespace Vel::detail {

template <class Member>
class VEL_API LineMap {
public:
    using Line = detail::Line<Member>;
    using Table = detail::Table<Member>;

    // Where a walk stands: good until the map changes.
    struct Spot {
        U64 changes = 0; // of the map by then
        const Line* line = nullptr;
        U32 order = 0;                // seats of the line that are still to come
        U32 place = 0;                // of the line in its table
        const Table* table = nullptr; // null in a tree, and where the map has one line
        U32 near =
            Marks::none; // of here on, what the members of lines are was fetched up to this place
        U32 far = Marks::none; // and lines were fetched up to this one
    };

    LineMap() noexcept { root_.at.state = 0; }

    LineMap(const LineMap&) = delete;
    LineMap& operator=(const LineMap&) = delete;
    // Precondition: clear() was called.
    ~LineMap() = default;

    U32 size() const noexcept { return size_; }

    // Where the member is that the probe asks for, or null.
    template <class Probe>
    [[gnu::always_inline]] const Member* find(const Probe& probe) const noexcept {
        const U32 fold = probe.fold();
        const Line* line = &root_;
        while (line->is(Line::isTable)) {
            if constexpr (Probe::hasRanks)
                if (line->table.byRank) [[unlikely]]
                    return findByRank(probe, *line);
            const Table& table = line->table;
            line = &table.lines[table.place(fold)];
            if (!line->is(Line::isTable | Line::isSplit)) [[likely]]
                break; // one question instead of two
            line = &table.lineOf(fold);
        }
        const U32 same = line->same(fold);
        if (same != 0) [[likely]] {
            const Member* const found = &line->at.member[Line::first(same)];
            if (probe.is(*found)) [[likely]]
                return found;
            return findTwin(probe, *line, same & (same - 1));
        }
        if constexpr (Probe::hasTrees)
            if (line->is(Line::isTree)) [[unlikely]]
                return findInTree(*line, fold, probe.key());
        return nullptr;
    }

    // Fetches from memory what a look-up of the fold will look at.
    [[gnu::always_inline]] void fetch(U32 fold) const noexcept {
        if (root_.is(Line::isTable))
            __builtin_prefetch(&root_.table.lines[root_.table.place(fold)], 1);
    }

    // Adds the member that the probe would find. One of equal key gives way and is returned, else
    // 0.
    template <class Probe>
    Member add(MemberKind kind, const Probe& probe, Member member) {
        const U32 fold = probe.fold();
        U32 word = fold;
        Line* line = &root_;
        Table* table = nullptr;
        while (line->is(Line::isTable)) {
            table = &line->table;
            if constexpr (Probe::hasRanks) {
                if (table->byRank) [[unlikely]] {
                    word = probe.rankWord();
                    if (table->differs(U64{word} << 32 | fold) != 0) [[unlikely]]
                        return addAside(kind, fold, member);
                    line = &table->lineOf(word);
                    continue;
                }
            }
            if (!table->belongs(fold)) [[unlikely]]
                return addAside(kind, fold, member);
            line = &table->lineOf(word);
        }
        if (line->same(word) != 0 || line->isFull() || line->is(Line::isTree)) [[unlikely]]
            return addAside(kind, fold, member);
        if (line->isEmpty() && table != nullptr) mark(*table, *line);
        line->seat(word, member);
        ++changes_;
        ++size_;
        if (table != nullptr && ++table->load > table->limit) [[unlikely]]
            grow(kind, *table);
        return 0;
    }

    // Removes the member that the probe asks for and sets `taken` to it; false if it is not here.
    template <class Probe>
    bool take(const Probe& probe, Member& taken) noexcept {
        const U32 fold = probe.fold();
        U32 word = fold;
        Line* line = &root_;
        Table* table = nullptr;
        while (line->is(Line::isTable)) {
            table = &line->table;
            if constexpr (Probe::hasRanks)
                if (table->byRank) [[unlikely]]
                    word = probe.rankWord();
            line = &table->lineOf(word);
        }
        for (U32 same = line->same(word); same != 0; same &= same - 1) {
            const Member found = line->at.member[Line::first(same)];
            if (!probe.is(found)) [[unlikely]]
                continue;
            line->at.state &= ~(same & (0 - same));
            ++changes_;
            --size_;
            if (table != nullptr) {
                if (line->isEmpty()) [[unlikely]]
                    unmark(*table, *line);
                if (--table->load <= least && table != &root_.table) [[unlikely]]
                    shrink(U64{word} << 32 | fold);
            }
            taken = found;
            return true;
        }
        if constexpr (Probe::hasTrees)
            if (line->is(Line::isTree)) [[unlikely]]
                return takeFromTree(*line, probe.key(), probe.member(), taken);
        return false;
    }

    // The first member, or null. Who takes it away, again and again, is served like a walk: what
    // comes next is fetched.
    const Member* first(MemberKind kind) const noexcept;
    const Member* first(MemberKind kind, Spot& spot) const noexcept;

    // The member behind this one of this fold.
    [[gnu::always_inline]] const Member* next(MemberKind kind, U32 fold, Member member,
                                              Spot& spot) const noexcept {
        if (isGood(spot) && spot.order != 0) [[likely]]
            return standOnNext(spot);
        return goOn(kind, fold, member, spot);
    }

    // The first member whose hash is not below this one.
    const Member* notBelow(MemberKind kind, U32 hash, Spot& spot) const noexcept;

    // Whether the map is as it was when the spot came to stand there.
    bool isGood(const Spot& spot) const noexcept { return spot.changes == changes_; }

    // The next seat of the spot's line; there is one.
    static const Member* standOnNext(Spot& spot) noexcept {
        const Member* const member = &spot.line->at.member[(spot.order & 7) - 1];
        spot.order >>= 3;
        return member;
    }

    // Calls visit(member) for all, in no order. `visit` may be copied.
    template <class Visit>
    void visitAll(const Visit& visit) const {
        visitLine(root_, visit);
    }

    // Room for so many members; see HashMapGeneric::setSize0().
    void reserve(MemberKind kind, U32 members);
    // Removes all; of objects, drops one reference each, when the map is empty already.
    void clear(MemberKind kind) noexcept;

    std::size_t heapBytes() const noexcept;
    unsigned auditErrors(MemberKind kind) const noexcept;

private:
    static constexpr U32 least = 3; // a table or tree below the root that has no more becomes seats

    template <class Probe>
    [[gnu::noinline]] static const Member* findTwin(Probe probe, const Line& line,
                                                    U32 same) noexcept {
        for (; same != 0; same &= same - 1)
            if (const Member* at = &line.at.member[Line::first(same)]; probe.is(*at)) return at;
        return nullptr;
    }

    // Below a table of ranks all tables are such.
    template <class Probe>
    [[gnu::noinline]] static const Member* findByRank(Probe probe, const Line& from) noexcept {
        const U32 word = probe.rankWord();
        const Line* line = &from;
        while (line->is(Line::isTable)) line = &line->table.lineOf(word);
        const U32 same = line->same(word);
        return same != 0 ? findTwin(probe, *line, same) : nullptr;
    }

    static const Member* findInTree(const Line& line, U32 fold, const void* key) noexcept;
    Member addAside(MemberKind kind, U32 fold, Member member);
    bool takeFromTree(Line& line, const void* key, Member member, Member& taken) noexcept;
    static void mark(Table& table, const Line& line) noexcept;
    static void unmark(Table& table, const Line& line) noexcept;
    static void grow(MemberKind kind, Table& table) noexcept;
    void shrink(U64 trail) noexcept;
    const Member* goOn(MemberKind kind, U32 fold, Member member, Spot& spot) const noexcept;
    static void visitTree(const Line& line, void (*visit)(const void* visitor, Member),
                          const void* visitor);

    template <class Visit>
    static void visitLine(const Line& line, const Visit& visit) {
        if (line.is(Line::isTree)) {
            visitTree(
                line, [](const void* v, Member m) { (*static_cast<const Visit*>(v))(m); }, &visit);
        } else if (!line.is(Line::isTable)) {
            for (U32 rest = line.taken(); rest != 0; rest &= rest - 1)
                visit(line.at.member[Line::first(rest)]);
        } else {
            // How many seats are taken would be guessed wrong once a line: members are gathered
            // first.
            constexpr U32 enough = 64;
            Member gathered[enough + Line::seats];
            U32 n = 0;
            const auto visitGathered = [&] {
                const Visit own = visit;
                for (U32 i = 0; i < n; ++i) own(gathered[i]);
                n = 0;
            };
            const Table& table = line.table;
            for (U32 p = 0, upper = 0; p < table.count; p += upper == 0 ? 1 : 0) {
                const Line& each = table.lines[p + upper];
                upper = each.is(Line::isSplit) ? table.half() : 0;
                if (each.is(Line::isTable | Line::isTree)) [[unlikely]] {
                    visitLine(each, visit);
                    continue;
                }
                for (U32 s = 0; s < Line::seats; ++s) {
                    gathered[n] = each.at.member[s];
                    n += (each.at.state >> s) & 1;
                }
                if (n >= enough) visitGathered();
            }
            visitGathered();
        }
    }

    Line root_;
    U64 changes_ = 1;
    U32 size_ = 0;
};

extern template class VEL_API LineMap<U32>;
#if UINTPTR_MAX != UINT32_MAX
extern template class VEL_API LineMap<std::uintptr_t>;
#endif

} // namespace Vel::detail
