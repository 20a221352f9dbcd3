#include <Ferrolog/detail/Render.h>

#include <algorithm>
#include <charconv>

namespace Ferrolog::detail {

namespace {

template <class T>
void appendNumber(std::string& text, T value, int base) {
    char digits[24];
    const auto result = std::to_chars(digits, digits + sizeof digits, value, base);
    text.append(digits, result.ptr);
}

void appendHex(std::string& text, U64 value) {
    text += "0x";
    appendNumber(text, value, 16);
}

// One argument; false if the letter is none.
bool appendArgument(std::string& text, char letter, std::span<const U32>& words) {
    const bool wide = letter >= 'A' && letter <= 'Z';
    const char kind = wide ? static_cast<char>(letter - 'A' + 'a') : letter;
    if (std::string_view("iudx").find(kind) == std::string_view::npos) return false;
    const std::size_t count = wide ? 2 : 1;
    if (words.size() < count) {
        text += '?';
        words = {};
        return true;
    }
    const U64 bits = wide ? U64{words[1]} << 32 | words[0] : words[0];
    words = words.subspan(count);
    switch (kind) {
    case 'd':
        if (wide)
            appendNumber(text, static_cast<std::int64_t>(bits), 10);
        else
            appendNumber(text, static_cast<std::int32_t>(bits), 10);
        break;
    case 'x': appendHex(text, bits); break;
    default: appendNumber(text, bits, 10); break;
    }
    return true;
}

// A character of UTF-8, and how many bytes it takes; 0: there is none.
struct Character {
    U32 code = 0;
    std::size_t length = 0;
};

// The first character. A code has one form only, the shortest; halves of pairs are none.
Character decode(std::string_view text) {
    const auto first = static_cast<U8>(text.front());
    if (first < 0x80) return {first, 1};
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || text.size() < length) return {};
    U32 code = first & (0x7FU >> length);
    for (const char c : text.substr(1, length - 1)) {
        const auto next = static_cast<U8>(c);
        if (next >> 6 != 2) return {};
        code = code << 6 | (next & 0x3FU);
    }
    constexpr U32 least[] = {0x80, 0x800, 0x10000};
    const bool isPart = code >= 0xD800 && code <= 0xDFFF;
    return code < least[length - 2] || code > 0x10FFFF || isPart ? Character{}
                                                                 : Character{code, length};
}

struct Range {
    U32 first;
    U32 last;
};

// What a terminal obeys, or an editor: controls, marks and embeddings of direction, ends of lines.
constexpr Range commands[] = {{0, 0x1F},        {0x7F, 0x9F},     {0x61C, 0x61C},
                              {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2066, 0x2069}};

// Bytes of the first character, 0 if it is one to be shown as its bytes.
std::size_t lengthOfReadable(std::string_view text) {
    if (text.front() >= ' ' && text.front() <= '~') return 1;
    const Character character = decode(text);
    const bool isCommand = std::ranges::any_of(commands, [&](const Range& range) {
        return character.code >= range.first && character.code <= range.last;
    });
    return isCommand ? 0 : character.length;
}

void appendByte(std::string& text, U8 byte) {
    constexpr std::string_view digits = "0123456789abcdef";
    text += "\\x";
    text += digits[byte >> 4];
    text += digits[byte & 15];
}

} // namespace

std::string render(std::string_view format, std::span<const U32> words) {
    std::string text;
    for (std::size_t i = 0; i < format.size(); ++i) {
        const char c = format[i];
        const char next = i + 1 < format.size() ? format[i + 1] : '\0';
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
    for (const U32 word : words) {
        text += ' ';
        appendHex(text, word);
    }
    return text;
}

std::string harmless(std::string_view text) {
    std::string clean;
    while (!text.empty()) {
        const std::size_t length = lengthOfReadable(text);
        if (length == 0)
            appendByte(clean, static_cast<U8>(text.front()));
        else if (text.front() == '\\')
            clean += "\\\\";
        else
            clean += text.substr(0, length);
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return clean;
}

} // namespace Ferrolog::detail
