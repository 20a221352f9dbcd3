#include <Vel/VelType.h>

#include <Vel/Assert.h>
#include <Vel/Module.h>
#include <Vel/detail/builtinTypes.h>
#include <string>
#include <unordered_map>

namespace Vel {

namespace {

using TypeNodes = std::unordered_map<Name, VelType*>;

TypeNodes* nodesOfBuiltins() {
    auto* const nodes = new TypeNodes;
    for (VelType* const type : detail::builtinTypes()) nodes->emplace(type->qualifiedName(), type);
    return nodes;
}

// Never destroyed: types are looked up until the process ends. Written by what loads modules alone.
TypeNodes& typeNodes() {
    static TypeNodes* const nodes = nodesOfBuiltins();
    return *nodes;
}

} // namespace

VelType::VelType(Name shortName, VelType* base, VelType* scope, const VelTypeFlags& flags)
    : shortName_(shortName), qualifiedName_(shortName), base_(base), inheritsFrom_(base),
      scope_(scope), flags_(flags) {}

VelType::~VelType() = default;

bool VelType::isKindOf(const VelType* other) const noexcept {
    const VelType* type = this;
    while (type != nullptr && type != other) type = type->base_;
    return type != nullptr;
}

VelAttr* VelType::attr(AttributeId id) const noexcept {
    for (const VelType* type = this; type != nullptr; type = type->inheritsFrom_)
        if (VelAttr* const attr = type->attributes_.find(id)) return attr;
    return nullptr;
}

VelAttr* VelType::attrIs(Name name, const Ptr<VelType>& type, VelAttr* keyAttr, VelAttr* valueAttr,
                         const VelAttr::AttrFlags& flags, AttributeId id) {
    attrDel(name);
    const Ptr<VelAttr> attr = new VelAttr(name, type.ptr(), keyAttr, valueAttr, flags, id);
    attr->scopeIs(this);
    attributes_.add(*attr);
    return attr.ptr();
}

bool VelType::attrDel(Name name) { return attributes_.remove(name); }

void VelType::typeNodeIs(VelType* type, Name qualifiedName) {
    const auto [node, isNew] = typeNodes().try_emplace(qualifiedName, type);
    const std::string terminated(qualifiedName);
    const char* const name = terminated.c_str();
    VEL_ASSERT_AS("no two types have one name", node->second == type, name);
    if (isNew) type->qualifiedName_ = qualifiedName;
}

VelType* VelType::typeNode(Name qualifiedName) {
    Module::bindPending();
    const auto node = typeNodes().find(qualifiedName);
    return node != typeNodes().end() ? node->second : nullptr;
}

} // namespace Vel
