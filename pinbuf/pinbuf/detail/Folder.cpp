#include <pinbuf/detail/Folder.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <pinbuf/detail/Error.h>
#include <sys/stat.h>

namespace pinbuf {
namespace {

constexpr mode_t ownersAccess = S_IRWXU;

bool lacksAccess(const FileStatus& folder) { return (folder.mode & ownersAccess) != ownersAccess; }

// A trailing slash would make the kernel follow a symbolic link in the last component in spite of
// O_NOFOLLOW; so would a trailing "/.".
std::string withoutTrailingSlashes(std::string path) {
    while (path.size() > 1)
        if (path.ends_with('/'))
            path.pop_back();
        else if (path.ends_with("/."))
            path.resize(path.size() - 1);
        else
            break;
    return path;
}

Descriptor openIfPossible(const std::string& path) {
    return Descriptor(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

[[noreturn]] void throwCannotOpen(const std::string& path, int error) {
    const std::string folder = "the folder " + inQuotes(path);
    const std::optional<FileStatus> found = statusOf(AT_FDCWD, path.c_str());
    if (found && found->isLink) throw Failure(folder + " is a symbolic link");
    if (error == ENOTDIR) throw Failure(folder + " is not a directory");
    if (error == ENOENT) throw Failure(folder + " has vanished");
    throw Failure("cannot open " + folder, error);
}

// Of two processes that make the folder at once one succeeds, and both look at it afterwards.
void make(const std::string& path) {
    if (::mkdir(path.c_str(), ownersAccess) != 0 && errno != EEXIST)
        throw Failure("cannot make the folder " + inQuotes(path), errno);
}

// A umask may have taken our own access to a folder away when it was made. Whether we have it now.
bool regainAccess(const std::string& path) {
    const std::optional<FileStatus> found = statusOf(AT_FDCWD, path.c_str());
    return found && found->owner == ::geteuid() && lacksAccess(*found) &&
           ::fchmodat(AT_FDCWD, path.c_str(), found->mode | ownersAccess, AT_SYMLINK_NOFOLLOW) == 0;
}

} // namespace

std::string Folder::chosenPath() {
    const char* chosen = ::secure_getenv("PINBUF_DIR");
    if (chosen != nullptr && *chosen != '\0') return withoutTrailingSlashes(chosen);
    return "/dev/shm/pinbuf-" + std::to_string(::geteuid());
}

Folder Folder::openOrMake(const std::string& path) {
    Descriptor directory = openIfPossible(path);
    if (!directory.isOpen() && errno == ENOENT) {
        make(path);
        directory = openIfPossible(path);
    }
    if (!directory.isOpen() && errno == EACCES) {
        if (!regainAccess(path)) throwCannotOpen(path, EACCES);
        directory = openIfPossible(path);
    }
    if (!directory.isOpen()) throwCannotOpen(path, errno);
    Folder folder(path, std::move(directory));
    folder.requireOurs();
    folder.requireAccess();
    return folder;
}

std::optional<Folder> Folder::openToRead(const std::string& path) {
    Descriptor directory = openIfPossible(path);
    if (directory.isOpen()) return Folder(path, std::move(directory));
    if (errno != ENOENT) throwCannotOpen(path, errno);
    return std::nullopt;
}

Folder::Folder(std::string path, Descriptor directory)
    : path_(std::move(path)), directory_(std::move(directory)) {
    const std::optional<FileStatus> status = statusOf(descriptor());
    if (!status) throw Failure("cannot examine the folder " + inQuotes(path_), errno);
    status_ = *status;
}

void Folder::requireOurs() const {
    if (status_.owner != ::geteuid()) {
        throw Failure("the folder " + inQuotes(path_) + " belongs to user " +
                      std::to_string(status_.owner) + ", not to user " +
                      std::to_string(::geteuid()));
    }
    if ((status_.mode & (S_IWGRP | S_IWOTH)) != 0)
        throw Failure("the folder " + inQuotes(path_) + " is writable by others than its owner");
}

// What we may open, as root may everything, need not be what our next process may.
void Folder::requireAccess() const {
    if (lacksAccess(status_) && ::fchmod(descriptor(), status_.mode | ownersAccess) != 0)
        throw Failure("cannot change the mode of the folder " + inQuotes(path_), errno);
}

std::string Folder::quotedPath() const { return inQuotes(path_); }

std::string Folder::quotedPathOf(std::string_view leaf) const { return inQuotes(pathOf(leaf)); }

std::string Folder::pathOf(std::string_view leaf) const {
    std::string path;
    path.reserve(path_.size() + 1 + leaf.size());
    return path.append(path_).append("/").append(leaf);
}

} // namespace pinbuf
