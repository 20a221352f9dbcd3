#include <Vel/valueToStrep.h>

#include <Vel/textWriting.h>

namespace Vel {

namespace {

// From the start of a buffer to where a writer of textWriting.h stopped.
template <std::size_t size>
std::string_view written(const char (&buffer)[size], const char* stop) noexcept {
    return {buffer, static_cast<std::size_t>(stop - buffer)};
}

} // namespace

String8 valueToStrep(bool value) {
    char buffer[Text::truthMax];
    return String8(written(buffer, Text::writeTruth(buffer, value)));
}

String8 valueToStrep(unsigned long long value) {
    char buffer[Text::numberMax];
    return String8(written(buffer, Text::writeNumber(buffer, value)));
}

String8 valueToStrep(long long value) {
    char buffer[Text::numberMax];
    return String8(written(buffer, Text::writeNumber(buffer, value)));
}

String8 valueToStrep(const String8& value) {
    // In pieces, so that a string of any length is written through a buffer on the stack.
    constexpr std::size_t pieceLength = 64;
    char buffer[Text::quotedMax(pieceLength)];
    std::string_view rest = value.view();
    String8 strep;
    strep.reserve(rest.size() + 2);
    strep.append("'");
    for (; !rest.empty(); rest.remove_prefix(std::min(pieceLength, rest.size()))) {
        const char* stop = Text::writeQuoted(buffer, rest.substr(0, pieceLength));
        strep.append(written(buffer, stop).substr(1, static_cast<std::size_t>(stop - buffer) - 2));
    }
    return strep.append("'");
}

} // namespace Vel
