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
    VelAttr* const attr = find(NameKey(name));
    if (attr == nullptr) return false;
    attrs_.erase(std::ranges::find(attrs_, attr));
    index();
    return true;
}

// A type has a few attributes and is registered once: building both tables anew keeps them plain.
void AttributeTable::index() {
    const std::size_t count = std::max<std::size_t>(2, std::bit_ceil(2 * attrs_.size()));
    hashShift_ = static_cast<U32>(32 - std::countr_zero(count));
    slots_ = std::make_unique<Slot[]>(count + attrs_.size());
    byId_.clear();
    for (VelAttr* const attr : attrs_) {
        const NameKey key(attr->name());
        Slot* slot = slots_.get() + (key.hash() >> hashShift_);
        while (slot->attr != nullptr) ++slot;
        *slot = {key, attr};
        if (attr->id() >= byId_.size()) byId_.resize(std::size_t{attr->id()} + 1, nullptr);
        if (byId_[attr->id()] == nullptr) byId_[attr->id()] = attr;
    }
}

} // namespace Vel::detail
