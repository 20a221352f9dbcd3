// TypeDescription.h - what a type's one declaration says of it, as constant data: the input of
// registration.
//
// Made by: describe<T>() in value/Describe.h, at compile time. Nothing is built until a module
//          registers.
// Test: Module_test.cpp.
#pragma once

#include <Vel/AttributeId.h>
#include <Vel/Export.h>
#include <Vel/Name.h>
#include <Vel/VelAttr.h>
#include <cstddef>
#include <span>

namespace Vel {

class IntrospectionReactor;
class VelType;

// Gives the descriptor of a type. Null where there is no value.
using TypeGetter = VelType* (*)();

struct ArgumentDescription {
    Name name;
    TypeGetter type;
};

struct AttributeDescription {
    Name name;
    AttributeId id;
    TypeGetter type;
    VelAttr::AttrFlags flags;
    VelAttr::VelAttrIntrospectionFlags introspection;
    TypeGetter keyType; // of a collection, else null
    Name keyAttribute;  // the member's, of a collection whose members hold their key; else empty
    std::span<const ArgumentDescription> arguments;

    // Whether the framework keeps arguments with it, or a key attribute.
    constexpr bool hasContext() const noexcept {
        return !arguments.empty() || !keyAttribute.empty();
    }
};

struct TypeDescription {
    Name qualifiedName;
    TypeGetter type;
    std::size_t size;
    bool isValue;
    bool isEnumType;
    bool hasValueAttribute; // whether its attribute "value", if there is one, is the whole value
    std::span<const ArgumentDescription> constructor;
    std::span<const AttributeDescription> attributes; // its own, by id, the key attribute last

    // "Net" of "Net::DeviceId"; empty for a type outside of every namespace.
    constexpr Name nameSpace() const noexcept {
        const std::size_t colon = qualifiedName.rfind("::");
        return colon == Name::npos ? Name() : qualifiedName.substr(0, colon);
    }
};

// Registers one type in the scope that is open.
VEL_API void registerType(IntrospectionReactor& reactor, const TypeDescription& description);

} // namespace Vel
