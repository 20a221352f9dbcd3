// MapLink.h - base of every object that can be a member of a HashMapGeneric: a counted object with
// a link to another.
//
// Rules:   an object is in at most one map at a time. While it is in a map its key does not change.
// Link:    owns one reference to the next. Maps need none (docs/map.md): it is for who chains
//          objects by the vtable's setNext.
// Copying: copies no link: the copy is in no map.
// Test: HashMapGeneric_test.cpp.
// ABI:     layout: PtrInterface's, and one pointer.
#pragma once

#include <Vel/PtrInterface.h>
#include <utility>

namespace Vel {

class MapLink : public PtrInterface {
public:
    // The next of a chain; null for the last one, and for who is in none.
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
    MapLink* next_ = nullptr;
};

} // namespace Vel
