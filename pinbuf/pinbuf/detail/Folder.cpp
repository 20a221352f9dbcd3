#include <pinbuf/detail/Folder.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <pinbuf/detail/Error.h>
#include <sys/stat.h>

namespace pinbuf {
namespace {

// A trailing slash would make the kernel follow a symbolic link in the last component in spite of
// O_NOFOLLOW; so would a trailing "/.".
std::string withoutTrailingSlashes(std::string path) {
    while (path.size() > 1) {
        if (path.ends_with('/'))
            path.pop_back();
        else if (path.ends_with("/."))
            path.resize(path.size() - 1);
        else
            break;
    }
    return path;
}

// The open directory, or a closed descriptor when there is none.
Descriptor openDirectory(const std::string& path) {
    Descriptor directory(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (directory.isOpen() || errno == ENOENT) return directory;

    const int error = errno;

    const std::optional<FileStatus> found = statusOf(AT_FDCWD, path.c_str());
    if (found && found->isLink) {
        throw Failure("the folder " + inQuotes(path) + " is a symbolic link");
    }
    if (error == ENOTDIR) throw Failure("the folder " + inQuotes(path) + " is not a directory");
    throw Failure("cannot open the folder " + inQuotes(path), error);
}

} // namespace

std::string Folder::chosenPath() {
    const char* chosen = std::getenv("PINBUF_DIR");
    if (chosen != nullptr && *chosen != '\0') return withoutTrailingSlashes(chosen);
    return "/dev/shm/pinbuf-" + std::to_string(::geteuid());
}

Folder Folder::openOrMake(const std::string& path) {
    // Made first and looked at afterwards: of two processes that start at once one makes it, and
    // both check it.
    if (::mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) {
        throw Failure("cannot make the folder " + inQuotes(path), errno);
    }
    Descriptor directory = openDirectory(path);
    if (!directory.isOpen()) throw Failure("the folder " + inQuotes(path) + " has vanished");
    Folder folder(path, std::move(directory));
    folder.requireOurs();
    return folder;
}

std::optional<Folder> Folder::openToRead(const std::string& path) {
    Descriptor directory = openDirectory(path);
    if (!directory.isOpen()) return std::nullopt;
    return Folder(path, std::move(directory));
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
    if ((status_.mode & (S_IWGRP | S_IWOTH)) != 0) {
        throw Failure("the folder " + inQuotes(path_) + " is writable by others than its owner");
    }
}

std::string Folder::quotedPath() const { return inQuotes(path_); }

std::string Folder::quotedPathOf(std::string_view leaf) const {
    return inQuotes(path_ + "/" + std::string(leaf));
}

} // namespace pinbuf
