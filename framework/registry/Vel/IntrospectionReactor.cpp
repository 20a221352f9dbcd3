#include <Vel/IntrospectionReactor.h>

#include <Vel/Assert.h>
#include <Vel/detail/environment.h>
#include <algorithm>

namespace Vel {

namespace {

bool activeByEnvironment() noexcept {
    const char* const word = detail::fromEnvironment("VEL_INTROSPECTION");
    return word == nullptr || Name(word) != "off";
}

// Never destroyed: modules may register until the process ends.
Ptr<IntrospectionReactor>& globalReactor() {
    static auto* const reactor = new Ptr<IntrospectionReactor>(new IntrospectionReactor);
    return *reactor;
}

} // namespace

IntrospectionReactor::IntrospectionReactor() : active_(activeByEnvironment()) {}

IntrospectionReactor::~IntrospectionReactor() = default;

const Ptr<IntrospectionReactor>& IntrospectionReactor::global() { return globalReactor(); }

void IntrospectionReactor::globalIs(const Ptr<IntrospectionReactor>& reactor) {
    VEL_ASSERT(reactor != nullptr);
    globalReactor() = reactor;
}

void IntrospectionReactor::handleNameSpace(const char* name) { scopes_.emplace_back(name); }

void IntrospectionReactor::handleType(const Ptr<const VelType>& type, const Ptr<const VelType>&) {
    scopes_.push_back(type->name());
    VEL_ASSERT(openScope() == type->qualifiedName());
    if (std::ranges::find(types_, type.ptr()) == types_.end()) types_.push_back(type.ptr());
}

void IntrospectionReactor::handleScopeExit() {
    VEL_ASSERT(!scopes_.empty());
    scopes_.pop_back();
}

VelAttr* IntrospectionReactor::defNoninstantiatingAttr(
    const Ptr<VelType>&, Name name, const Ptr<VelType>& attrType, const Ptr<VelType>& scopeType,
    VelAttr::AttrFlags flags, VelAttr::VelAttrIntrospectionFlags introspection, AttributeId id) {
    VelAttr* const attr = scopeType->attrIs(name, attrType, nullptr, nullptr, flags, id);
    attr->introspectionIs(introspection);
    return attr;
}

void IntrospectionReactor::handleAttr(const Ptr<VelAttr>& attr) {
    VEL_ASSERT(!attrContext_ && attr != nullptr);
    attrContext_ = true;
}

void IntrospectionReactor::handleAttrContextExit() {
    VEL_ASSERT(attrContext_);
    attrContext_ = false;
}

std::string IntrospectionReactor::openScope() const {
    std::string joined;
    for (const Name scope : scopes_) {
        if (!joined.empty()) joined += "::";
        joined += scope;
    }
    return joined;
}

} // namespace Vel
