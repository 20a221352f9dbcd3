// VelAttr.h - run-time description of one attribute of a type: its name, its id, what its value is,
// how it may be used.
//
// Lifetime: that of its type, so of the process, also when another attribute has taken its place:
//           what was looked up once stays valid.
// Threads:  written while one thread registers; reading is free for all after that.
#pragma once

#include <Vel/Arguments.h>
#include <Vel/AttributeId.h>
#include <Vel/Export.h>
#include <Vel/Integers.h>
#include <Vel/Name.h>
#include <Vel/PtrInterface.h>

namespace Vel {

class VelType;

class VEL_API VelAttr : public PtrInterface {
public:
    // What an attribute is. An attribute is one of the first six, and may be what follows beside
    // it.
    class AttrFlags {
    public:
        enum Flag : U16 {
            stored = 1,      // held by the object
            computed = 2,    // a value that the object gives
            constant = 4,    // a value of the class
            function = 8,    // takes arguments, or acts
            collection = 16, // values by key
            enumerator = 32, // a name of an enumeration; its id is its number
            key = 64,        // what a collection finds its member by
            writable = 128,  // has a writer
            changing = 256,  // a function that changes its object
        };

        constexpr AttrFlags() noexcept = default;

        constexpr AttrFlags(Flag flag) noexcept : bits_(flag) {}

        constexpr bool has(Flag flag) const noexcept { return (bits_ & flag) != 0; }

        constexpr AttrFlags operator|(AttrFlags other) const noexcept {
            AttrFlags both;
            both.bits_ = static_cast<U16>(bits_ | other.bits_);
            return both;
        }

        constexpr bool operator==(const AttrFlags&) const noexcept = default;

    private:
        U16 bits_ = 0;
    };

    // What the framework shows: 2 a stored attribute, 8 a computed value or a procedure, 0 anything
    // else.
    using VelAttrIntrospectionFlags = U8;

    // `type` is null for what has no value; `keyAttr` is the attribute of a member by which its
    // collection finds it, and `valueAttr` the one that stands for the member's value; null where
    // there is none.
    VelAttr(Name name, VelType* type, VelAttr* keyAttr, VelAttr* valueAttr, AttrFlags flags,
            AttributeId id) noexcept;
    ~VelAttr() override;

    Name name() const noexcept { return name_; }

    AttributeId id() const noexcept { return id_; }

    // Of the value; of one value of a collection; of a function's result. Null for none.
    VelType* type() const noexcept { return type_; }

    const AttrFlags& flags() const noexcept { return flags_; }

    VelAttrIntrospectionFlags introspection() const noexcept { return introspection_; }

    void introspectionIs(VelAttrIntrospectionFlags flags) noexcept { introspection_ = flags; }

    VelAttr* keyAttr() const noexcept { return keyAttr_; }

    VelAttr* valueAttr() const noexcept { return valueAttr_; }

    // Of a collection's key; null for any other attribute.
    VelType* keyType() const noexcept { return keyType_; }

    void keyTypeIs(VelType* type) noexcept { keyType_ = type; }

    // The type that declares the attribute; null until a type has it.
    VelType* scope() const noexcept { return scope_; }

    void scopeIs(VelType* type) noexcept { scope_ = type; }

    // Of a function; of the constructor of a collection's member.
    const Arguments& arguments() const noexcept { return arguments_; }

    void argNameQEnq(Name name) { arguments_.nameEnq(name); }

    void argTypeQEnq(Name typeName) { arguments_.typeNameEnq(typeName); }

private:
    Name name_;
    VelType* type_;
    VelAttr* keyAttr_;
    VelAttr* valueAttr_;
    VelType* keyType_ = nullptr;
    VelType* scope_ = nullptr;
    AttributeId id_;
    AttrFlags flags_;
    VelAttrIntrospectionFlags introspection_ = 0;
    Arguments arguments_;
};

} // namespace Vel
