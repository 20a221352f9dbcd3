// ResourceIdOf.h - what names a table or register of a device: its kind and a 64-bit number. The
// logical and the physical ids are each such a name; they have the same shape and no conversion
// between them.
//
// Order: by kind, as a signed number, then by number. Hash: one-at-a-time mix over 4 bytes of kind
//        and 8 of number.
// Size:  natural alignment: 12 bytes in 32-bit, 16 in 64-bit. Everything that leaves the process
//        goes field by field.
// Kinds: a refinement fixes the kind where it is built. Reading a text takes the kind that the text
//        gives, invalidResource if it gives none; printed texts always give it.
// Test: the tests of the six ids that it is the base of.
#pragma once

#include <Brixo/ResourceType.h>
#include <Vel/Integers.h>
#include <Vel/Value.h>
#include <string_view>

namespace Brixo {

// Base of the id type Id.
template <class Id>
class ResourceIdOf : public Vel::Value<Id> {
public:
    // invalidResource, number 0.
    constexpr ResourceIdOf() noexcept = default;

    constexpr ResourceIdOf(ResourceType type, Vel::U64 id) noexcept : type_(type), id_(id) {}

    constexpr ResourceType type() const noexcept { return type_; }

    constexpr Vel::U64 id() const noexcept { return id_; }

protected:
    static constexpr auto schemaNamed(std::string_view qualifiedName) {
        return Vel::valueSchema<Id>(qualifiedName)
            .stored(2, "type", &ResourceIdOf::type_)
            .stored(3, "id", &ResourceIdOf::id_)
            .hashedBy(Vel::Hash::byteMix, 4)
            .constructedFrom("type", "id");
    }

    ResourceType type_ = ResourceType::invalidResource;
    Vel::U64 id_ = 0;
};

// Base of Id, an AnyKind that is always built with the kind.
template <class Id, class AnyKind, ResourceType kind>
class ResourceIdOfKind : public Vel::Refinement<Id, AnyKind> {
public:
    constexpr explicit ResourceIdOfKind(Vel::U64 id) noexcept
        : Vel::Refinement<Id, AnyKind>(kind, id) {}

protected:
    // Of no kind: what is read begins so.
    constexpr ResourceIdOfKind() noexcept = default;

    static constexpr auto schemaNamed(std::string_view qualifiedName) {
        return Vel::schemaOf<AnyKind>.template refinedAs<Id>(qualifiedName).constructedFrom("id");
    }
};

} // namespace Brixo
