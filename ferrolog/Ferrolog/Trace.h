// Trace.h - how C++ code writes a trace message.
//
//     FERROLOG("BrixoCacheTable", "Recovered entry, index: ", index, " key: ", key);
//
// First the text that names the origin, then pieces and arguments in turn, beginning with a piece;
// both may go on up to eight arguments. Pieces are string literals, also several side by side, with
// any characters but the zero byte. The call site (origin, __LINE__, format text, letters) is built
// at compile time and costs nothing until its first message.
//
// Arguments: evaluated only while tracing is on; the example's format text is "Recovered entry,
//            index: %i key: %i". Unsigned integers print as they are, signed ones with their sign,
//            bool as 0 or 1, enumerations as their numbers, pointers and hex(...) in hexadecimal.
//            64-bit ones take two words, the others one.
// Cost:      see Ferrolog.h. Off: one load, one predicted branch.
#pragma once

#include <Ferrolog/Ferrolog.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace Ferrolog {

// Prints in hexadecimal: FERROLOG("Pci", "bar ", Ferrolog::hex(address)).
template <class T>
    requires std::is_unsigned_v<T>

struct hex {
    constexpr explicit hex(T v) : value(v) {}

    T value;
};

namespace detail {

template <class T>
inline constexpr bool isHex = false;

template <class T>
inline constexpr bool isHex<hex<T>> = true;

// The letter of an argument of this type; ferrolog_site lists them.
template <class T>
constexpr char letterOf() {
    constexpr bool wide = sizeof(T) > 4;
    static_assert(sizeof(T) <= 8, "a trace argument has at most 64 bits");
    static_assert(!std::is_convertible_v<T, const char*>,
                  "a text is no argument: write the pieces side by side, without a comma");
    if constexpr (isHex<T> || std::is_pointer_v<T>) {
        return wide ? 'X' : 'x';
    } else if constexpr (std::is_enum_v<T>) {
        return letterOf<std::underlying_type_t<T>>();
    } else {
        static_assert(std::is_integral_v<T>,
                      "a trace argument is an integer, an enumerator, a pointer or hex()");
        return std::is_signed_v<T> ? (wide ? 'D' : 'd') : (wide ? 'I' : 'i');
    }
}

constexpr std::size_t wordsOfLetter(char letter) { return letter < 'a' ? 2 : 1; }

// Calls put with each character of the format text. The last piece may lack its argument.
template <std::size_t pieceCount, std::size_t letterCount, class Put>
constexpr void spellFormat(const std::array<const char*, pieceCount>& pieces,
                           const std::array<char, letterCount>& letters, Put put) {
    static_assert(pieceCount == letterCount || pieceCount == letterCount + 1,
                  "a trace message is pieces and arguments in turn, beginning with a piece");
    for (std::size_t i = 0; i < pieceCount; ++i) {
        for (const char* c = pieces[i]; *c != '\0'; ++c) {
            if (*c == '%') put('%');
            put(*c);
        }
        if (i < letterCount) {
            put('%');
            put(letters[i]);
        }
    }
}

// The format text of the pieces and the letters of `Types`, ended by a zero byte.
template <class Types, const auto& pieces>
constexpr auto makeFormat() {
    constexpr std::size_t length = [] {
        std::size_t count = 0;
        spellFormat(pieces, Types::letters, [&](char) { ++count; });
        return count;
    }();
    std::array<char, length + 1> text{};
    std::size_t at = 0;
    spellFormat(pieces, Types::letters, [&](char c) { text[at++] = c; });
    return text;
}

template <std::size_t count>
constexpr std::size_t wordCount(const std::array<char, count>& letters) {
    std::size_t words = 0;
    for (const char letter : letters) words += wordsOfLetter(letter);
    return words;
}

// The types of the arguments, taken without evaluating them.
template <class... Arguments>
struct Types {
    static constexpr std::array<char, sizeof...(Arguments)> letters = {
        letterOf<std::decay_t<Arguments>>()...};
    static constexpr std::array<char, sizeof...(Arguments) + 1> letterText = {
        letterOf<std::decay_t<Arguments>>()..., '\0'};
    static_assert(wordCount(letters) <= 15,
                  "the arguments of a trace message take at most 15 words");
};

template <class... Arguments>
Types<Arguments...> typesOf(const Arguments&...);

// The literal pieces of a call site.
template <std::size_t... size>
constexpr std::array<const char*, sizeof...(size)> piecesOf(const char (&... piece)[size]) {
    return {{piece...}};
}

template <class T>
constexpr std::uint64_t bitsOf(const T& argument) {
    if constexpr (isHex<T>)
        return argument.value;
    else if constexpr (std::is_pointer_v<T>)
        return reinterpret_cast<std::uintptr_t>(argument);
    else if constexpr (std::is_enum_v<T>)
        return bitsOf(static_cast<std::underlying_type_t<T>>(argument));
    else
        return static_cast<std::uint64_t>(argument);
}

// Turns arguments into words, in the order and widths of their letters, and appends them.
struct Appender {
    ferrolog_site& site;

    template <class... Arguments>
    void operator()(const Arguments&... argument) const {
        if constexpr (sizeof...(Arguments) == 0) {
            ferrolog_append(&site, nullptr);
        } else {
            std::array<std::uint32_t, wordCount(Types<Arguments...>::letters)> words;
            std::uint32_t* end = words.data();
            (put<std::decay_t<Arguments>>(end, argument), ...);
            ferrolog_append(&site, words.data());
        }
    }

private:
    template <class T>
    static void put(std::uint32_t*& end, const T& argument) {
        const std::uint64_t bits = bitsOf(argument);
        *end++ = static_cast<std::uint32_t>(bits);
        if constexpr (wordsOfLetter(letterOf<T>()) == 2)
            *end++ = static_cast<std::uint32_t>(bits >> 32);
    }
};

inline bool isOn() {
    return __builtin_expect(__atomic_load_n(&ferrolog_state, __ATOMIC_RELAXED) != 0, 0) != 0;
}

} // namespace detail
} // namespace Ferrolog

#define FERROLOG(origin, ...)                                                                      \
    do {                                                                                           \
        if (::Ferrolog::detail::isOn()) {                                                          \
            using FerrologTypes = decltype(::Ferrolog::detail::typesOf(                            \
                FERROLOG_EXPAND(FERROLOG_VALUES(__VA_ARGS__))));                                   \
            static constexpr auto ferrologPieces =                                                 \
                ::Ferrolog::detail::piecesOf(FERROLOG_EXPAND(FERROLOG_PIECES(__VA_ARGS__)));       \
            static constexpr auto ferrologFormat =                                                 \
                ::Ferrolog::detail::makeFormat<FerrologTypes, ferrologPieces>();                   \
            static constinit ferrolog_site ferrologSite = {                                        \
                origin, ferrologFormat.data(), FerrologTypes::letterText.data(), __LINE__, 0};     \
            ::Ferrolog::detail::Appender{ferrologSite}(                                            \
                FERROLOG_EXPAND(FERROLOG_VALUES(__VA_ARGS__)));                                    \
        }                                                                                          \
    } while (false)

// Every other one of their arguments: PIECES the first, third, ...; VALUES the second, fourth, ...
// A macro does not expand within itself, so each step leaves the next one's name apart from its
// parentheses, and EXPAND looks again.
#define FERROLOG_PIECES(piece, ...)                                                                \
    piece "" __VA_OPT__(FERROLOG_PIECES_STEP FERROLOG_PAREN(__VA_ARGS__))
#define FERROLOG_PIECES_AFTER(value, ...)                                                          \
    __VA_OPT__(, FERROLOG_PIECES_AGAIN FERROLOG_PAREN(__VA_ARGS__))
#define FERROLOG_PIECES_STEP() FERROLOG_PIECES_AFTER
#define FERROLOG_PIECES_AGAIN() FERROLOG_PIECES
#define FERROLOG_VALUES(piece, ...) __VA_OPT__(FERROLOG_VALUES_STEP FERROLOG_PAREN(__VA_ARGS__))
#define FERROLOG_VALUES_FROM(value, ...)                                                           \
    value __VA_OPT__(FERROLOG_VALUES_AGAIN FERROLOG_PAREN(__VA_ARGS__))
#define FERROLOG_VALUES_MORE(piece, ...)                                                           \
    __VA_OPT__(, FERROLOG_VALUES_STEP FERROLOG_PAREN(__VA_ARGS__))
#define FERROLOG_VALUES_STEP() FERROLOG_VALUES_FROM
#define FERROLOG_VALUES_AGAIN() FERROLOG_VALUES_MORE
#define FERROLOG_PAREN ()
#define FERROLOG_EXPAND(...) FERROLOG_EXPAND_9(FERROLOG_EXPAND_9(__VA_ARGS__))
#define FERROLOG_EXPAND_9(...) FERROLOG_EXPAND_3(FERROLOG_EXPAND_3(FERROLOG_EXPAND_3(__VA_ARGS__)))
#define FERROLOG_EXPAND_3(...) FERROLOG_EXPAND_1(FERROLOG_EXPAND_1(FERROLOG_EXPAND_1(__VA_ARGS__)))
#define FERROLOG_EXPAND_1(...) __VA_ARGS__
