// EnumNames.h - an enumeration's names as strings that the compiler makes, and from a name to its
// number.
//
// Strings: eternal, see String8::ofEternal(): handing one out is one load, and nobody counts or
//          frees it.
// Numbers: a name is compared with those of its length alone, as a few words each.
#pragma once

#include <Vel/Integers.h>
#include <Vel/String8.h>
#include <Vel/value/Enum.h>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>
#include <utility>

namespace Vel {

// EternalText - the data of a string, without an allocation.
template <std::size_t length>
class EternalText {
public:
    // `text` has `length` characters.
    constexpr explicit EternalText(std::string_view text) : data_(0, length, 0, text) {
        for (std::size_t i = String8::Data::charsWithin; i < length; ++i)
            more_[i - String8::Data::charsWithin] = text[i];
    }

    constexpr const String8::Data* data() const noexcept { return &data_; }

private:
    static constexpr std::size_t size = length + 1; // with the NUL

    String8::Data data_;
    char more_[size > String8::Data::charsWithin ? size - String8::Data::charsWithin : 1] = {};
};

// In numeric order.
template <DeclaredEnum E>
using EnumNames = std::array<const String8::Data*, enumSchema<E>.names().size()>;

namespace detail {

template <DeclaredEnum E, std::size_t number>
inline constexpr EternalText<enumSchema<E>.names()[number].size()> nameText(
    enumSchema<E>.names()[number]);

// In words, the last of which may lie over the one before: GCC calls memcmp where the number of
// characters is odd.
template <class Word, std::size_t size, std::size_t... word>
bool sameInWords(const char* a, const char* b, std::index_sequence<word...>) noexcept {
    const auto same = [a, b](std::size_t at) {
        Word left;
        Word right;
        std::memcpy(&left, a + at, sizeof left);
        std::memcpy(&right, b + at, sizeof right);
        return left == right;
    };
    constexpr std::size_t last = size - sizeof(Word);
    return (same(word * sizeof(Word) < last ? word * sizeof(Word) : last) && ...);
}

template <std::size_t size>
bool sameCharacters(const char* a, const char* b) noexcept {
    using Word = std::conditional_t<
        size >= sizeof(std::uintptr_t), std::uintptr_t,
        std::conditional_t<size >= sizeof(U32), U32, std::conditional_t<size >= 2, U16, U8>>>;
    constexpr std::size_t words = (size + sizeof(Word) - 1) / sizeof(Word);
    return sameInWords<Word, size>(a, b, std::make_index_sequence<words>());
}

template <DeclaredEnum E, std::size_t number>
bool isNameOf(std::string_view text) noexcept {
    constexpr std::string_view name = enumSchema<E>.names()[number];
    return text.size() == name.size() && sameCharacters<name.size()>(text.data(), name.data());
}

template <DeclaredEnum E>
using EnumeratorsOf = std::make_index_sequence<enumSchema<E>.names().size()>;

template <DeclaredEnum E, std::size_t... number>
constexpr EnumNames<E> namesAt(std::index_sequence<number...> /*all*/) {
    return {nameText<E, number>.data()...};
}

template <DeclaredEnum E, std::size_t... number>
S32 numberOf(std::string_view name, std::index_sequence<number...> /*all*/) noexcept {
    S32 found = -1;
    static_cast<void>(((isNameOf<E, number>(name) && ((found = S32{number}), true)) || ...));
    return found;
}

} // namespace detail

template <DeclaredEnum E>
constexpr EnumNames<E> enumNames() {
    return detail::namesAt<E>(detail::EnumeratorsOf<E>());
}

// The number of a name, exactly as written; -1 for any other text.
template <DeclaredEnum E>
S32 enumNumber(std::string_view name) noexcept {
    return detail::numberOf<E>(name, detail::EnumeratorsOf<E>());
}

} // namespace Vel
