#include <Ferrolog/detail/Render.h>

#include <charconv>

namespace Ferrolog::detail {

namespace {

template <class T>
void appendNumber(std::string& text, T value, int base) {
    char digits[24];
    auto const result = std::to_chars(digits, digits + sizeof digits, value, base);
    text.append(digits, result.ptr);
}

void appendHex(std::string& text, U64 value) {
    text += "0x";
    appendNumber(text, value, 16);
}

// One argument; false if the letter is none.
bool appendArgument(std::string& text, char letter, std::span<U32 const>& words) {
    bool const wide = letter >= 'A' && letter <= 'Z';
    char const kind = wide ? static_cast<char>(letter - 'A' + 'a') : letter;
    if (std::string_view("iudx").find(kind) == std::string_view::npos) {
        return false;
    }
    std::size_t const count = wide ? 2 : 1;
    if (words.size() < count) {
        text += '?';
        words = {};
        return true;
    }
    U64 const bits = wide ? U64{words[1]} << 32 | words[0] : words[0];
    words = words.subspan(count);
    switch (kind) {
    case 'd':
        if (wide) {
            appendNumber(text, static_cast<std::int64_t>(bits), 10);
        } else {
            appendNumber(text, static_cast<std::int32_t>(bits), 10);
        }
        break;
    case 'x': appendHex(text, bits); break;
    default: appendNumber(text, bits, 10); break;
    }
    return true;
}

} // namespace

std::string render(std::string_view format, std::span<U32 const> words) {
    std::string text;
    for (std::size_t i = 0; i < format.size(); ++i) {
        char const c = format[i];
        char const next = i + 1 < format.size() ? format[i + 1] : '\0';
        if (c != '%') {
            text += c;
        } else if (next == '%') {
            text += c;
            ++i;
        } else if (appendArgument(text, next, words)) {
            ++i;
        } else {
            text += c;
        }
    }
    for (U32 const word : words) {
        text += ' ';
        appendHex(text, word);
    }
    return text;
}

std::string harmless(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string clean;
    for (char const c : text) {
        auto const byte = static_cast<U8>(c);
        if (byte >= 0x20 && byte != 0x7F) {
            clean += c;
        } else {
            clean += "\\x";
            clean += digits[byte >> 4];
            clean += digits[byte & 15];
        }
    }
    return clean;
}

} // namespace Ferrolog::detail
