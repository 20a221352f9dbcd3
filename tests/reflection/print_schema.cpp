// Prints every registered type as Markdown: docs/schema.md. Sizes are left out, since they differ
// between word sizes.
#include <Brixo/BrixoTypesModule.h>
#include <Vel/GenericIf.h>
#include <Vel/IntrospectionReactor.h>
#include <Vel/VelAttr.h>
#include <Vel/VelType.h>
#include <iostream>
#include <string>

namespace {

using Flags = Vel::VelAttr::AttrFlags;

std::string code(Vel::Name name) { return "`" + std::string(name) + "`"; }

std::string signature(const Vel::Arguments& arguments) {
    std::string text;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (i != 0) text += ", ";
        text += code(arguments.name(i)) + ": " + code(arguments.typeName(i));
    }
    return text;
}

std::string kind(const Vel::VelAttr& attr) {
    const Flags& flags = attr.flags();
    std::string text;
    if (flags.has(Flags::key))
        text = "key";
    else if (flags.has(Flags::enumerator))
        text = "enumerator";
    else if (flags.has(Flags::constant))
        text = "constant";
    else if (flags.has(Flags::function))
        text = attr.arguments().empty() ? "procedure" : "function";
    else if (flags.has(Flags::collection))
        text = "collection by " +
               (attr.keyAttr() != nullptr ? "its " + code(attr.keyAttr()->name()) + ", " : "") +
               code(attr.keyType()->qualifiedName());
    else
        text = flags.has(Flags::stored) ? "stored" : "computed";
    if (flags.has(Flags::changing)) text += ", changes its object";
    if (flags.has(Flags::writable) && !flags.has(Flags::collection)) text += ", writable";
    return text;
}

std::string kind(const Vel::VelType& type) {
    if (type.isEnumType()) return "Enumeration.";
    return type.isValue() ? "Value." : "Entity: counted objects.";
}

void print(const Vel::VelAttr& attr) {
    std::cout << "| " << attr.id() << " | " << code(attr.name()) << " | "
              << (attr.type() != nullptr ? code(attr.type()->qualifiedName()) : "") << " | "
              << kind(attr) << " | " << signature(attr.arguments()) << " | "
              << unsigned{attr.introspection()} << " |\n";
}

void print(const Vel::VelType& type) {
    std::cout << "\n## " << type.qualifiedName() << "\n\n" << kind(type);
    if (type.isValue() && type.base() != nullptr)
        std::cout << " Refines " << code(type.base()->qualifiedName())
                  << " and has its attributes too.";
    else if (type.isValue() && type.inheritsFrom() != nullptr)
        std::cout << " Has the attributes of " << code(type.inheritsFrom()->qualifiedName())
                  << " too.";
    if (!type.constructorArguments().empty())
        std::cout << " Constructed from " << signature(type.constructorArguments()) << ".";
    if (type.isValue() || type.isEnumType())
        std::cout << " A new one prints as `" << type.newGenericIf()->strRep() << "`.";
    std::cout << "\n";
    if (type.attrs().empty()) return;
    std::cout
        << "\n| id | attribute | type | kind | arguments | shown |\n|---|---|---|---|---|---|\n";
    for (const Vel::VelAttr* const attr : type.attrs()) print(*attr);
}

} // namespace

int main() {
    velInitBrixoTypes();
    std::cout << "# Every registered type\n\n"
                 "This page is the output of the program `reflection-print-schema`; a test fails "
                 "when they "
                 "differ. Types stand in the order of registration. The last column holds the "
                 "introspection flags: 2 for what is stored, 8 for what is computed or acts, 0 for "
                 "the rest.\n";
    for (const Vel::VelType* const type : Vel::IntrospectionReactor::global()->types())
        print(*type);
    return std::cout.flush() ? 0 : 1;
}
