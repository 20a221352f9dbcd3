#include <Vel/VelType.h>

namespace Vel {

VelType::~VelType() = default;

void VelType::attrIs(const Ptr<VelAttr>& attr) {
    for (Ptr<VelAttr>& old : attrs_) {
        if (std::string_view(old->name()) == attr->name()) {
            old = attr;
            return;
        }
    }
    attrs_.push_back(attr);
}

VelAttr* VelType::attr(std::string_view name) const noexcept {
    for (const VelType* type = this; type != nullptr; type = type->base_)
        for (const Ptr<VelAttr>& attr : type->attrs_)
            if (name == attr->name()) return attr.ptr();
    return nullptr;
}

VelAttr* VelType::attr(AttributeId id) const noexcept {
    for (const VelType* type = this; type != nullptr; type = type->base_)
        for (const Ptr<VelAttr>& attr : type->attrs_)
            if (attr->id() == id) return attr.ptr();
    return nullptr;
}

} // namespace Vel
