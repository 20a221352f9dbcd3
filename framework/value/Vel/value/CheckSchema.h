// CheckSchema.h - looks for a rule of Refused.h that a schema breaks.
//
// Cost: one look over a few arrays a type, when it is compiled.
// Test: tests/compile_fail.
#pragma once

#include <Vel/AttributeId.h>
#include <Vel/Integers.h>
#include <Vel/value/Attribute.h>
#include <Vel/value/AttributeList.h>
#include <Vel/value/FieldTypes.h>
#include <Vel/value/MemberBytes.h>
#include <Vel/value/Refused.h>
#include <array>
#include <cstddef>
#include <string_view>
#include <type_traits>
#include <utility>

namespace Vel::detail {

template <class T>
inline constexpr auto declaredSchema = T::schema();

template <class T>
using DeclaredAttributes = std::remove_cvref_t<decltype(declaredSchema<T>.attributes)>;

template <class T>
inline constexpr bool isObject = declaredSchema<T>.form == Form::none;

template <class T, std::size_t i>
inline constexpr const auto& declaredAttribute = attributeIn<i>(declaredSchema<T>.attributes);

template <class Owner, class Member>
std::type_identity<Member> typeOfMember(Member Owner::*);

// The type of the field that an attribute is; void if it is none.
template <class A>
constexpr auto findFieldType() {
    if constexpr (isField<A>)
        return decltype(typeOfMember(std::declval<A>().access))();
    else
        return std::type_identity<void>();
}

template <class A>
using DeclaredField = typename decltype(findFieldType<A>())::type;

template <class T, std::size_t i>
using DeclaredFieldAt = DeclaredField<AttributeClassAt<i, DeclaredAttributes<T>>>;

// An object for each member: two attributes are the same field if these are the same.
template <auto member>
inline constexpr char memberMark = '\0';

// What the rules ask of an attribute.
struct AttributeFacts {
    AttributeId id;
    std::string_view name;
    bool isStored = false;
    bool isSupported = true;
    bool isInteger = false;
    const char* field = nullptr; // memberMark of a field, else null
};

template <class T, std::size_t i>
constexpr AttributeFacts attributeFacts() {
    constexpr const auto& attribute = declaredAttribute<T, i>;
    using A = std::remove_cvref_t<decltype(attribute)>;
    using Field = DeclaredField<A>;
    AttributeFacts facts{attribute.id, attribute.name};
    if constexpr (isField<A>) {
        facts.field = &memberMark<attribute.access>;
        facts.isInteger = std::is_integral_v<Field>;
        if constexpr (A::kind == AttributeKind::collection) {
            facts.isSupported = CollectionFieldType<Field>;
        } else {
            facts.isStored = true;
            facts.isSupported = isObject<T> ? ObjectFieldType<Field> : ValueFieldType<Field>;
        }
    }
    return facts;
}

template <class T, std::size_t... i>
constexpr std::array<AttributeFacts, sizeof...(i)> factsOf(std::index_sequence<i...>) {
    return {attributeFacts<T, i>()...};
}

template <class T>
inline constexpr auto schemaFacts =
    factsOf<T>(std::make_index_sequence<DeclaredAttributes<T>::size>());

// What breaks a rule, and its place among the attributes or among the constructor's arguments.
struct Fault {
    enum class Rule : U8 {
        none,
        // Nothing can be made of a schema that breaks one of these four.
        hasSchema,
        isOwnSchema,
        supportedType,
        oneInteger,
        // Those that follow speak of what a schema says, not of whether it says it.
        idOfValue,
        idOfObject,
        idOfKey,
        oneId,
        oneName,
        oneField,
        argumentIsField,
        constructible,
        allFields,
    };

    Rule rule = Rule::none;
    std::size_t first = 0;
    std::size_t second = 0;
};

using Rule = Fault::Rule;

template <class T>
constexpr Fault typeFault() {
    std::size_t fields = 0;
    std::size_t integers = 0;
    for (std::size_t i = 0; i < schemaFacts<T>.size(); ++i) {
        const AttributeFacts& attribute = schemaFacts<T>[i];
        if (!attribute.isSupported) return {Rule::supportedType, i};
        fields += attribute.field != nullptr ? 1 : 0;
        integers += attribute.isInteger ? 1 : 0;
    }
    if (declaredSchema<T>.form == Form::scalar && (fields != 1 || integers != 1))
        return {Rule::oneInteger};
    return {};
}

template <class T>
constexpr Fault idFault() {
    for (std::size_t i = 0; i < schemaFacts<T>.size(); ++i) {
        const AttributeFacts& attribute = schemaFacts<T>[i];
        if (attribute.name == "fwkKey") {
            if (attribute.id != 0) return {Rule::idOfKey, i};
        } else if (attribute.id < (isObject<T> ? firstIdOfObject : firstIdOfValue)) {
            return {isObject<T> ? Rule::idOfObject : Rule::idOfValue, i};
        }
    }
    return {};
}

template <class T>
constexpr Fault pairFault() {
    for (std::size_t second = 1; second < schemaFacts<T>.size(); ++second) {
        const AttributeFacts& b = schemaFacts<T>[second];
        for (std::size_t first = 0; first < second; ++first) {
            const AttributeFacts& a = schemaFacts<T>[first];
            if (a.id == b.id) return {Rule::oneId, first, second};
            if (a.name == b.name) return {Rule::oneName, first, second};
            if (a.field != nullptr && a.field == b.field) return {Rule::oneField, first, second};
        }
    }
    return {};
}

// Place of the stored field that a constructor's argument is named after; the number of attributes
// if there is none.
template <class T>
constexpr std::size_t argumentField(std::size_t argument) {
    const std::string_view name = declaredSchema<T>.constructor[argument];
    std::size_t i = 0;
    while (i < schemaFacts<T>.size() &&
           !(schemaFacts<T>[i].isStored && schemaFacts<T>[i].name == name))
        ++i;
    return i;
}

template <class T>
constexpr Fault argumentFault() {
    for (std::size_t i = 0; i < declaredSchema<T>.constructor.size(); ++i)
        if (argumentField<T>(i) == schemaFacts<T>.size()) return {Rule::argumentIsField, i};
    return {};
}

template <class T>
constexpr Fault attributeFault() {
    for (const auto find : {typeFault<T>, idFault<T>, pairFault<T>, argumentFault<T>})
        if (const Fault fault = find(); fault.rule != Rule::none) return fault;
    return {};
}

template <class T>
inline constexpr auto argumentIndices =
    std::make_index_sequence<declaredSchema<T>.constructor.size()>();

template <class T, std::size_t... i>
constexpr bool takesItsArguments(std::index_sequence<i...> /*arguments*/) {
    return std::is_abstract_v<T> ||
           std::is_constructible_v<T, const DeclaredFieldAt<T, argumentField<T>(i)>&...>;
}

// Bytes of a value that none of its fields accounts for.
template <class T, class... A>
constexpr std::size_t bytesLeftOut(const AttributeList<A...>& /*attributes*/) {
    if constexpr (isObject<T>)
        return 0;
    else
        return bytesBeside<T, DeclaredField<A>...>();
}

template <class T>
using DescribedBySchemaOf = typename decltype(T::schema())::Type;

// The first rule that T breaks: one is looked at only if those before it hold.
template <class T>
constexpr Fault findFault() {
    if constexpr (!SchemaClass<T>) {
        return {Rule::hasSchema};
    } else if constexpr (!std::is_same_v<DescribedBySchemaOf<T>, T>) {
        return {Rule::isOwnSchema};
    } else if constexpr (constexpr Fault fault = attributeFault<T>(); fault.rule != Rule::none) {
        return fault;
    } else {
        if (!takesItsArguments<T>(argumentIndices<T>)) return {Rule::constructible};
        if (bytesLeftOut<T>(declaredSchema<T>.attributes) != 0) return {Rule::allFields};
        return {};
    }
}

// A text as an address that the compiler shows.
template <class Spell, std::size_t... c>
constexpr const char* shownText(Spell /*spell*/, std::index_sequence<c...> /*places*/) {
    return &Refused::Name<Spell{}()[c]...>::shown;
}

// What reaches an attribute's value; its name where that is an object.
template <class T, std::size_t i>
constexpr auto shownAttribute() {
    constexpr const auto& attribute = declaredAttribute<T, i>;
    using Access = std::remove_cvref_t<decltype(attribute.access)>;
    if constexpr (std::is_pointer_v<Access> || std::is_member_pointer_v<Access>)
        return attribute.access;
    else if constexpr (requires { attribute.access.reader; })
        return attribute.access.reader;
    else
        return shownText([] { return declaredAttribute<T, i>.name; },
                         std::make_index_sequence<attribute.name.size()>());
}

template <class T, std::size_t i>
inline constexpr auto shown = shownAttribute<T, i>();

template <class T, std::size_t i>
constexpr const char* shownArgument() {
    return shownText([] { return declaredSchema<T>.constructor[i]; },
                     std::make_index_sequence<declaredSchema<T>.constructor[i].size()>());
}

template <class T, std::size_t... i>
void refuseArguments(std::index_sequence<i...> /*arguments*/) {
    refuse<Refused::ConstructorTakesNoSuchFields<T, shown<T, argumentField<T>(i)>...>>();
}

// Has the compiler name the rule, as soon as it sees a call.
template <class T, Rule rule, std::size_t first, std::size_t second>
auto refuseFor() {
    if constexpr (rule == Rule::hasSchema)
        refuse<Refused::SchemaIsMissing<T>>();
    else if constexpr (rule == Rule::isOwnSchema)
        refuse<Refused::SchemaIsOfAnotherType<T, DescribedBySchemaOf<T>>>();
    else if constexpr (rule == Rule::supportedType)
        refuse<Refused::FieldHasUnsupportedType<T, shown<T, first>, DeclaredFieldAt<T, first>>>();
    else if constexpr (rule == Rule::oneInteger)
        refuse<Refused::ScalarIsNotOneInteger<T>>();
    else if constexpr (rule == Rule::idOfValue)
        refuse<Refused::IdIsBelow2<T, shown<T, first>>>();
    else if constexpr (rule == Rule::idOfObject)
        refuse<Refused::IdIsBelow130<T, shown<T, first>>>();
    else if constexpr (rule == Rule::idOfKey)
        refuse<Refused::FwkKeyHasNotId0<T>>();
    else if constexpr (rule == Rule::oneId)
        refuse<Refused::TwoAttributesHaveOneId<T, shown<T, first>, shown<T, second>>>();
    else if constexpr (rule == Rule::oneName)
        refuse<Refused::TwoAttributesHaveOneName<T, shown<T, first>, shown<T, second>>>();
    else if constexpr (rule == Rule::oneField)
        refuse<Refused::TwoAttributesHaveOneField<T, shown<T, first>>>();
    else if constexpr (rule == Rule::argumentIsField)
        refuse<Refused::ConstructorArgumentIsNoField<T, shownArgument<T, first>()>>();
    else if constexpr (rule == Rule::constructible)
        refuseArguments<T>(argumentIndices<T>);
    else
        refuse<Refused::FieldsAreLeftOut<T, bytesLeftOut<T>(declaredSchema<T>.attributes)>>();
}

} // namespace Vel::detail
