#include <Vel/detail/EqualHashes.h>

#include <Vel/detail/OrderedBuckets.h>
#include <utility>

namespace Vel::detail {

EqualHashes::EqualHashes(const HashMapVTableGeneric& vtable, U32 fold, const MapLink* member)
    : SubBuckets(fold, allBits), tree_(Before{&vtable}) {
    if (U32 rank = 0; vtable.keyRank(nullptr, member, rank))
        ranked_ = std::make_unique<OrderedBuckets>();
}

EqualHashes::~EqualHashes() {
    for (MapLink* at = std::exchange(head_, nullptr); at != nullptr;) {
        MapLink* const member = std::exchange(at, at->next_);
        member->next_ = nullptr;
        member->referencesDec();
    }
}

U32 EqualHashes::size() const noexcept {
    return ranked_ != nullptr ? ranked_->size() : static_cast<U32>(tree_.size());
}

MapLink* EqualHashes::find(const void* key) const {
    if (ranked_ != nullptr) {
        U32 rank = 0;
        vtable().keyRank(key, nullptr, rank);
        return ranked_->find(rankOps(), bitReverse(rank), key, [](const MapLink*) { return true; });
    }
    auto place = tree_.upper_bound(key);
    return place == tree_.begin() ? nullptr : *--place;
}

MapLink*& EqualHashes::linkTo(Tree::iterator place) noexcept {
    return place == tree_.begin() ? head_ : (*std::prev(place))->next_;
}

MapLink* EqualHashes::add(MapLink* member) {
    if (ranked_ != nullptr) {
        const VTableOps ops = rankOps();
        return ranked_->add(ops, ops.fold(member), member);
    }
    const std::size_t before = tree_.size();
    // Those that come to a new index come in order. May throw: nothing has changed.
    const auto place = tree_.insert(tree_.end(), member);
    member->referencesInc();
    MapLink*& link = linkTo(place);
    if (tree_.size() != before) {
        member->next_ = std::exchange(link, member);
        return nullptr;
    }
    MapLink* const replaced = std::exchange(link, member);
    member->next_ = std::exchange(replaced->next_, nullptr);
    const_cast<MapLink*&>(*place) = member; // equal keys: the tree's order stands
    return replaced;
}

bool EqualHashes::remove(MapLink* member) noexcept {
    if (ranked_ != nullptr) return ranked_->remove(rankOps(), member);
    const auto place = tree_.find(member);
    if (place == tree_.end() || *place != member) return false;
    linkTo(place) = std::exchange(member->next_, nullptr);
    tree_.erase(place);
    return true;
}

MapLink* EqualHashes::takeAll() noexcept {
    if (ranked_ != nullptr) {
        MapLink** end = &head_;
        while (MapLink* const first = ranked_->first()) {
            ranked_->remove(rankOps(), first);
            *end = first;
            end = &first->next_;
        }
    }
    tree_.clear();
    return std::exchange(head_, nullptr);
}

std::size_t EqualHashes::heapBytes() const noexcept {
    constexpr std::size_t nodeBytes = 5 * sizeof(void*); // colour, three links, value
    const std::size_t ranks = ranked_ != nullptr ? sizeof(*ranked_) + ranked_->heapBytes() : 0;
    return sizeof(*this) + ranks + tree_.size() * nodeBytes;
}

} // namespace Vel::detail
