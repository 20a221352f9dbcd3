// Parse.h - reads a value from its text form.
//
// Grammar: docs/text-form.md. Attributes may come in any order, be left out (they keep their
//          defaults) or come twice (the last one counts); computed and function attributes are
//          unknown names.
// Speed:   the exactly printed form is compared by whole literals first; anything else is read by
//          the grammar from the same place. Both give the same value and the same cursor.
// Cursor:  moves behind the value and the blanks after it; stays where it was when reading throws.
// Errors:  RangeException; texts as in textErrors.h and docs/text-form.md. Naming a collection is
//          an assertion: the entries of a collection have no text form. A reader of texts from
//          outside refuses it instead.
// Test: Value_test.cpp.
#pragma once

#include <Vel/Assert.h>
#include <Vel/RangeException.h>
#include <Vel/String8.h>
#include <Vel/deserializeAttr.h>
#include <Vel/needString.h>
#include <Vel/sequenceToValue.h>
#include <Vel/strepToValue.h>
#include <Vel/textReading.h>
#include <Vel/value/EnumNames.h>
#include <Vel/value/WriteStrep.h>
#include <utility>

namespace Vel {

// What a text that names a collection is to its reader: a mistake of this program, or one of
// whoever has written the text.
enum class CollectionText : bool { asserted, refused };

template <class T, CollectionText collections = CollectionText::asserted>
void parseValue(String8::IteratorConst& pos, const String8::IteratorConst& end, T& value);

namespace detail {

// Whether a text of T may name a collection: one of its own, or of a value within it.
template <class T>
constexpr bool mayNameCollection() {
    if constexpr (std::integral<T> || DeclaredEnum<T>)
        return false;
    else
        return !allFields<T>([]<std::size_t i>() {
            if constexpr (isCollectionField<T, i>)
                return false;
            else
                return !mayNameCollection<FieldType<T, i>>();
        });
}

// A value whose reader refuses collections.
template <class T>
struct RefusingCollections {
    T value{};

    friend void sequenceToValue(String8::IteratorConst& it, const String8::IteratorConst& end,
                                RefusingCollections* read) {
        parseValue<T, CollectionText::refused>(it, end, read->value);
    }
};

// The integer that a scalar reads: only a field of 64 bits takes the full unsigned range.
template <class Field>
using ScalarNumber = std::conditional_t<sizeof(Field) == sizeof(U64), U64, S64>;

constexpr bool skipLiteral(const char*& pos, const char* end, std::string_view literal) noexcept {
    if (static_cast<std::size_t>(end - pos) < literal.size() ||
        std::string_view(pos, literal.size()) != literal)
        return false;
    pos += literal.size();
    return true;
}

// Reads exactly what writeStrep writes. False, with no promise about `pos` and `value`, for any
// other text.
template <class T>
bool readPrinted(const char*& pos, const char* end, T& value) noexcept {
    if constexpr (std::same_as<T, bool>) {
        return Text::readTruth(pos, end, value);
    } else if constexpr (std::integral<T>) {
        ScalarNumber<T> number = 0;
        if (Text::readNumber(pos, end, number) != Text::Number::read) return false;
        value = static_cast<T>(number);
        return static_cast<ScalarNumber<T>>(value) == number;
    } else if constexpr (DeclaredEnum<T>) {
        std::string_view name;
        if (!Text::readPlainQuoted(pos, end, name)) return false;
        const S32 number = enumNumber<T>(name);
        value = static_cast<T>(number);
        return number >= 0;
    } else if constexpr (schemaOf<T>.form == Form::scalar) {
        return readPrinted(pos, end, value.*(attributeAt<T, scalarField<T>>.access));
    } else {
        return allFields<T>([&]<std::size_t i>() {
                   if constexpr (isCollectionField<T, i>)
                       return false;
                   else
                       return skipLiteral(pos, end, beforeField<T, i, i == firstField<T>>.view()) &&
                              readPrinted(pos, end, value.*(attributeAt<T, i>.access));
               }) &&
               skipLiteral(pos, end, afterFields);
    }
}

// " 'Net::X'": the blank lets blanks stand before the token.
template <class T>
inline constexpr auto quotedTypeName = joinLiteral<[] {
    return std::array<std::string_view, 4>{" '", schemaOf<T>.qualifiedName, "'",
                                           std::string_view("\0", 1)};
}>();

template <class T, std::size_t index, CollectionText collections>
void readField(String8::IteratorConst& it, const String8::IteratorConst& end, T& value) {
    constexpr std::string_view name = attributeAt<T, index>.name;
    auto& field = value.*(attributeAt<T, index>.access);
    using Field = FieldType<T, index>;
    if constexpr (isCollectionField<T, index>) {
        if constexpr (collections == CollectionText::refused)
            throwRangeException(String8(schemaOf<T>.shortName()) +
                                " cannot be read from a text that names its collection " +
                                String8(name));
        VEL_ASSERT_AS("String(\"This should not be used and doesn't work\") == String(\"\")",
                      false);
    } else if constexpr (collections == CollectionText::refused && mayNameCollection<Field>()) {
        RefusingCollections<Field> read;
        deserializeAttr(it, end, &read, name);
        field = std::move(read.value);
    } else {
        deserializeAttr(it, end, &field, name);
    }
}

// One `'name': value` inside the braces.
template <class T, CollectionText collections>
void readAttribute(String8::IteratorConst& it, const String8::IteratorConst& end, T& value) {
    const String8 name = sequenceToValue(it, end, static_cast<String8*>(nullptr));
    needString(it, end, " : ");
    const bool unknown = allFields<T>([&]<std::size_t i>() {
        if (name.view() != attributeAt<T, i>.name) return true;
        readField<T, i, collections>(it, end, value);
        return false;
    });
    if (unknown)
        throwRangeException(String8(schemaOf<T>.shortName()) + " has no such attribute: " + name);
}

template <class T, CollectionText collections>
void readByGrammar(String8::IteratorConst& it, const String8::IteratorConst& end, T& value) {
    needString(it, end, " Value");
    needString(it, end, " (");
    needString(it, end, quotedTypeName<T>.view().data());
    needString(it, end, " ,");
    needString(it, end, " **");
    needString(it, end, " {");
    for (bool first = true;; first = false) {
        needString(it, end, " ");
        if (it == end)
            throwRangeException(String8("premature end of value type ") +
                                String8(schemaOf<T>.shortName()));
        if (*it == '}') break;
        if (!first) needString(it, end, ", ");
        readAttribute<T, collections>(it, end, value);
    }
    needString(it, end, "} ");
    needString(it, end, ") ");
}

template <class T, CollectionText collections>
void readStructured(String8::IteratorConst& pos, const String8::IteratorConst& end, T& value) {
    T result;
    const char* p = pos.charPtr();
    if (readPrinted(p, end.charPtr(), result)) {
        pos += Text::skipBlanks(p, end.charPtr()) - pos.charPtr();
    } else {
        String8::IteratorConst it = pos;
        // Not T(): what a refinement's constructor fixes is not what a text without that attribute
        // says.
        forEachField<T>(
            [&]<std::size_t i>() { result.*(attributeAt<T, i>.access) = FieldType<T, i>(); });
        readByGrammar<T, collections>(it, end, result);
        pos = it;
    }
    value = result;
}

// Keeps the low bits of the number: there is no range check on the field's width.
template <class T>
void readScalar(String8::IteratorConst& pos, const String8::IteratorConst& end, T& value) {
    using Field = FieldType<T, scalarField<T>>;
    constexpr const auto& attribute = attributeAt<T, scalarField<T>>;
    ScalarNumber<Field> number = 0;
    deserializeAttr(pos, end, &number, attribute.name);
    value.*(attribute.access) = static_cast<Field>(number);
}

} // namespace detail

// Reads one T at the cursor.
template <class T, CollectionText collections>
void parseValue(String8::IteratorConst& pos, const String8::IteratorConst& end, T& value) {
    if constexpr (schemaOf<T>.form == Form::scalar)
        detail::readScalar(pos, end, value);
    else
        detail::readStructured<T, collections>(pos, end, value);
}

// Reads a whole text: one T and nothing else. Throws "junk at column %lld deserializing %s" if
//                     something is left.
template <class T, CollectionText collections = CollectionText::asserted>
T parseWhole(const String8& text) {
    if constexpr (collections == CollectionText::refused && detail::mayNameCollection<T>()) {
        detail::RefusingCollections<T> read;
        strepToValue(text, &read);
        return std::move(read.value);
    } else {
        T value{};
        strepToValue(text, &value);
        return value;
    }
}

} // namespace Vel
