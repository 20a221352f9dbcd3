#include <Vel/detail/LineMap.h>

#include <Vel/detail/LineAudit.h>
#include <Vel/detail/LineBuild.h>
#include <Vel/detail/LineGrowth.h>
#include <Vel/detail/LineOrder.h>
#include <Vel/detail/LineWalk.h>
#include <Vel/detail/Tree.h>
#include <algorithm>
#include <new>
#include <utility>

namespace Vel::detail {

template <class Member>
const Member* LineMap<Member>::findInTree(const Line& line, U32 fold, const void* key) noexcept {
    const Tree& tree = *line.leaf.tree;
    if (tree.fold != fold) return nullptr;
    const auto found = tree.find(key);
    return found != tree.members.end() ? reinterpret_cast<const Member*>(&*found) : nullptr;
}

template <class Member>
void LineMap<Member>::mark(Table& table, const Line& line) noexcept {
    table.mark(table.placeOf(line));
}

template <class Member>
void LineMap<Member>::unmark(Table& table, const Line& line) noexcept {
    table.unmark(table.placeOf(line));
}

template <class Member>
void LineMap<Member>::grow(MemberKind kind, Table& table) noexcept {
    LineGrowth<Member>(kind).grow(table);
}

// The seat of a member that has the key of this one; null if there is none.
template <class Member>
Member* seatOfKey(MemberKind kind, Line<Member>& line, U32 word, Member member) {
    for (U32 same = line.same(word); same != 0; same &= same - 1) {
        Member& seated = line.at.member[Line<Member>::first(same)];
        if (kind.isEqual(seated, member)) return &seated;
    }
    return nullptr;
}

// Makes a line anew of its members and one more: it becomes a table or a tree.
template <class Member>
void becomeLarger(MemberKind kind, Line<Member>& line, Table<Member>* table, U32 fold,
                  const Item<Member>& added) {
    Items<Member> items;
    items.addSeats(kind, line);
    items.insert(kind, added);
    Line<Member> fresh;
    const bool byRank = table != nullptr && table->byRank;
    if (!LineBuild<Member>(kind).build(fresh, items.all, items.count, byRank, fold))
        throw std::bad_alloc();
    line.become(fresh);
    if (table == nullptr) return;
    ++table->children;
    table->load += childLoad<Member> - Line<Member>::seats;
    if (table->load > table->limit) LineGrowth<Member>(kind).grow(*table);
}

// What add() does not do at once: an equal key, a full line, a table or tree that shares bits in
// which the new one differs.
template <class Member>
Member LineMap<Member>::addAside(MemberKind kind, U32 fold, Member member) {
    const LineGrowth<Member> growth(kind);
    U32 rank = 0;
    kind.rankWord(member, rank); // 0 where there are none
    const U64 trail = U64{rank} << 32 | fold;
    ++changes_;
    Line* line = &root_;
    Table* table = nullptr;
    unsigned shared = 0; // bits of all who may come to the line
    while (line->is(Line::isTable | Line::isTree)) {
        if (line->is(Line::isTree)) {
            Tree& tree = *line->leaf.tree;
            if (tree.fold != fold) {
                growth.startSooner(*line, trail, shared);
                continue;
            }
            const auto [place, isNew] = tree.members.insert(member);
            if (!isNew)
                return static_cast<Member>(
                    std::exchange(const_cast<std::uintptr_t&>(*place), member));
            ++size_;
            return 0;
        }
        if (line->table.differs(trail) == 0) {
            table = &line->table;
            line = &table->lineOf(table->wordIn(trail));
            shared = table->depth(table->placeOf(*line));
        } else if (size_ == 0) { // it was made for members to come
            line->table.prefix = trail & ((U64{1} << line->table.start) - 1);
        } else {
            growth.startSooner(*line, trail, shared);
        }
    }
    const U32 word = table != nullptr ? table->wordIn(trail) : fold;
    if (Member* const seated = seatOfKey(kind, *line, word, member))
        return std::exchange(*seated, member);
    if (!line->isFull() ||
        (table != nullptr && growth.splitEarly(*table, line, word) && !line->isFull())) {
        if (line->isEmpty() && table != nullptr) mark(*table, *line);
        line->seat(word, member);
        ++size_;
        if (table != nullptr && ++table->load > table->limit) growth.grow(*table);
        return 0;
    }
    becomeLarger<Member>(kind, *line, table, fold, {word, member});
    ++size_;
    return 0;
}

template <class Member>
bool LineMap<Member>::takeFromTree(Line& line, const void* key, Member member,
                                   Member& taken) noexcept {
    Tree& tree = *line.leaf.tree;
    const auto found = key != nullptr ? tree.find(key) : tree.members.find(member);
    if (found == tree.members.end() || (key == nullptr && *found != member)) return false;
    taken = static_cast<Member>(*found);
    tree.members.erase(found);
    ++changes_;
    --size_;
    if (tree.count() <= least) shrink(tree.fold);
    return true;
}

namespace {

// A table or tree with few members, below another table, becomes seats.
template <class Member>
void becomeSeats(Line<Member>& line, Table<Member>& parent) noexcept {
    const Line<Member> old = line;
    line.at.state &= Line<Member>::isSplit;
    if (old.is(old.isTree)) {
        for (const std::uintptr_t member : old.leaf.tree->members)
            line.seat(old.leaf.tree->fold, static_cast<Member>(member));
    } else {
        const Table<Member>& table = old.table;
        const bool isFoldAgain = table.byRank && !parent.byRank;
        for (U32 p = table.first; p != Marks::none; p = table.marks.next(p)) {
            const Line<Member>& from = table.lines[p];
            for (U32 rest = from.taken(); rest != 0; rest &= rest - 1) {
                const U32 s = from.first(rest);
                line.seat(isFoldAgain ? static_cast<U32>(table.prefix) : from.at.word[s],
                          from.at.member[s]);
            }
        }
    }
    LineBuild<Member>::free(old);
    --parent.children;
    parent.load -= childLoad<Member> - line.count();
}

template <class Member>
void shrinkBelow(Line<Member>& line, U64 trail, U32 least) noexcept {
    Table<Member>& table = line.table;
    Line<Member>& child = table.lineOf(table.wordIn(trail));
    if (child.is(child.isTable)) shrinkBelow(child, trail, least);
    const bool isSmall = child.is(child.isTable)
                             ? child.table.load <= least
                             : child.is(child.isTree) && child.leaf.tree->count() <= least;
    if (isSmall) becomeSeats(child, table);
}

template <class Member>
[[gnu::always_inline]] inline void dropSeated(const Line<Member>& line) noexcept {
    for (U32 rest = line.taken(); rest != 0; rest &= rest - 1)
        MemberKind::object(line.at.member[line.first(rest)])->referencesDec();
}

// Drops the reference to each member, and gives back the tables and trees.
template <class Member>
void dropAll(const Line<Member>& line) noexcept {
    using Line = detail::Line<Member>;
    if (line.is(Line::isTree)) {
        for (const std::uintptr_t member : line.leaf.tree->members)
            MemberKind::object(member)->referencesDec();
    } else if (!line.is(Line::isTable)) {
        dropSeated(line);
    } else if (line.table.load != 0) {
        constexpr U32 ahead = 4;
        const Table<Member>& table = line.table;
        for (U32 p = 0, upper = 0; p < table.count; p += upper == 0 ? 1 : 0) {
            // Where there are none, what is fetched does no harm.
            for (const Member member : table.lines[std::min(p + ahead, table.count - 1)].at.member)
                __builtin_prefetch(MemberKind::object(member), 1);
            const Line& each = table.lines[p + upper];
            upper = each.is(Line::isSplit) ? table.half() : 0;
            if (each.is(Line::isTable | Line::isTree)) [[unlikely]]
                dropAll(each);
            else
                dropSeated(each);
        }
    }
    LineBuild<Member>::freeAlone(line);
}

template <class Member>
std::size_t heapBytesOf(const Line<Member>& line) noexcept {
    constexpr std::size_t treeNode = 5 * sizeof(void*);
    if (line.is(line.isTree)) return sizeof(Tree) + line.leaf.tree->count() * treeNode;
    if (!line.is(line.isTable)) return 0;
    const Table<Member>& table = line.table;
    std::size_t bytes = table.capacity() * sizeof line + table.marks.heapBytes();
    if (table.children != 0)
        for (U32 p = table.first; p != Marks::none; p = table.marks.next(p))
            bytes += heapBytesOf(table.lines[p]);
    return bytes;
}

} // namespace

template <class Member>
void LineMap<Member>::shrink(U64 trail) noexcept {
    if (root_.is(Line::isTable)) shrinkBelow(root_, trail, least);
}

template <class Member>
const Member* LineMap<Member>::first(MemberKind kind) const noexcept {
    const Line* line = &root_;
    const Table* ahead = nullptr;
    U32 place = 0;
    while (line->is(Line::isTable)) {
        const Table& table = line->table;
        if (table.first == Marks::none) return nullptr;
        line = &table.lines[table.first];
        if (table.isLarge()) {
            ahead = &table;
            place = table.first;
        }
    }
    if (line->is(Line::isTree))
        return reinterpret_cast<const Member*>(&*line->leaf.tree->members.begin());
    if (line->isEmpty()) return nullptr;
    const bool isLast = (line->taken() & (line->taken() - 1)) == 0;
    if (isLast && ahead != nullptr) LineWalk<Member>::fetchBehind(kind, *ahead, place);
    return &line->at.member[isLast ? Line::first(line->taken()) : firstSeat(kind, *line)];
}

template <class Member>
const Member* LineMap<Member>::first(MemberKind kind, Spot& spot) const noexcept {
    spot = Spot();
    spot.changes = changes_;
    return LineWalk<Member>(kind, spot).standOnFirst(root_, nullptr, 0);
}

template <class Member>
const Member* LineMap<Member>::goOn(MemberKind kind, U32 fold, Member member,
                                    Spot& spot) const noexcept {
    LineWalk<Member> walk(kind, spot);
    if (isGood(spot) && spot.table != nullptr)
        if (const Member* const found = walk.standInNextLine()) return found;
    if (kind.isPlain()) {
        const U32 hash = bitReverse(fold) + 1; // 0 behind the last of all
        return hash != 0 ? notBelow(kind, hash, spot) : nullptr;
    }
    spot = Spot();
    spot.changes = changes_;
    return walk.standBehind(fold, &member, root_, nullptr, 0);
}

template <class Member>
const Member* LineMap<Member>::notBelow(MemberKind kind, U32 hash, Spot& spot) const noexcept {
    spot = Spot();
    spot.changes = changes_;
    return LineWalk<Member>(kind, spot).standBehind(bitReverse(hash), nullptr, root_, nullptr, 0);
}

template <class Member>
void LineMap<Member>::visitTree(const Line& line, void (*visit)(const void*, Member),
                                const void* visitor) {
    for (const std::uintptr_t member : line.leaf.tree->members)
        visit(visitor, static_cast<Member>(member));
}

template <class Member>
void LineMap<Member>::reserve(MemberKind kind, U32 members) {
    using Build = LineBuild<Member>;
    const U32 count = std::min(Build::countFor(members), U32{1} << mostPlaceBits);
    ++changes_;
    if (size_ != 0 && root_.is(Line::isTable)) {
        Table& table = root_.table;
        if (!LineGrowth<Member>::reach(table, count)) throw std::bad_alloc();
        while (table.count < count && LineGrowth<Member>(kind).split(table)) {}
        table.limit = std::max(table.limit, Build::limitOf(table.count));
    } else if (!root_.is(Line::isTree)) {
        Line fresh;
        fresh.at.state = 0;
        const bool isWorthIt = members > 2 * Line::seats;
        if (isWorthIt && !Build::emptyTable(fresh, 0, 31, count)) throw std::bad_alloc();
        const Line old = std::exchange(root_, size_ == 0 || isWorthIt ? fresh : root_);
        if (size_ == 0) return Build::free(old);
        if (!isWorthIt) return;
        size_ = 0;
        for (U32 rest = old.taken(); rest != 0; rest &= rest - 1) // so few need no memory
            addAside(kind, old.at.word[Line::first(rest)], old.at.member[Line::first(rest)]);
    }
}

template <class Member>
void LineMap<Member>::clear(MemberKind kind) noexcept {
    const Line old = root_;
    root_.at.state = 0;
    size_ = 0;
    ++changes_;
    if (kind.isPlain())
        LineBuild<Member>::free(old);
    else
        dropAll(old);
}

template <class Member>
std::size_t LineMap<Member>::heapBytes() const noexcept {
    return heapBytesOf(root_);
}

template <class Member>
unsigned LineMap<Member>::auditErrors(MemberKind kind) const noexcept {
    LineAudit<Member> audit(kind);
    audit.check(root_, 0, 0, false);
    return audit.errors + (audit.members != size_ ? 1 : 0);
}

template class LineMap<U32>;
#if UINTPTR_MAX != UINT32_MAX
template class LineMap<std::uintptr_t>;
#endif

} // namespace Vel::detail
