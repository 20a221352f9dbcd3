#include <Ferrolog/detail/Complaint.h>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <unistd.h>

namespace Ferrolog::detail {

namespace {

constinit std::mutex lineMutex;
constinit std::array<char, 512> line{};

} // namespace

void complain(char const* format, ...) {
    int const savedErrno = errno;
    std::array<char, 512> text{"Ferrolog: "};
    std::size_t const start = std::strlen(text.data());
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text.data() + start, text.size() - start, format, arguments);
    va_end(arguments);
    {
        std::lock_guard const lock(lineMutex);
        line = text;
    }
    std::size_t const length = std::strlen(text.data());
    text[length] = '\n'; // in place of the end mark: nothing reads it as a C string any more
    [[maybe_unused]] auto const written = ::write(STDERR_FILENO, text.data(), length + 1);
    errno = savedErrno;
}

char const* lastComplaint() { return line.data(); }

} // namespace Ferrolog::detail
