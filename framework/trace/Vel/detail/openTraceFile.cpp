#include <Vel/detail/openTraceFile.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace Vel::detail {

namespace {

std::string words(int error) {
    if (error == ELOOP) return "it is a symbolic link";
    if (error == ENXIO) return "it is not a regular file"; // a fifo that nobody reads
    return std::generic_category().message(error);
}

// Empty for one that takes our lines.
std::string objectionTo(int descriptor) {
    struct stat status {};

    if (::fstat(descriptor, &status) != 0) return words(errno);
    if (!S_ISREG(status.st_mode)) return "it is not a regular file";
    if (status.st_uid != ::geteuid()) return "it belongs to another user";
    return {};
}

// Where standard streams were closed, theirs are the first numbers to be given out, and whoever
// writes to a standard stream would write into the file.
int aboveStandardStreams(int descriptor) {
    if (descriptor > STDERR_FILENO) return descriptor;
    const int above = ::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int error = errno;
    ::close(descriptor);
    errno = error;
    return above;
}

} // namespace

int openTraceFile(const char* path, std::string& why) {
    // O_NONBLOCK: a fifo of that name must not stop us before we have seen that it is one.
    constexpr int flags =
        O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY;
    const int opened = ::open(path, flags, 0600);
    const int descriptor = opened < 0 ? opened : aboveStandardStreams(opened);
    why = descriptor < 0 ? words(errno) : objectionTo(descriptor);
    if (why.empty()) return descriptor;
    if (descriptor >= 0) ::close(descriptor);
    return -1;
}

} // namespace Vel::detail
