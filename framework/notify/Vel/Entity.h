// Entity.h - a counted object with a name and a place in a tree.
//
// Owns:    nothing of the tree: who holds a child (usually a collection of its parent) owns it. A
//          parent that dies leaves its children without a parent; a child that dies leaves its
//          parent.
// Names:   any bytes. fullName() joins the names from the root down with "/", for people; uriPath()
//          is the same as an absolute path with everything but letters, digits and - . _ ~ as %XX
//          (RFC 3986), so that it names one place whatever the names are.
// Cost:    parentIs() O(depth) for the check against cycles; child() O(children); leaving a parent,
//          also by dying, O(1).
// Threads: one at a time for a tree.
#pragma once

#include <Vel/AttributeId.h>
#include <Vel/Export.h>
#include <Vel/Ptr.h>
#include <Vel/PtrInterface.h>
#include <Vel/String8.h>
#include <string_view>

namespace Vel {

class VelAttr;

class VEL_API Entity : public PtrInterface {
public:
    explicit Entity(String8 name) noexcept;
    Entity(const Entity&) = delete;
    Entity& operator=(const Entity&) = delete;
    ~Entity() override;

    const String8& name() const noexcept { return name_; }

    // Null for a root.
    Ptr<const Entity> parent() const noexcept { return parent_; }

    Ptr<Entity> parent() noexcept { return parent_; }

    // "system/card/table"
    String8 fullName() const;

    // "/system/card/table"
    String8 uriPath() const;

    // The attribute of the parent's type under which this is found; null without parent, or if its
    // type has no such attribute.
    VelAttr* parentAttr() const noexcept;

    // 0 until it is set.
    AttributeId parentAttrId() const noexcept { return parentAttrId_; }

    void parentAttrIdIs(AttributeId id) noexcept { parentAttrId_ = id; }

    // Moves this, and what is below it, to another parent, or out of the tree with null; then calls
    // handleParent(). A parent that lies below this, or is this, is a fatal assertion.
    void parentIs(const Ptr<Entity>& parent);

    // The first child of that name; null if there is none.
    Ptr<Entity> child(std::string_view name) const;

    // What lies at a path as uriPath() writes it, if this is the root of that path; null if there
    // is nothing.
    Ptr<Entity> find(std::string_view uriPath);

    // Looks at its own links and those of its children. O(children).
    unsigned auditErrors(unsigned level) const override;

    // The process-wide root, from which references in texts are resolved (sequenceToValueOfPtr.h).
    // Null until it is set.
    static Ptr<Entity> root();
    static void rootIs(const Ptr<Entity>& root);

protected:
    // The parent has changed. Does nothing unless overridden.
    virtual void handleParent(const Ptr<Entity>& parent);

private:
    void joinParent(Entity& parent) noexcept;
    void leaveParent() noexcept;

    String8 name_;
    Entity* parent_ = nullptr;
    Entity* firstChild_ = nullptr;
    Entity* nextSibling_ = nullptr;
    Entity** link_ =
        nullptr; // the parent's or the sibling's pointer to this; null without a parent
    AttributeId parentAttrId_ = 0;
};

} // namespace Vel
