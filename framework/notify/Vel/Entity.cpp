#include <Vel/Entity.h>

#include <Vel/Assert.h>
#include <Vel/VelType.h>
#include <string>
#include <utility>

namespace Vel {

namespace {

constinit Entity* processRoot = nullptr; // holds one reference

bool isUnreserved(char c) noexcept {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '.' || c == '_' || c == '~';
}

std::string encoded(std::string_view name) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (const char c : name) {
        if (isUnreserved(c)) {
            text += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            text += {'%', digits[byte >> 4U], digits[byte & 0xfU]};
        }
    }
    return text;
}

} // namespace

Entity::Entity(String8 name) noexcept : name_(std::move(name)) {}

Entity::~Entity() {
    leaveParent();
    for (Entity* child = firstChild_; child != nullptr;) {
        child->parent_ = nullptr;
        child->link_ = nullptr;
        child = std::exchange(child->nextSibling_, nullptr);
    }
}

String8 Entity::fullName() const {
    String8 path = name_;
    for (const Entity* at = parent_; at != nullptr; at = at->parent_) path = at->name_ + "/" + path;
    return path;
}

String8 Entity::uriPath() const {
    std::string path;
    // A character, not "/": GCC 12 warns of a text inserted before another (-O2 and above,
    // -Wrestrict).
    for (const Entity* at = this; at != nullptr; at = at->parent_)
        path.insert(0, encoded(at->name_.view())).insert(0, 1, '/');
    return String8(path.c_str());
}

VelAttr* Entity::parentAttr() const noexcept {
    return parent_ != nullptr ? parent_->fwkType()->attr(parentAttrId_) : nullptr;
}

void Entity::parentIs(const Ptr<Entity>& parent) {
    for (const Entity* ancestor = parent.ptr(); ancestor != nullptr; ancestor = ancestor->parent_)
        VEL_ASSERT(ancestor != this);
    if (parent.ptr() == parent_) return;
    leaveParent();
    if (parent) joinParent(*parent);
    handleParent(parent);
}

void Entity::joinParent(Entity& parent) noexcept {
    parent_ = &parent;
    link_ = &parent.firstChild_;
    nextSibling_ = std::exchange(*link_, this);
    if (nextSibling_ != nullptr) nextSibling_->link_ = &nextSibling_;
}

void Entity::leaveParent() noexcept {
    if (parent_ == nullptr) return;
    *link_ = nextSibling_;
    if (nextSibling_ != nullptr) nextSibling_->link_ = link_;
    parent_ = nextSibling_ = nullptr;
    link_ = nullptr;
}

unsigned Entity::auditErrors(unsigned level) const {
    unsigned errors = PtrInterface::auditErrors(level);
    if (parent_ != nullptr ? link_ == nullptr || *link_ != this
                           : link_ != nullptr || nextSibling_ != nullptr)
        ++errors;
    for (const Entity* const* link = &firstChild_; *link != nullptr; link = &(*link)->nextSibling_)
        if ((*link)->parent_ != this || (*link)->link_ != link) ++errors;
    return errors;
}

void Entity::handleParent(const Ptr<Entity>&) {}

Ptr<Entity> Entity::child(std::string_view name) const {
    for (Entity* at = firstChild_; at != nullptr; at = at->nextSibling_)
        if (at->name_.view() == name) return at;
    return nullptr;
}

Ptr<Entity> Entity::find(std::string_view uriPath) {
    const auto segment = [&uriPath] {
        uriPath.remove_prefix(1);
        const std::string_view first = uriPath.substr(0, uriPath.find('/'));
        uriPath.remove_prefix(first.size());
        return first;
    };
    if (!uriPath.starts_with('/') || encoded(name_.view()) != segment()) return nullptr;
    Entity* at = this;
    while (at != nullptr && !uriPath.empty()) {
        const std::string_view name = segment();
        at = at->firstChild_;
        while (at != nullptr && encoded(at->name_.view()) != name) at = at->nextSibling_;
    }
    return at;
}

Ptr<Entity> Entity::root() { return processRoot; }

void Entity::rootIs(const Ptr<Entity>& root) {
    if (root) root->referencesInc();
    if (Entity* const old = std::exchange(processRoot, root.ptr())) old->referencesDec();
}

} // namespace Vel
