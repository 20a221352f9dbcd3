#include <Vel/detail/OrderedBuckets.h>

#include <Vel/bitReverse.h>
#include <memory>
#include <set>

namespace Vel::detail {

// Members whose hashes agree, by key. Their chain is kept as well: it is what iteration follows.
struct OrderedBuckets::Crowd {
    struct KeyOf {
        const void* key;
    };

    struct Less {
        using is_transparent = void;
        const HashMapVTableGeneric* vtable;

        bool operator()(const MapLink* a, const MapLink* b) const {
            return vtable->keyLessThan(nullptr, b, a);
        }

        bool operator()(KeyOf key, const MapLink* b) const {
            return vtable->keyLessThan(key.key, b, nullptr);
        }

        bool operator()(const MapLink* a, KeyOf key) const {
            return !vtable->keyEquals(key.key, a) && !vtable->keyLessThan(key.key, a, nullptr);
        }
    };

    explicit Crowd(const HashMapVTableGeneric& vtable) : members(Less{&vtable}) {}

    std::set<MapLink*, Less> members;
};

class OrderedBuckets::Slot {
public:
    bool isEmpty() const noexcept { return bits_ == 0; }

    Table* table() const noexcept { return tagged<Table>(tableTag); }

    Crowd* crowd() const noexcept { return tagged<Crowd>(crowdTag); }

    // The first member of a plain chain or of a crowd; null for a table.
    MapLink* chain() const noexcept {
        if (const Crowd* members = crowd()) return *members->members.begin();
        return table() != nullptr ? nullptr : reinterpret_cast<MapLink*>(bits_);
    }

    void chainIs(MapLink* first) noexcept { bits_ = reinterpret_cast<std::uintptr_t>(first); }

    void tableIs(Table* table) noexcept {
        bits_ = reinterpret_cast<std::uintptr_t>(table) | tableTag;
    }

    void crowdIs(Crowd* crowd) noexcept {
        bits_ = reinterpret_cast<std::uintptr_t>(crowd) | crowdTag;
    }

private:
    static constexpr std::uintptr_t tableTag = 1;
    static constexpr std::uintptr_t crowdTag = 2;

    template <class T>
    T* tagged(std::uintptr_t tag) const noexcept {
        return (bits_ & tag) != 0 ? reinterpret_cast<T*>(bits_ & ~tag) : nullptr;
    }

    std::uintptr_t bits_ = 0;
};

struct OrderedBuckets::Table {
    static constexpr unsigned slotCount = 1U << levelBits;

    void occupiedIs(unsigned index, bool occupied) noexcept {
        const U64 bit = U64{1} << index;
        occupied_ = occupied ? occupied_ | bit : occupied_ & ~bit;
    }

    bool isEmpty() const noexcept { return occupied_ == 0; }

    // The first occupied slot from `index` on; slotCount if there is none.
    unsigned occupiedFrom(unsigned index) const noexcept {
        const U64 left = index < slotCount ? occupied_ & (~U64{0} << index) : 0;
        return left == 0 ? slotCount : static_cast<unsigned>(std::countr_zero(left));
    }

    U64 occupied_ = 0;
    Slot slots[slotCount];
};

static_assert(alignof(MapLink) >= 4, "two bits of a pointer to a member are free");

// The position of a fold's slot in a table of this level: its next six bits, reversed, so that positions ascend with the
// reversed hash. At the last level two bits are left.
unsigned OrderedBuckets::indexOf(U32 fold, unsigned level) noexcept {
    return bitReverse(fold >> (level * levelBits)) >> (hashBits - levelBits);
}

U32 OrderedBuckets::foldOf(const MapLink& member) const noexcept {
    return bitReverse(vtable_->hash(&member));
}

// Whether `a` stands before `b` in the map's order.
bool OrderedBuckets::below(const MapLink& a, U32 foldOfA, const MapLink& b) const noexcept {
    const U32 foldOfB = foldOf(b);
    if (foldOfA != foldOfB) return hashesBelow(foldOfA, foldOfB);
    return vtable_->keyLessThan(nullptr, &b, &a);
}

OrderedBuckets::Slot* OrderedBuckets::slotFor(U32 fold, unsigned& level) const noexcept {
    Table* table = root_;
    for (level = 0; table != nullptr; ++level) {
        Slot& slot = table->slots[indexOf(fold, level)];
        table = slot.table();
        if (table == nullptr) return &slot;
    }
    return nullptr;
}

MapLink* OrderedBuckets::chain(U32 fold) const noexcept {
    unsigned level;
    const Slot* slot = slotFor(fold, level);
    return slot != nullptr ? slot->chain() : nullptr;
}

MapLink* OrderedBuckets::find(const void* key, U32 fold) const noexcept {
    unsigned level;
    const Slot* slot = slotFor(fold, level);
    if (slot == nullptr) return nullptr;
    if (const Crowd* crowd = slot->crowd()) {
        const auto found = crowd->members.find(Crowd::KeyOf{key});
        return found != crowd->members.end() ? *found : nullptr;
    }
    MapLink* member = slot->chain();
    while (member != nullptr && !vtable_->keyEquals(key, member)) member = member->next_;
    return member;
}

void OrderedBuckets::insert(MapLink& member, const void*, U32 fold) {
    if (root_ == nullptr) root_ = new Table;
    unsigned level;
    Slot* slot = slotFor(fold, level);
    // A full chain gives way to a table, until the new member's chain has room; all of it may land in one slot again.
    while (slot->crowd() == nullptr) {
        unsigned length = 0;
        for (const MapLink* m = slot->chain(); m != nullptr; m = m->next_) ++length;
        if (length < chainMax) break;
        if ((level + 1) * levelBits < hashBits)
            split(*slot, level + 1);
        else
            crowd(*slot);
        slot = slotFor(fold, level);
    }
    if (Crowd* members = slot->crowd()) members->members.insert(&member);
    link(*slot, member, fold);
    if (level == 0)
        root_->occupiedIs(indexOf(fold, 0), true);
    else
        prune(fold);
    member.referencesInc();
    ++size_;
}

// Puts the member into the chain at its place.
void OrderedBuckets::link(Slot& slot, MapLink& member, U32 fold) noexcept {
    MapLink* before = nullptr;
    if (const Crowd* crowd = slot.crowd()) {
        const auto place = crowd->members.find(&member);
        if (place != crowd->members.begin()) before = *std::prev(place);
        member.next_ = before != nullptr                          ? before->next_
                       : std::next(place) != crowd->members.end() ? *std::next(place)
                                                                  : nullptr;
        if (before != nullptr) before->next_ = &member;
        return;
    }
    MapLink* after = slot.chain();
    while (after != nullptr && below(*after, foldOf(*after), member)) {
        before = after;
        after = after->next_;
    }
    (void)fold;
    member.next_ = after;
    if (before != nullptr)
        before->next_ = &member;
    else
        slot.chainIs(&member);
}

// Replaces the slot's chain by a table of that level. The chain's order is the table's, so each slot takes a run of it.
void OrderedBuckets::split(Slot& slot, unsigned level) {
    auto* table = new Table;
    MapLink* last = nullptr;
    unsigned lastIndex = Table::slotCount;
    for (MapLink* member = slot.chain(); member != nullptr;) {
        MapLink* next = member->next_;
        const unsigned index = indexOf(foldOf(*member), level);
        if (index != lastIndex) {
            if (last != nullptr) last->next_ = nullptr;
            table->slots[index].chainIs(member);
            table->occupiedIs(index, true);
        }
        last = member;
        lastIndex = index;
        member = next;
    }
    slot.tableIs(table);
}

// Gives a chain of equal hashes its set.
void OrderedBuckets::crowd(Slot& slot) {
    auto members = std::make_unique<Crowd>(*vtable_);
    for (MapLink* member = slot.chain(); member != nullptr; member = member->next_)
        members->members.insert(members->members.end(), member);
    slot.crowdIs(members.release());
}

void OrderedBuckets::remove(MapLink& member, U32 fold) {
    unsigned level;
    Slot& slot = *slotFor(fold, level);
    MapLink* before = nullptr;
    if (Crowd* crowd = slot.crowd()) {
        const auto place = crowd->members.find(&member);
        if (place != crowd->members.begin()) before = *std::prev(place);
        crowd->members.erase(place);
        if (crowd->members.empty()) {
            delete crowd;
            slot.chainIs(nullptr);
        }
    } else {
        for (MapLink* m = slot.chain(); m != &member; m = m->next_) before = m;
        if (before == nullptr) slot.chainIs(member.next_);
    }
    if (before != nullptr) before->next_ = member.next_;
    member.next_ = nullptr;
    prune(fold);
    --size_;
    member.referencesDec();
}

// Brings the occupancy on the way to a fold's slot up to date, and frees the tables there that became empty.
void OrderedBuckets::prune(U32 fold) noexcept {
    Table* path[hashBits / levelBits + 1];
    unsigned depth = 0;
    for (Table* table = root_; table != nullptr; ++depth) {
        path[depth] = table;
        table = table->slots[indexOf(fold, depth)].table();
    }
    while (depth-- > 0) {
        const unsigned index = indexOf(fold, depth);
        Slot& slot = path[depth]->slots[index];
        if (Table* below = slot.table(); below != nullptr && below->isEmpty()) {
            delete below;
            slot.chainIs(nullptr);
        }
        path[depth]->occupiedIs(index, !slot.isEmpty());
    }
}

void OrderedBuckets::clear() noexcept {
    Table* table = root_;
    root_ = nullptr;
    size_ = 0;
    if (table != nullptr) drop(table);
}

void OrderedBuckets::drop(Table* table) noexcept {
    for (unsigned i = table->occupiedFrom(0); i < Table::slotCount; i = table->occupiedFrom(i + 1))
        drop(table->slots[i]);
    delete table;
}

void OrderedBuckets::drop(Slot& slot) noexcept {
    if (Table* table = slot.table()) return drop(table);
    MapLink* member = slot.chain();
    delete slot.crowd();
    while (member != nullptr) {
        MapLink* next = member->next_;
        member->next_ = nullptr;
        member->referencesDec();
        member = next;
    }
}

MapLink* OrderedBuckets::firstOf(const Slot& slot) noexcept {
    const Table* table = slot.table();
    return table != nullptr ? firstIn(*table) : slot.chain();
}

MapLink* OrderedBuckets::firstIn(const Table& table) noexcept {
    const unsigned index = table.occupiedFrom(0);
    return index < Table::slotCount ? firstOf(table.slots[index]) : nullptr;
}

MapLink* OrderedBuckets::first() const noexcept {
    return root_ != nullptr ? firstIn(*root_) : nullptr;
}

MapLink* OrderedBuckets::firstBehindChain(U32 fold) const noexcept {
    return root_ != nullptr ? behind(*root_, fold, 0) : nullptr;
}

MapLink* OrderedBuckets::behind(const Table& table, U32 fold, unsigned level) noexcept {
    const unsigned index = indexOf(fold, level);
    if (const Table* below = table.slots[index].table())
        if (MapLink* member = behind(*below, fold, level + 1)) return member;
    const unsigned next = table.occupiedFrom(index + 1);
    return next < Table::slotCount ? firstOf(table.slots[next]) : nullptr;
}

struct OrderedBuckets::Audit {
    std::size_t members = 0;
    unsigned errors = 0;
    const MapLink* last = nullptr;
};

unsigned OrderedBuckets::auditErrors() const {
    Audit seen;
    if (root_ != nullptr) audit(*root_, 0, 0, seen);
    return seen.errors + (seen.members == size_ ? 0 : 1);
}

void OrderedBuckets::audit(const Table& table, unsigned level, U32 prefix, Audit& seen) const {
    for (unsigned i = 0; i < Table::slotCount; ++i) {
        const Slot& slot = table.slots[i];
        if (slot.isEmpty() != (table.occupiedFrom(i) != i)) ++seen.errors;
        const U32 bits = bitReverse(i << (hashBits - levelBits));
        const U32 folds = prefix | bits << (level * levelBits);
        if (const Table* below = slot.table()) {
            if (below->isEmpty()) ++seen.errors;
            audit(*below, level + 1, folds, seen);
            continue;
        }
        std::size_t length = 0;
        for (const MapLink* m = slot.chain(); m != nullptr; m = m->next_, ++length) {
            if (indexOf(foldOf(*m), level) != i) ++seen.errors;
            if (seen.last != nullptr && !below(*seen.last, foldOf(*seen.last), *m)) ++seen.errors;
            if (m->references() == 0) ++seen.errors;
            seen.last = m;
        }
        if (const Crowd* crowd = slot.crowd(); crowd != nullptr && crowd->members.size() != length)
            ++seen.errors;
        seen.members += length;
    }
}

} // namespace Vel::detail
