// WriteStrep.h - the text form of a value, written into a buffer of the caller.
//
// Form: docs/text-form.md. Literals are joined at compile time; a value is literals and a few
//       digits.
// Room: strepMax<T> characters are enough for every value of T; nothing writes a NUL.
// Test: Value_test.cpp.
#pragma once

#include <Vel/String8.h>
#include <Vel/textWriting.h>
#include <Vel/value/Enum.h>
#include <Vel/value/Fields.h>
#include <algorithm>
#include <array>
#include <concepts>
#include <cstring>
#include <type_traits>

namespace Vel {

namespace detail {

template <std::size_t size>
struct Literal {
    std::array<char, size> chars{};

    constexpr std::string_view view() const { return {chars.data(), size}; }
};

// The concatenation of the pieces that `spell` gives, at compile time.
template <auto spell>
constexpr auto joinLiteral() {
    constexpr std::size_t size = [] {
        std::size_t sum = 0;
        for (const std::string_view piece : spell()) sum += piece.size();
        return sum;
    }();
    Literal<size> result;
    std::size_t at = 0;
    for (const std::string_view piece : spell())
        for (const char c : piece) result.chars[at++] = c;
    return result;
}

// What stands before a field: "Value('Net::X', ** {'type': " before the first, ", 'id': " before
// the others.
template <class T, std::size_t index, bool first>
inline constexpr auto beforeField = joinLiteral<[] {
    constexpr std::string_view name = attributeAt<T, index>.name;
    if constexpr (first)
        return std::array<std::string_view, 5>{"Value('", schemaOf<T>.qualifiedName, "', ** {'",
                                               name, "': "};
    else
        return std::array<std::string_view, 3>{", '", name, "': "};
}>();

inline constexpr std::string_view afterFields = "})";
inline constexpr std::string_view collectionText = "None";

// Names stand at the start of as many characters as are copied at once, which is quicker than to
// copy what there is.
template <DeclaredEnum E>
inline constexpr std::size_t nameStep = (enumSchema<E>.longestName() + 7) / 8 * 8;

template <DeclaredEnum E>
struct PaddedName {
    std::array<char, nameStep<E>> chars{};
    std::size_t length = 0;
};

template <DeclaredEnum E>
inline constexpr auto paddedNames = [] {
    std::array<PaddedName<E>, enumSchema<E>.names().size()> padded{};
    for (std::size_t i = 0; i < padded.size(); ++i) {
        const std::string_view name = enumSchema<E>.names()[i];
        for (std::size_t at = 0; at < name.size(); ++at) padded[i].chars[at] = name[at];
        padded[i].length = name.size();
    }
    return padded;
}();

template <std::size_t i, std::size_t... rest>
constexpr std::size_t firstOf(std::index_sequence<i, rest...> /*indices*/) {
    return i;
}

template <class T>
inline constexpr std::size_t firstField = firstOf(FieldIndices<T>());

} // namespace detail

// Room for writeEnumName().
template <DeclaredEnum E>
inline constexpr std::size_t enumNameMax = std::max(enumSchema<E>.longest(), detail::nameStep<E>);

template <class T>
constexpr std::size_t strepMaxOf() {
    if constexpr (std::same_as<T, bool>) {
        return Text::truthMax;
    } else if constexpr (std::integral<T>) {
        return Text::numberMax;
    } else if constexpr (DeclaredEnum<T>) {
        return enumNameMax<T> + 2;
    } else if constexpr (schemaOf<T>.form == Form::scalar) {
        return Text::numberMax;
    } else {
        std::size_t most = detail::afterFields.size();
        forEachField<T>([&]<std::size_t i>() {
            most += detail::beforeField<T, i, i == detail::firstField<T>>.view().size();
            if constexpr (isCollectionField<T, i>)
                most += detail::collectionText.size();
            else
                most += strepMaxOf<FieldType<T, i>>();
        });
        return most;
    }
}

template <class T>
inline constexpr std::size_t strepMax = strepMaxOf<T>();

namespace detail {

template <DeclaredEnum E>
[[gnu::noinline]] char* writeUndeclared(char* out, E value) noexcept {
    out = Text::writePlain(out, enumSchema<E>.shortName());
    *out++ = '(';
    out = Text::writeNumber(out, static_cast<S64>(value));
    *out++ = ')';
    return out;
}

} // namespace detail

// The enumerator's name, or Command(9) for an undeclared number; without quotes. May write behind
// its end, see enumNameMax.
template <DeclaredEnum E>
char* writeEnumName(char* out, E value) noexcept {
    const auto number = static_cast<U32>(value);
    if (number >= enumSchema<E>.names().size()) [[unlikely]]
        return detail::writeUndeclared(out, value);
    const auto& name = detail::paddedNames<E>[number];
    std::memcpy(out, name.chars.data(), name.chars.size());
    return out + name.length;
}

// Writes the text form from `out` on and returns its end.
template <class T>
char* writeStrep(char* out, const T& value) noexcept {
    if constexpr (std::same_as<T, bool>) {
        return Text::writeTruth(out, value);
    } else if constexpr (std::unsigned_integral<T>) {
        if constexpr (sizeof(T) <= sizeof(U32))
            return Text::writeNumber(out, U32{value});
        else
            return Text::writeNumber(out, U64{value});
    } else if constexpr (std::integral<T>) {
        return Text::writeNumber(out, S64{value});
    } else if constexpr (DeclaredEnum<T>) {
        *out++ = '\'';
        out = writeEnumName(out, value);
        *out++ = '\'';
        return out;
    } else if constexpr (schemaOf<T>.form == Form::scalar) {
        return writeStrep(out, value.*(attributeAt<T, scalarField<T>>.access));
    } else {
        forEachField<T>([&]<std::size_t i>() {
            constexpr const auto& before = detail::beforeField<T, i, i == detail::firstField<T>>;
            out = Text::writePlain(out, before.view());
            if constexpr (isCollectionField<T, i>)
                out = Text::writePlain(out, detail::collectionText);
            else
                out = writeStrep(out, value.*(attributeAt<T, i>.access));
        });
        return Text::writePlain(out, detail::afterFields);
    }
}

// The text form as a string, written where it stays: there is room behind it for the longest text
// of a T.
template <class T>
String8 strepOf(const T& value) {
    return String8::written(strepMax<T>, [&value](char* out) { return writeStrep(out, value); });
}

} // namespace Vel
