#include <Vel/sequenceToValue.h>

#include <Vel/RangeException.h>
#include <Vel/format.h>
#include <Vel/textReading.h>

namespace Vel {

namespace {

using Cursor = String8::IteratorConst;

Cursor afterBlanks(const Cursor& it, const Cursor& end) {
    return it + (Text::skipBlanks(it.charPtr(), end.charPtr()) - it.charPtr());
}

template <class T>
T readInteger(Cursor& it, const Cursor& end, T* value) {
    const Cursor start = afterBlanks(it, end);
    const char* pos = start.charPtr();
    T number = 0;
    const Text::Number result = Text::readNumber(pos, end.charPtr(), number);
    const Cursor stop = start + (pos - start.charPtr());
    if (result == Text::Number::absent) cannotConvert(it, end, typeid(T));
    if (result == Text::Number::outOfRange) numberOutOfRange(it, stop, typeid(T));
    it = stop;
    if (value != nullptr) *value = number;
    return number;
}

[[noreturn]] void badEscape(const Cursor& backslash) {
    throw RangeException(format("unknown escape in string at column %lld", backslash.column()));
}

// The byte that an escape stands for. `it` stands on the backslash, of which the caller knows that
// something follows it, and moves behind the escape.
char readEscape(Cursor& it, const Cursor& end) {
    static constexpr std::string_view letters = "\\'\"abfnrtv";
    static constexpr std::string_view bytes = "\\'\"\a\b\f\n\r\t\v";
    const Cursor backslash = it;
    const char letter = static_cast<char>(*++it);
    ++it;
    if (const std::size_t known = letters.find(letter); known != std::string_view::npos)
        return bytes[known];
    if (letter == 'x') {
        if (end - it < 2) badEscape(backslash);
        const unsigned high = Text::hexDigitValue(it.charPtr()[0]);
        const unsigned low = Text::hexDigitValue(it.charPtr()[1]);
        if (high > 15 || low > 15) badEscape(backslash);
        it += 2;
        return static_cast<char>(high << 4 | low);
    }
    const auto isOctal = [](char c) { return c >= '0' && c <= '7'; };
    if (!isOctal(letter)) badEscape(backslash);
    auto byte = static_cast<unsigned>(letter - '0');
    for (int more = 2; more > 0 && it != end && isOctal(it.charPtr()[0]); --more, ++it)
        byte = byte << 3 | static_cast<unsigned>(it.charPtr()[0] - '0');
    if (byte > 255) badEscape(backslash);
    return static_cast<char>(byte);
}

// The string that opens at `it`, escapes resolved; `it` moves behind the closing quote.
String8 readQuoted(Cursor& it, const Cursor& end) {
    const Cursor open = it;
    const auto quote = *it++;
    String8 text;
    while (it != end && *it != quote) {
        const Cursor plain = it;
        while (it != end && *it != quote && *it != '\\') ++it;
        text.append({plain.charPtr(), static_cast<std::size_t>(it - plain)});
        if (end - it >= 2 && *it == '\\') {
            const char byte = readEscape(it, end);
            text.append({&byte, 1});
        } else if (it != end && *it == '\\') {
            it = end;
        }
    }
    if (it == end) throw RangeException(format("string without end at column %lld", open.column()));
    ++it;
    return text;
}

} // namespace

String8 sequenceToValue(Cursor& it, const Cursor& end, String8* value) {
    Cursor pos = afterBlanks(it, end);
    if (pos == end || (*pos != '\'' && *pos != '"')) cannotConvert(it, end, typeid(String8));
    const char* p = pos.charPtr();
    std::string_view plain;
    String8 text;
    if (Text::readPlainQuoted(p, end.charPtr(), plain)) {
        text = String8(plain);
        pos += p - pos.charPtr();
    } else {
        text = readQuoted(pos, end);
    }
    it = pos;
    if (value != nullptr) *value = text;
    return text;
}

bool sequenceToValue(Cursor& it, const Cursor& end, bool* value) {
    const Cursor start = afterBlanks(it, end);
    const char* pos = start.charPtr();
    bool truth = false;
    if (!Text::readTruth(pos, end.charPtr(), truth)) cannotConvert(it, end, typeid(bool));
    it = start + (pos - start.charPtr());
    if (value != nullptr) *value = truth;
    return truth;
}

long long sequenceToValue(Cursor& it, const Cursor& end, long long* value) {
    return readInteger(it, end, value);
}

unsigned long long sequenceToValue(Cursor& it, const Cursor& end, unsigned long long* value) {
    return readInteger(it, end, value);
}

} // namespace Vel
