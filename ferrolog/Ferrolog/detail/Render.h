// Render.h - from the words of a message to what a person reads.
#pragma once

#include <Ferrolog/detail/Layout.h>

#include <span>
#include <string>
#include <string_view>

namespace Ferrolog::detail {

// The format text with each mark replaced by its argument and each "%%" by one percent sign. A mark
// that no word is left for prints as "?"; words that no mark took follow, each as " 0x..."; other
// characters after a percent sign stand.
std::string render(std::string_view format, std::span<const U32> words);

// For people, who must see one line that commands nothing: control characters, marks of direction,
// line separators and bytes that are no UTF-8 come out byte by byte as \x1b, and a backslash as
// two, so that each text has a form of its own. Everything else is as it is.
std::string harmless(std::string_view text);

} // namespace Ferrolog::detail
