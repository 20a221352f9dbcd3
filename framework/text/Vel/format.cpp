#include <Vel/format.h>

#include <Vel/RangeException.h>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <system_error>

namespace Vel {

namespace {

// Makes `text` what printf would write. Returns 0, or the error number of what could not be
// written.
[[gnu::format(printf, 2, 0)]] int write(String8& text, const char* pattern,
                                        std::va_list arguments) {
    std::va_list again;
    va_copy(again, arguments);
    // Nearly every text fits here, so that it is formatted once, and its length is known before the
    // string is made.
    char first[256];
    const int length = std::vsnprintf(first, sizeof(first), pattern, arguments);
    int error = length < 0 ? errno : 0;
    if (length >= 0 && static_cast<std::size_t>(length) < sizeof(first)) {
        text = String8(std::string_view(first, static_cast<std::size_t>(length)));
    } else if (length >= 0) {
        const auto size = static_cast<std::size_t>(length);
        char* place = nullptr;
        text = String8::uninitialised(size, &place);
        if (std::vsnprintf(place, size + 1, pattern, again) != length) error = errno;
    }
    va_end(again);
    return error;
}

} // namespace

String8 format(const char* pattern, ...) {
    String8 text;
    std::va_list arguments;
    va_start(arguments, pattern);
    const int error = write(text, pattern, arguments);
    va_end(arguments);
    if (error != 0)
        throwRangeException("cannot format \"" + String8(pattern) +
                            "\": " + std::generic_category().message(error).c_str());
    return text;
}

} // namespace Vel
