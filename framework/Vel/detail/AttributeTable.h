// AttributeTable.h - the attributes of one type: in order, by name with one probe of a hash table, by id with one look into
// an array.
//
// Order: by id, the key attribute behind all others.
// Owns:  a reference to each that was ever added: one that was removed stays valid for who has looked it up before.
#pragma once

#include <Vel/AttributeId.h>
#include <Vel/Integers.h>
#include <Vel/Name.h>
#include <Vel/Ptr.h>
#include <Vel/VelAttr.h>
#include <span>
#include <vector>

namespace Vel::detail {

class AttributeTable {
public:
    std::span<VelAttr* const> all() const noexcept { return attrs_; }

    VelAttr* find(Name name) const noexcept {
        if (slots_.empty()) return nullptr;
        for (U32 at = nameHash(name);; ++at) {
            VelAttr* const attr = slots_[at & (slots_.size() - 1)];
            if (attr == nullptr || attr->name() == name) return attr;
        }
    }

    VelAttr* find(AttributeId id) const noexcept { return id < byId_.size() ? byId_[id] : nullptr; }

    // No attribute of that name, and none of that id, is there.
    void add(VelAttr& attr);
    // False if there is none.
    bool remove(Name name);

private:
    void index();

    std::vector<Ptr<VelAttr>> owned_;
    std::vector<VelAttr*> attrs_;
    std::vector<VelAttr*> slots_; // by nameHash, open addressing; a power of two, at most half full
    std::vector<VelAttr*> byId_;
};

} // namespace Vel::detail
