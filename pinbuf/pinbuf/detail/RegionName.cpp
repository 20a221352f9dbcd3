#include <pinbuf/detail/RegionName.h>

#include <algorithm>
#include <cstring>
#include <pinbuf/detail/Error.h>

namespace pinbuf {
namespace {

bool isControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7f;
}

} // namespace

RegionName::RegionName(const char* text) {
    if (text == nullptr) throw Failure("the name is null");
    // One byte more than allowed is enough to see that a name is too long, however long it is.
    text_.assign(text, ::strnlen(text, maxBytes + 1));
    if (const std::string_view objection = objectionTo(text_); !objection.empty())
        throw Failure("the name " + std::string(objection));
}

std::string_view RegionName::objectionTo(std::string_view text) {
    if (text.empty()) return "is empty";
    if (text.size() > maxBytes) return "is longer than 127 bytes";
    if (text.front() == '.') return "begins with a dot";
    if (text.find('/') != std::string_view::npos) return "contains a slash";
    if (std::ranges::any_of(text, isControl)) return "contains a control character";
    return "";
}

} // namespace pinbuf
