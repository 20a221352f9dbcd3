// Complaint.h - the one line that says what went wrong.
#pragma once

namespace Ferrolog::detail {

// Prints "Ferrolog: ", the formatted text and a newline on standard error, in one write, and keeps
// the line for ferrolog_error(). Lines are cut at 511 bytes. errno stays as it is.
[[gnu::format(printf, 1, 2)]] void complain(char const* format, ...);

// The last line, without its newline; "" at first.
char const* lastComplaint();

} // namespace Ferrolog::detail
