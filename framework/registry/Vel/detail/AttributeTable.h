// AttributeTable.h - the attributes of one type: in order, by name with one probe of a hash table,
// by id with one look into an array.
//
// Order: by id, the key attribute behind all others.
// Owns:  a reference to each that was ever added: one that was removed stays valid for who has
//        looked it up before.
// ABI:   layout, within VelType; find() is compiled into clients.
// Test: VelType_test.cpp.
#pragma once

#include <Vel/AttributeId.h>
#include <Vel/Integers.h>
#include <Vel/Name.h>
#include <Vel/Ptr.h>
#include <Vel/VelAttr.h>
#include <memory>
#include <span>
#include <vector>

namespace Vel::detail {

class AttributeTable {
public:
    std::span<VelAttr* const> all() const noexcept { return attrs_; }

    VelAttr* find(const NameKey& key) const noexcept {
        if (slots_ == nullptr) return nullptr;
        const Slot* slot = slots_.get() + (key.hash() >> hashShift_);
        while (slot->attr != nullptr && slot->key != key) ++slot;
        return slot->attr;
    }

    VelAttr* find(AttributeId id) const noexcept { return id < byId_.size() ? byId_[id] : nullptr; }

    // No attribute of that name, and none of that id, is there.
    void add(VelAttr& attr);
    // False if there is none.
    bool remove(Name name);

private:
    struct Slot {
        NameKey key;
        VelAttr* attr = nullptr;
    };

    void index();

    std::vector<Ptr<VelAttr>> owned_;
    std::vector<VelAttr*> attrs_;
    // By NameKey::hash(), open addressing: a power of two for the hash to name, at most half full,
    // and behind them as many as there are attributes, so that a search never turns around; the
    // last is empty.
    std::unique_ptr<Slot[]> slots_;
    U32 hashShift_ = 0;
    std::vector<VelAttr*> byId_;
};

} // namespace Vel::detail
