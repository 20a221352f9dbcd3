// Schema.h - the one declaration of a type: its name and its attributes, as a constexpr object.
//
//     static constexpr auto schema() {
//         return Vel::valueSchema<LogicalResourceId>("Net::LogicalResourceId")
//             .stored(2, "type", &LogicalResourceId::type_)
//             .stored(3, "id", &LogicalResourceId::id_)
//             .hashedBy(Vel::Hash::byteMix, 4)
//             .constructedFrom("type", "id");
//     }
//
// Order:    attributes stand in declaration order, which is the order of the text form, the log,
//           comparison and hash.
// Ids:      0 is that of the attribute fwkKey, and 1 is reserved; value types count from 2,
//           entities from 130.
// Refused:  by the compiler, whose first line names the rule, the type and the attribute
//           (Refused.h):
//           - two attributes of one id, name or field, inherited ones included; a reserved id;
//           - a field of a type that FieldTypes.h does not list; a scalar that is not one
//             integer;
//           - an argument of constructedFrom() that is no stored field, or arguments that no
//             constructor takes;
//           - a value with bytes that no field accounts for: a field is missing here;
//           - a type without a schema of its own.
// Facets:   everything that is derived from a schema lives in a header of its own beside this one,
//           and knows no type by name: how a type differs from its family is an option here.
// Lifetime: names are borrowed: string literals.
// Test: Value_test.cpp.
#pragma once

#include <Vel/AttributeId.h>
#include <Vel/Integers.h>
#include <Vel/value/Attribute.h>
#include <Vel/value/AttributeList.h>
#include <Vel/value/CheckSchema.h>
#include <array>
#include <cstddef>
#include <string_view>
#include <type_traits>

namespace Vel {

namespace detail {

// In the place of a base: T's attributes, without being a T.
template <class T>
struct Extension {};

template <class Base>
struct Inheritance {
    using Refined = Base;
    using Inherited = Base;
};

template <class T>
struct Inheritance<Extension<T>> {
    using Refined = void;
    using Inherited = T;
};

template <class Base>
using RefinedBy = typename Inheritance<Base>::Refined;
template <class Base>
using InheritedBy = typename Inheritance<Base>::Inherited;

} // namespace detail

template <class T, class Base, std::size_t inherited, std::size_t constructorArguments,
          class... Attributes>
class Schema {
public:
    using Type = T;
    using BaseType = detail::RefinedBy<Base>; // void if the type refines none
    // Whose attributes stand first: the base, or what is extended; or void.
    using InheritedType = detail::InheritedBy<Base>;

    // Attributes that come from the base stand first.
    static constexpr std::size_t inheritedCount = inherited;
    static constexpr std::size_t attributeCount = sizeof...(Attributes);

    std::string_view qualifiedName;
    Form form = Form::structured;
    Hash hash = Hash::none;
    std::array<std::string_view, constructorArguments> constructor;
    AttributeList<Attributes...> attributes;

    // The name without its namespace.
    constexpr std::string_view shortName() const {
        const std::size_t colon = qualifiedName.rfind(':');
        return colon == std::string_view::npos ? qualifiedName : qualifiedName.substr(colon + 1);
    }

    template <class Owner, class Field>
    constexpr auto stored(AttributeId id, std::string_view name, Field Owner::*field) const {
        return with<AttributeKind::stored>(id, name, field, Introspection::stored);
    }

    // The same for an attribute with a writer, xIs().
    template <class Owner, class Field, class Writer>
    constexpr auto stored(AttributeId id, std::string_view name, Field Owner::*field,
                          Writer writer) const {
        return add(Attribute<AttributeKind::stored, Field Owner::*, 0, Writer>{
            id, name, field, Introspection::stored, {}, writer});
    }

    template <class Getter>
    constexpr auto computed(AttributeId id, std::string_view name, Getter getter,
                            U8 introspection = Introspection::procedural) const {
        return with<AttributeKind::computed>(id, name, getter, introspection);
    }

    template <class Value>
    constexpr auto constant(AttributeId id, std::string_view name, Value (*getter)()) const {
        return with<AttributeKind::constant>(id, name, getter, Introspection::plain);
    }

    template <class Member, class... Names>
    constexpr auto function(AttributeId id, std::string_view name, Member member,
                            Names... arguments) const {
        return with<AttributeKind::function>(id, name, member, Introspection::plain,
                                             std::string_view(arguments)...);
    }

    // A function without arguments that acts on the object.
    template <class Member>
    constexpr auto procedure(AttributeId id, std::string_view name, Member member) const {
        return with<AttributeKind::function>(id, name, member, Introspection::procedural);
    }

    template <class Owner, class Field>
    constexpr auto collection(AttributeId id, std::string_view name, Field Owner::*field) const {
        return with<AttributeKind::collection>(id, name, field, Introspection::stored);
    }

    // The same for a collection with writers of its own: xIs(key), xDel(key), xDelAll().
    template <class Owner, class Field, class Inserter, class Deleter, class Emptier>
    constexpr auto collection(AttributeId id, std::string_view name, Field Owner::*field,
                              Inserter inserter, Deleter deleter, Emptier emptier) const {
        using Writers = MemberWriters<Inserter, Deleter, Emptier>;
        return add(Attribute<AttributeKind::collection, Field Owner::*, 0, Writers>{
            id, name, field, Introspection::stored, {}, {inserter, deleter, emptier}});
    }

    template <class Reader, class Writer, class Deleter, class Counter, class Next>
    constexpr auto keyed(AttributeId id, std::string_view name, Reader reader, Writer writer,
                         Deleter deleter, Counter counter, Next next) const {
        using Access = KeyedAccess<Reader, Writer, Deleter, Counter, Next>;
        return with<AttributeKind::keyed>(id, name, Access{reader, writer, deleter, counter, next},
                                          Introspection::plain);
    }

    // The names of the constructor's arguments, in order.
    template <class... Names>
    constexpr auto constructedFrom(Names... names) const {
        Schema<T, Base, inherited, sizeof...(Names), Attributes...> result{
            qualifiedName, form, hash, {std::string_view(names)...}, attributes};
        return result;
    }

    // The rule of the type's hash(), which is the attribute "hash" with this id.
    constexpr auto hashedBy(Hash rule, AttributeId id,
                            U8 introspection = Introspection::procedural) const {
        auto result = computed(id, "hash", CallHash(), introspection);
        result.hash = rule;
        return result;
    }

    // The same for a type without such an attribute.
    constexpr Schema hashedBy(Hash rule) const {
        Schema result = *this;
        result.hash = rule;
        return result;
    }

    // The same attributes under the name of a type that refines this one.
    template <class Refined>
    constexpr auto refinedAs(std::string_view name) const {
        return Schema<Refined, T, sizeof...(Attributes), constructorArguments, Attributes...>{
            name, form, hash, constructor, attributes};
    }

    // The same for a type that has them all without being registered as a refinement: its
    // descriptor has no base, and finds them by name and by id all the same.
    template <class Extended>
    constexpr auto extendedAs(std::string_view name) const {
        return Schema<Extended, detail::Extension<T>, sizeof...(Attributes), constructorArguments,
                      Attributes...>{name, form, hash, constructor, attributes};
    }

private:
    template <AttributeKind kind, class Access, class... Names>
    constexpr auto with(AttributeId id, std::string_view name, Access access, U8 introspection,
                        Names... arguments) const {
        return add(Attribute<kind, Access, sizeof...(Names)>{
            id, name, access, introspection, {arguments...}, {}});
    }

    template <class Added>
    constexpr auto add(const Added& added) const {
        return Schema<T, Base, inherited, constructorArguments, Attributes..., Added>{
            qualifiedName, form, hash, constructor, detail::extended(attributes, added)};
    }
};

// A type that prints as Value('Name', ** {...}).
template <class T>
constexpr auto valueSchema(std::string_view qualifiedName) {
    return Schema<T, void, 0, 0>{qualifiedName, Form::structured, Hash::none, {}, {}};
}

// A type of one integer field that prints as bare digits.
template <class T>
constexpr auto scalarSchema(std::string_view qualifiedName) {
    return Schema<T, void, 0, 0>{qualifiedName, Form::scalar, Hash::plainValue, {}, {}};
}

// A counted object: it has attributes, but no text form, order or hash.
template <class T>
constexpr auto entitySchema(std::string_view qualifiedName) {
    return Schema<T, void, 0, 0>{qualifiedName, Form::none, Hash::none, {}, {}};
}

namespace detail {

// A schema that the facets can work on in the place of one that they cannot: the compiler has named
// the mistake, and little else follows.
template <class T>
constexpr auto soundSchema() {
    constexpr Fault fault = findFault<T>();
    if constexpr (fault.rule == Rule::none) {
        return declaredSchema<T>;
    } else {
        if (!std::is_constant_evaluated()) refuseFor<T, fault.rule, fault.first, fault.second>();
        if constexpr (fault.rule <= Rule::oneInteger)
            return valueSchema<T>("").stored(firstIdOfValue, "", static_cast<U32 T::*>(nullptr));
        else if constexpr (fault.rule == Rule::argumentIsField || fault.rule == Rule::constructible)
            return declaredSchema<T>.constructedFrom();
        else
            return declaredSchema<T>;
    }
}

} // namespace detail

// The schema of a type; to compile this is to hold it to the rules of Refused.h.
template <class T>
inline constexpr auto schemaOf = detail::soundSchema<T>();

// Calls visit(attribute) for each attribute in declaration order. The attributes are compile-time
// constants of it.
template <class T, class Visit>
constexpr void forEachAttribute(Visit visit) {
    detail::visitEach(schemaOf<T>.attributes, visit);
}

} // namespace Vel
