// Error.h - how a call fails: one exception inside, one line outside.
//
// Inside the library a step that cannot go on throws Failure with the reason. The face catches it
// and reports the one line that the user sees: `call: region "name": reason`.
#pragma once

#include <exception>
#include <string>
#include <string_view>

namespace pinbuf {

// Why a call fails, in words that need no look into the code.
class Failure : public std::exception {
public:
    explicit Failure(std::string reason) : reason_(std::move(reason)) {}

    // `what` could not be done: "<what>: <text of the system's error number>".
    Failure(std::string what, int errorNumber);

    const char* what() const noexcept override { return reason_.c_str(); }

private:
    std::string reason_;
};

// `text` between double quotes. A double quote, a backslash and a control character become \xNN:
// still one line.
std::string inQuotes(std::string_view text);

// Writes the line to standard error in one piece and keeps it for lastError(). `name` null: the
// line names no region. A name is shown by its first 127 bytes, a line by its first 1020, with
// "..." behind what was cut. Allocates nothing, so that it can also report that memory has run out.
void report(std::string_view call, const char* name, std::string_view reason) noexcept;

// Writes "pinbuf: <text>" to standard error, cut like a reported line, and keeps it nowhere: what a
// call that goes on has to say.
void notice(std::string_view text) noexcept;

// The last reported line of this thread, or "" after clearError().
const char* lastError() noexcept;
void clearError() noexcept;

} // namespace pinbuf
