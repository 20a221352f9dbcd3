#include <pinbuf/detail/FileStatus.h>

#include <fcntl.h>
#include <pinbuf/detail/Integers.h>
#include <sys/stat.h>

namespace pinbuf {
namespace {

std::optional<FileStatus> statusFrom(int result, const struct stat& found) {
    constexpr U64 blockBytes = 512; // whatever the file system's own blocks are
    if (result != 0) return std::nullopt;
    FileStatus status;
    status.identity = {found.st_dev, found.st_ino};
    status.sizeBytes = static_cast<U64>(found.st_size);
    status.mode = found.st_mode & 07777U;
    status.owner = found.st_uid;
    status.changed = std::int64_t{found.st_ctim.tv_sec} * 1'000'000'000 + found.st_ctim.tv_nsec;
    status.isRegular = S_ISREG(found.st_mode);
    status.isLink = S_ISLNK(found.st_mode);
    status.isNamed = found.st_nlink > 0;
    status.hasHoles = static_cast<U64>(found.st_blocks) * blockBytes < status.sizeBytes;
    return status;
}

} // namespace

std::optional<FileStatus> statusOf(int descriptor) {
    struct stat found {};

    return statusFrom(::fstat(descriptor, &found), found);
}

std::optional<FileStatus> statusOf(int folder, const char* name) {
    struct stat found {};

    return statusFrom(::fstatat(folder, name, &found, AT_SYMLINK_NOFOLLOW), found);
}

} // namespace pinbuf
