// RegionName.h - the name of a region, proven to stay inside the folder.
//
// Invariant: 1 to 127 bytes, no '/', no control character (0x01..0x1f, 0x7f), not beginning with
//            '.'. So the name is one path component, is neither "." nor "..", and cannot be one of
//            the folder's own files, which all begin with a dot. Bytes from 0x80 up are allowed as
//            they stand.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace pinbuf {

class RegionName {
public:
    static constexpr std::size_t maxBytes = 127;

    // Throws Failure with the reason when `text` is null or no region name.
    explicit RegionName(const char* text);

    const std::string& text() const { return text_; }

    // What keeps `text` from being a region name; "" when nothing does.
    static std::string_view objectionTo(std::string_view text);

private:
    std::string text_;
};

} // namespace pinbuf
