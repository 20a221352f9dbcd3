#include <pinbuf/detail/FolderFile.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <pinbuf/detail/Error.h>
#include <pinbuf/detail/Integers.h>
#include <sys/stat.h>

namespace pinbuf {
namespace {

constexpr U64 reserveStepBytes = 1U << 20U;

// O_NONBLOCK: opening a named pipe that somebody left there must not wait for its other end.
constexpr int safely = O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

constexpr mode_t privateMode = S_IRUSR | S_IWUSR;

// Why a file that exists could not be opened.
Failure openFailure(const std::string& quotedPath, int error) {
    if (error == ELOOP) return Failure(quotedPath + " is a symbolic link");
    if (error == EISDIR || error == ENXIO) return Failure(quotedPath + " is not a regular file");
    return Failure("cannot open " + quotedPath, error);
}

// Calls `transfer(done)`, which moves some bytes and says how many, until all have moved.
template <typename Transfer>
void transferAll(std::size_t sizeBytes, std::string_view verb, const FolderFile& file,
                 Transfer transfer) {
    std::size_t done = 0;
    while (done < sizeBytes) {
        const ssize_t moved = transfer(done);
        if (moved < 0 && errno == EINTR) continue;
        const int error = errno;
        if (moved <= 0) {
            const std::string what = "cannot " + std::string(verb) + " " + file.quotedPath();
            throw moved < 0 ? Failure(what, error) : Failure(what + ": it ended early");
        }
        done += static_cast<std::size_t>(moved);
    }
}

} // namespace

FolderFile::FolderFile(std::string path, Descriptor descriptor)
    : path_(std::move(path)), descriptor_(std::move(descriptor)) {
    const std::optional<FileStatus> status = statusOf(descriptor_.number());
    if (!status) throw Failure("cannot examine " + quotedPath(), errno);
    if (!status->isRegular) throw Failure(quotedPath() + " is not a regular file");
    status_ = *status;
}

std::optional<FolderFile> FolderFile::openWith(const Folder& folder, const std::string& leaf,
                                               int flags) {
    Descriptor descriptor(::openat(folder.descriptor(), leaf.c_str(), flags | safely));
    if (!descriptor.isOpen() && errno == ENOENT) return std::nullopt;
    if (!descriptor.isOpen()) throw openFailure(folder.quotedPathOf(leaf), errno);
    return FolderFile(folder.pathOf(leaf), std::move(descriptor));
}

std::optional<FolderFile> FolderFile::open(const Folder& folder, const std::string& leaf) {
    std::optional<FolderFile> file = openWith(folder, leaf, O_RDWR);
    if (file) file->requireOurs();
    return file;
}

FolderFile FolderFile::openOrMake(const Folder& folder, const std::string& leaf) {
    const auto open = [&] {
        return ::openat(folder.descriptor(), leaf.c_str(), O_RDWR | O_CREAT | safely, privateMode);
    };
    Descriptor descriptor(open());
    // A umask may have taken our own access away from a file that somebody made a moment ago.
    if (!descriptor.isOpen() && errno == EACCES &&
        ::fchmodat(folder.descriptor(), leaf.c_str(), privateMode, AT_SYMLINK_NOFOLLOW) == 0)
        descriptor = Descriptor(open());
    if (!descriptor.isOpen()) throw openFailure(folder.quotedPathOf(leaf), errno);
    FolderFile file(folder.pathOf(leaf), std::move(descriptor));
    file.requireOurs();
    file.makePrivate();
    return file;
}

std::string FolderFile::quotedPath() const { return inQuotes(path_); }

bool FolderFile::lookAgain() {
    const std::optional<FileStatus> now = statusOf(descriptor());
    if (!now || now->identity != status_.identity) {
        descriptor_.release();
        return false;
    }
    status_ = *now;
    return true;
}

void FolderFile::requireOurs() const {
    if (status_.owner == ::geteuid()) return;
    throw Failure(quotedPath() + " belongs to user " + std::to_string(status_.owner) +
                  ", not to user " + std::to_string(::geteuid()));
}

std::optional<FolderFile> FolderFile::openToRead(const Folder& folder, const std::string& leaf) {
    return openWith(folder, leaf, O_RDONLY);
}

void FolderFile::makePrivate() const {
    if (status_.mode == privateMode) return;
    if (::fchmod(descriptor(), privateMode) != 0)
        throw Failure("cannot change the mode of " + quotedPath(), errno);
}

void FolderFile::readAt(U64 offsetBytes, void* to, std::size_t sizeBytes) const {
    transferAll(sizeBytes, "read", *this, [&](std::size_t done) {
        return ::pread(descriptor(), static_cast<std::byte*>(to) + done, sizeBytes - done,
                       static_cast<off_t>(offsetBytes + done));
    });
}

void FolderFile::writeAt(U64 offsetBytes, const void* from, std::size_t sizeBytes) const {
    transferAll(sizeBytes, "write", *this, [&](std::size_t done) {
        return ::pwrite(descriptor(), static_cast<const std::byte*>(from) + done, sizeBytes - done,
                        static_cast<off_t>(offsetBytes + done));
    });
}

int reserveBytes(int descriptor, U64 offsetBytes, U64 lengthBytes) {
    return ::posix_fallocate(descriptor, static_cast<off_t>(offsetBytes),
                             static_cast<off_t>(lengthBytes));
}

void reserveRange(int descriptor, U64 beginBytes, U64 endBytes, Reserve reserve) {
    for (U64 offset = beginBytes; offset < endBytes;) {
        const U64 stepBytes = std::min(reserveStepBytes, endBytes - offset);
        const int error = reserve(descriptor, offset, stepBytes);
        if (error == EINTR) continue;
        if (error != 0) {
            throw Failure("cannot reserve " + std::to_string(endBytes - beginBytes) + " bytes",
                          error);
        }
        offset += stepBytes;
    }
}

void reserveHoles(const FolderFile& file) {
    // The bare system call: where a file system lacks it, the library's substitute rewrites bytes
    // that are there, and might undo what another process stores at that moment.
    reserveRange(file.descriptor(), 0, file.sizeBytes(),
                 [](int descriptor, U64 offsetBytes, U64 lengthBytes) {
                     const int result = ::fallocate(descriptor, 0, static_cast<off_t>(offsetBytes),
                                                    static_cast<off_t>(lengthBytes));
                     return result == 0 ? 0 : errno;
                 });
}

UnfinishedFile::UnfinishedFile(const Folder& folder, std::string unfinishedLeaf)
    : folder_(folder), leaf_(std::move(unfinishedLeaf)) {
    const auto make = [&] {
        return ::openat(folder_.descriptor(), leaf_.c_str(), O_RDWR | O_CREAT | O_EXCL | safely,
                        privateMode);
    };
    Descriptor descriptor(make());
    if (!descriptor.isOpen() && errno == EEXIST) { // what a killed process left
        if (::unlinkat(folder_.descriptor(), leaf_.c_str(), 0) != 0)
            throw Failure("cannot remove " + folder_.quotedPathOf(leaf_), errno);
        descriptor = Descriptor(make());
    }
    if (!descriptor.isOpen()) throw Failure("cannot make " + folder_.quotedPathOf(leaf_), errno);
    file_ = FolderFile(folder_.pathOf(leaf_), std::move(descriptor));
    file_->makePrivate(); // a umask may have taken the owner's own access away
}

UnfinishedFile::~UnfinishedFile() {
    if (leaf_.empty()) return;
    // What cannot be removed now is removed by the next making, as after a kill.
    [[maybe_unused]] const int result = ::unlinkat(folder_.descriptor(), leaf_.c_str(), 0);
}

void UnfinishedFile::publishAs(const std::string& leaf) {
    if (::renameat2(folder_.descriptor(), leaf_.c_str(), folder_.descriptor(), leaf.c_str(),
                    RENAME_NOREPLACE) != 0)
        throw Failure("cannot make " + folder_.quotedPathOf(leaf), errno);
    leaf_.clear();
}

} // namespace pinbuf
