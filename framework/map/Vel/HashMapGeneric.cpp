#include <Vel/HashMapGeneric.h>

#include <Vel/Assert.h>
#include <Vel/bitReverse.h>
#include <Vel/detail/MemberKind.h>

namespace Vel {

using detail::MemberKind;

namespace {

// What the lines are asked for, of types that only the vtable knows.
struct Asked {
    static constexpr bool hasRanks = true;
    static constexpr bool hasTrees = true;

    U32 fold() const { return hash; }

    U32 rankWord() const {
        U32 rank = 0;
        vtable.keyRank(asked, MemberKind::object(wanted), rank);
        return bitReverse(rank);
    }

    bool is(std::uintptr_t member) const {
        return wanted != 0 ? member == wanted : vtable.keyEquals(asked, MemberKind::object(member));
    }

    const void* key() const { return asked; }

    std::uintptr_t member() const { return wanted; }

    const HashMapVTableGeneric& vtable;
    U32 hash;          // its bits reversed
    const void* asked; // a key, or null for a member
    std::uintptr_t wanted;
};

std::uintptr_t addressOf(const PtrInterface* member) {
    return reinterpret_cast<std::uintptr_t>(static_cast<const MapLink*>(member));
}

Asked askedFor(const HashMapVTableGeneric& vtable, const PtrInterface* member) {
    return {vtable, bitReverse(vtable.hash(member)), nullptr, addressOf(member)};
}

PtrInterface* objectAt(const std::uintptr_t* place) {
    return place != nullptr ? MemberKind::object(*place) : nullptr;
}

} // namespace

HashMapGeneric::HashMapGeneric(unsigned initialSize, const HashMapVTableGeneric& vtable)
    : vtable_(&vtable) {
    setSize0(initialSize);
}

HashMapGeneric::HashMapGeneric(unsigned initialSize) { setSize0(initialSize); }

void HashMapGeneric::vtableIs(const HashMapVTableGeneric& vtable) {
    VEL_ASSERT(size() == 0, size());
    vtable_ = &vtable;
}

void HashMapGeneric::newMemberG(const Ptr<PtrInterface>& member, void* key) {
    VEL_ASSERT_AS("vtableIs() was called", vtable_ != nullptr);
    VEL_ASSERT(vtable_->keyEquals(key, member.ptr()));
    const std::uintptr_t replaced =
        lines_.add(kind(), askedFor(*vtable_, member.ptr()), addressOf(member.ptr()));
    member->referencesInc();
    if (replaced != 0) MemberKind::object(replaced)->referencesDec();
}

void HashMapGeneric::deleteMember(const Ptr<PtrInterface>& member) {
    std::uintptr_t taken = 0;
    if (size() != 0 && lines_.take(askedFor(*vtable_, member.ptr()), taken))
        member->referencesDec();
}

PtrInterface* HashMapGeneric::startAtHash(const void* key, unsigned hash, int* bucket) const {
    *bucket = static_cast<int>(hash);
    if (size() == 0) return nullptr;
    const U32 fold = bitReverse(hash);
    if (key != nullptr)
        if (const auto* const found = lines_.find(Asked{*vtable_, fold, key, 0}))
            return objectAt(found);
    Lines::Spot spot;
    const MemberKind kind = this->kind();
    for (const std::uintptr_t* at = lines_.notBelow(kind, hash, spot);
         at != nullptr && kind.fold(*at) == fold; at = lines_.next(kind, fold, *at, spot))
        if (key == nullptr || vtable_->keyLessThan(key, objectAt(at), nullptr)) return objectAt(at);
    return nullptr;
}

PtrInterface* HashMapGeneric::findNextG(const PtrInterface* current, int* bucket) const {
    const MemberKind kind = this->kind();
    Lines::Spot spot;
    PtrInterface* const next =
        objectAt(current == nullptr
                     ? lines_.first(kind)
                     : lines_.next(kind, kind.fold(addressOf(current)), addressOf(current), spot));
    if (next != nullptr) *bucket = static_cast<int>(vtable_->hash(next));
    return next;
}

PtrInterface* HashMapGeneric::findNextBucket(int* bucket) const {
    const U32 hash = static_cast<U32>(*bucket) + 1; // 0 behind the last of all hashes
    Lines::Spot spot;
    PtrInterface* const next = hash != 0 ? objectAt(lines_.notBelow(kind(), hash, spot)) : nullptr;
    if (next != nullptr) *bucket = static_cast<int>(vtable_->hash(next));
    return next;
}

void HashMapGeneric::setSize0(unsigned members) { lines_.reserve(kind(), members); }

unsigned HashMapGeneric::auditErrors(unsigned) const { return lines_.auditErrors(kind()); }

} // namespace Vel
