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
std::string render(std::string_view format, std::span<U32 const> words);

// Control characters and DEL as \x1b; everything else, UTF-8 too, as it is.
std::string harmless(std::string_view text);

} // namespace Ferrolog::detail
