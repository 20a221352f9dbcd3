// Refused.h - the rules that a type's declaration keeps, as the compiler names the one that is
// broken:
//
//     error: ... 'Vel::Refused::TwoAttributesHaveOneId<Net::Clock, &Net::Clock::tick_,
//                                                      &Net::Clock::tock_>'
//
// Shown:   an attribute as what reaches its value, or as its name where that has none: &Name<'h',
//          'a', 's', 'h'>.
// Defined: none of them: to look into one ends the compilation. CheckSchema.h looks for what is
//          broken.
// Test: tests/compile_fail.
#pragma once

#include <Vel/AttributeId.h>
#include <cstddef>

namespace Vel {

// Ids below are the framework's, but for 0, which is that of the attribute fwkKey.
inline constexpr AttributeId firstIdOfValue = 2;
inline constexpr AttributeId firstIdOfObject = 130;

} // namespace Vel

namespace Vel::Refused {

// A type has a public static constexpr schema().
template <class T>
struct SchemaIsMissing;

// It is the type's own: valueSchema<T>, or refinedAs<T> of the base's.
template <class T, class Described>
struct SchemaIsOfAnotherType;

// A stored field's type is one that FieldTypes.h lists; a collection is a KeyedCollection.
template <class T, auto attribute, class Field>
struct FieldHasUnsupportedType;

// A scalar has one field, and that is an integer.
template <class T>
struct ScalarIsNotOneInteger;

// Inherited attributes count.
template <class T, auto first, auto second>
struct TwoAttributesHaveOneId;
template <class T, auto first, auto second>
struct TwoAttributesHaveOneName;
template <class T, auto field>
struct TwoAttributesHaveOneField;

// Ids begin at firstIdOfValue and firstIdOfObject.
template <class T, auto attribute>
struct IdIsBelow2;
template <class T, auto attribute>
struct IdIsBelow130;
template <class T>
struct FwkKeyHasNotId0;

// An argument of constructedFrom() is the name of a stored field, and has its type.
template <class T, auto name>
struct ConstructorArgumentIsNoField;

// T(field...) can be written.
template <class T, auto... fields>
struct ConstructorTakesNoSuchFields;

// The bytes of a value are those of its stored fields, but for what aligns them.
template <class T, std::size_t bytes>
struct FieldsAreLeftOut;

// A class that notifies declares the class NotifieeConst : Notifiee<T>, by this name.
template <class T>
struct NotifieeConstIsMissing;

// How a text is shown.
template <char... text>
struct Name {
    static constexpr char shown = 0;
};

} // namespace Vel::Refused

namespace Vel::detail {

// To call it ends the compilation. The compiler looks into it at once, and none but this variable
// is wrong: nothing follows.
template <class Broken>
auto refuse() {
    Broken refused;
}

} // namespace Vel::detail
