#include <Vel/detail/AttributeTable.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <utility>

namespace Vel::detail {

namespace {

bool standsBefore(const VelAttr* a, const VelAttr* b) noexcept {
    const auto place = [](const VelAttr* attr) {
        return std::pair(attr->flags().has(VelAttr::AttrFlags::key), attr->id());
    };
    return place(a) < place(b);
}

} // namespace

void AttributeTable::add(VelAttr& attr) {
    owned_.emplace_back(&attr);
    attrs_.insert(std::ranges::upper_bound(attrs_, &attr, standsBefore), &attr);
    index();
}

bool AttributeTable::remove(Name name) {
    VelAttr* const attr = find(name);
    if (attr == nullptr) return false;
    attrs_.erase(std::ranges::find(attrs_, attr));
    index();
    return true;
}

// A type has a few attributes and is registered once: building both tables anew keeps them plain.
void AttributeTable::index() {
    slots_.assign(std::bit_ceil(2 * attrs_.size()), nullptr);
    byId_.clear();
    for (VelAttr* const attr : attrs_) {
        U32 at = nameHash(attr->name());
        while (slots_[at & (slots_.size() - 1)] != nullptr) ++at;
        slots_[at & (slots_.size() - 1)] = attr;
        if (attr->id() >= byId_.size()) byId_.resize(std::size_t{attr->id()} + 1, nullptr);
        if (byId_[attr->id()] == nullptr) byId_[attr->id()] = attr;
    }
}

} // namespace Vel::detail
