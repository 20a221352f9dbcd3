#include <Ferrolog/detail/openFile.h>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace Ferrolog::detail {

namespace {

// The descriptor itself, or else another one for the same open file in place of it.
int aboveTheStandardStreams(int descriptor) {
    if (descriptor < 0 || descriptor > STDERR_FILENO) return descriptor;
    const int moved = ::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int error = errno == EINVAL ? EMFILE : errno; // the limit lies below the number asked for
    ::close(descriptor);
    errno = error;
    return moved;
}

} // namespace

int openFile(const char* path, int flags, mode_t mode) {
    int descriptor = -1;
    do {
        descriptor = ::open(path, flags | O_CLOEXEC, mode);
    } while (descriptor < 0 && errno == EINTR);
    return aboveTheStandardStreams(descriptor);
}

} // namespace Ferrolog::detail
