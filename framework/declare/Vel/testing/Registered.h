// Registered.h - how a type is registered, in lines that a test writes out by hand. Not installed.
//
//     EXPECT_EQ(registered("Net::Port"), "value(value: U16)\n"
//                                        "2 value: U16; stored\n"
//                                        "4 null: U16\n");
//
// First line: value, enumeration or entity; "of" the type that a value refines; the arguments of
//             the constructor.
// Then:       a line for each attribute of its own: id, name, [key] of a collection, (arguments) of
//             a function or of a member's constructor, type, and what it is shown as.
#pragma once

#include <Vel/Arguments.h>
#include <Vel/Name.h>
#include <Vel/VelAttr.h>
#include <Vel/VelType.h>
#include <Vel/value/Attribute.h>
#include <cstddef>
#include <string>

namespace Vel::Testing {

inline std::string inParentheses(const Arguments& arguments) {
    std::string text;
    for (std::size_t i = 0; i < arguments.size(); ++i)
        text.append(i == 0 ? "(" : ", ")
            .append(arguments.name(i))
            .append(": ")
            .append(arguments.typeName(i));
    if (!text.empty()) text.append(")");
    return text;
}

inline std::string registered(const VelAttr& attr) {
    std::string text = std::to_string(attr.id());
    text.append(" ").append(attr.name());
    if (attr.keyType() != nullptr) {
        text.append("[");
        if (attr.keyAttr() != nullptr) text.append(attr.keyAttr()->name()).append(": ");
        text.append(attr.keyType()->qualifiedName()).append("]");
    }
    text.append(inParentheses(attr.arguments()));
    if (attr.type() != nullptr) text.append(": ").append(attr.type()->qualifiedName());
    if (attr.introspection() == Introspection::stored) text.append("; stored");
    if (attr.introspection() == Introspection::procedural) text.append("; procedural");
    return text.append("\n");
}

inline std::string registered(const VelType& type) {
    const bool isValue = type.isValue();
    std::string text = isValue ? "value" : type.isEnumType() ? "enumeration" : "entity";
    if (isValue && type.base() != nullptr) text.append(" of ").append(type.base()->qualifiedName());
    text.append(inParentheses(type.constructorArguments())).append("\n");
    for (const VelAttr* const attr : type.attrs()) text.append(registered(*attr));
    return text;
}

inline std::string registered(Name qualifiedName) {
    const VelType* const type = VelType::typeNode(qualifiedName);
    return type != nullptr ? registered(*type) : "is not registered\n";
}

} // namespace Vel::Testing
