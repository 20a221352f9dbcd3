// VelType.h - run-time description of one type: its names, its base, its attributes, and how to
// wrap a value of it.
//
// Names:    name() is the short one, "DeviceId"; qualifiedName() has the namespace,
//           "Net::DeviceId", and is what typeNode() finds.
// Bases:    an attribute of a base is visible in every type that refines it, whichever of the two
//           is registered first. A type may have the attributes of another that is not its base,
//           without being of its kind: inheritsFrom().
// Lifetime: that of the process.
// Threads:  written while one thread registers; reading is free for all after that.
// Errors:   what a type cannot be wrapped in, or be made from, throws ReflectionException.
#pragma once

#include <Vel/Arguments.h>
#include <Vel/AttributeId.h>
#include <Vel/Export.h>
#include <Vel/Name.h>
#include <Vel/Ptr.h>
#include <Vel/PtrInterface.h>
#include <Vel/String8.h>
#include <Vel/VelAttr.h>
#include <Vel/detail/AttributeTable.h>
#include <cstddef>
#include <span>

namespace Vel {

class GenericIf;

// What a type is; nothing of it is set before the type is registered.
struct VelTypeFlags {
    bool isValue = false;             // copied, compared and printed as a whole
    bool isEnumType = false;          // an enumeration
    bool hasGenericIfSupport = false; // the genericIf() functions work

    constexpr bool operator==(const VelTypeFlags&) const noexcept = default;
};

class VEL_API VelType : public PtrInterface {
public:
    // shortName: borrowed, see Name.h. `scope` is the type that this one is nested in, null for
    // none.
    VelType(Name shortName, VelType* base, VelType* scope, const VelTypeFlags& flags);
    ~VelType() override;

    Name name() const noexcept { return shortName_; }

    // The short name until the type is bound to its qualified one.
    Name qualifiedName() const noexcept { return qualifiedName_; }

    VelType* base() const noexcept { return base_; }

    // The type whose attributes are found behind its own: its base, or one that it extends; null
    // for none.
    VelType* inheritsFrom() const noexcept { return inheritsFrom_; }

    VelType* scope() const noexcept { return scope_; }

    // Whether this is `other` or refines it. O(depth).
    bool isKindOf(const VelType* other) const noexcept;

    const VelTypeFlags& flags() const noexcept { return flags_; }

    bool isValue() const noexcept { return flags_.isValue; }

    bool isEnumType() const noexcept { return flags_.isEnumType; }

    bool hasGenericIfSupport() const noexcept { return flags_.hasGenericIfSupport; }

    void isValueIs(bool isValue) noexcept { flags_.isValue = isValue; }

    void isEnumTypeIs(bool isEnumType) noexcept { flags_.isEnumType = isEnumType; }

    void hasGenericIfSupportIs(bool has) noexcept { flags_.hasGenericIfSupport = has; }

    // Of an instance, in bytes; 0 until the type is registered.
    std::size_t size() const noexcept { return size_; }

    void sizeIs(std::size_t bytes) noexcept { size_ = bytes; }

    const Arguments& constructorArguments() const noexcept { return constructorArguments_; }

    void constructorArgNameQEnq(Name name) { constructorArguments_.nameEnq(name); }

    void constructorArgTypeQEnq(Name typeName) { constructorArguments_.typeNameEnq(typeName); }

    void constructorArgDelAll() noexcept { constructorArguments_.deleteAll(); }

    // Its own attributes, by id, the key attribute last.
    std::span<VelAttr* const> attrs() const noexcept { return attributes_.all(); }

    // An attribute of this type or, behind its own, of those it inherits from; null if there is
    // none. One probe a type.
    VelAttr* attr(Name name) const noexcept {
        const NameKey key(name);
        const VelType* type = this;
        do {
            if (VelAttr* const attr = type->attributes_.find(key)) return attr;
        } while ((type = type->inheritsFrom_) != nullptr);
        return nullptr;
    }

    VelAttr* attr(AttributeId id) const noexcept;

    // Adds an attribute, in the place of one of the same name if there is one.
    VelAttr* attrIs(Name name, const Ptr<VelType>& type, VelAttr* keyAttr, VelAttr* valueAttr,
                    const VelAttr::AttrFlags& flags, AttributeId id);

    // Removes an attribute of its own; says whether there was one.
    bool attrDel(Name name);

    // The attribute that is the whole of a value with one field; null for any other type.
    // Found by its name each time: it may be that of a base which is registered later.
    VelAttr* valueAttr() const noexcept { return attr(valueAttrName_); }

    void valueAttrNameIs(Name name) noexcept { valueAttrName_ = name; }

    // Binds a type to its qualified name, which is borrowed. Another type under that name is a
    // fatal assertion.
    static void typeNodeIs(VelType* type, Name qualifiedName);
    // The type of that qualified name; null if no module that is loaded has one.
    static VelType* typeNode(Name qualifiedName);

    // An adapter of a copy of the value at the address; of the object there, for a class of counted
    // objects.
    virtual Ptr<GenericIf> genericIf(const void* value, bool isConst) const;
    // Of the value that the whole text is. Throws Vel::RangeException, "junk at column %lld
    // deserializing %s" if something is left. A text that names a collection is a fatal assertion:
    // see genericIfOfForeignText().
    virtual Ptr<GenericIf> genericIf(const String8& text, bool isConst) const;

    // The same: a literal is a text, not an address.
    Ptr<GenericIf> genericIf(const char* text, bool isConst) const;
    // Of what another adapter of the same type holds, or of a refinement; null for an adapter of
    // another type.
    virtual Ptr<GenericIf> genericIf(const GenericIf* other, bool isConst) const;
    Ptr<GenericIf> genericIf(GenericIf* other, bool isConst);
    // Of an object of this class, which it keeps alive; null for none. Refused by a type that is no
    // class of objects.
    virtual Ptr<GenericIf> genericIf(PtrInterface* object, bool isConst);
    // Of a new instance from constructor arguments, a GenericIf::List; throws naming the argument
    // that is missing, of another type, or too many.
    virtual Ptr<GenericIf> genericIfListConstructor(const GenericIf* arguments) const;
    // Of a default value; of no object.
    virtual Ptr<GenericIf> newGenericIf() const;
    // As genericIf(text), for a text of which nobody knows who has written it: one that names a
    // collection, there a fatal assertion, is refused with Vel::RangeException, which names the
    // type and the attribute.
    virtual Ptr<GenericIf> genericIfOfForeignText(const String8& text, bool isConst) const;

protected:
    void qualifiedNameIs(Name name) noexcept { qualifiedName_ = name; }

    // For a type that has the attributes of another that is not its base.
    void inheritsFromIs(VelType* type) noexcept { inheritsFrom_ = type; }

private:
    Name shortName_;
    Name qualifiedName_;
    VelType* base_;
    VelType* inheritsFrom_;
    VelType* scope_;
    Name valueAttrName_;
    std::size_t size_ = 0;
    VelTypeFlags flags_;
    Arguments constructorArguments_;
    detail::AttributeTable attributes_;
};

} // namespace Vel
