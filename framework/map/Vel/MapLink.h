// MapLink.h - base of every object that can be a member of a HashMapGeneric: a counted object with the chain's link.
//
// Owns:    one reference to the next member of its chain. An object that is in no map has no next.
// Rules:   an object is in at most one map at a time, for there is one link. While it is in a map, the map alone writes
//          the link, and the object's key does not change.
// Copying: copies no link: the copy is in no map.
// Test: HashMapGeneric_test.cpp.
#pragma once

#include <Vel/PtrInterface.h>
#include <utility>

namespace Vel {

namespace detail {
class EqualHashes;
class OrderedBuckets;
} // namespace detail

class MapLink : public PtrInterface {
public:
    // The next member of the same chain, null for the last one. A chain is not the map, only what a full bucket or one of
    // equal hashes could not seat itself: HashMapGeneric::findNextG() goes from member to member.
    MapLink* fwkNext() const noexcept { return next_; }

    // Counts as Ptr::ptrAssign does: the new reference is taken before the old one is dropped.
    void fwkNextIs(MapLink* next) {
        if (next == next_) return;
        if (next != nullptr) next->referencesInc();
        MapLink* old = std::exchange(next_, next);
        if (old != nullptr) old->referencesDec();
    }

protected:
    MapLink() noexcept = default;

    MapLink(const MapLink& other) noexcept : PtrInterface(other) {}

    MapLink& operator=(const MapLink&) noexcept { return *this; }

    ~MapLink() override {
        if (next_ != nullptr) next_->referencesDec();
    }

private:
    // They move the link's reference without touching its count.
    friend class detail::EqualHashes;
    friend class detail::OrderedBuckets;

    MapLink* next_ = nullptr;
};

} // namespace Vel
