#include <pinbuf/detail/LockFile.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <pinbuf/detail/Error.h>
#include <pinbuf/detail/Turn.h>
#include <unistd.h>

namespace pinbuf {
namespace {

// The record lock of one byte of the file.
struct flock recordOf(std::uint64_t number, short type) {
    struct flock record {};

    record.l_type = type;
    record.l_whence = SEEK_SET;
    // An inode number has 64 bits, an offset 63: the lower ones tell files of one folder apart, too.
    record.l_start = static_cast<off_t>(number & std::numeric_limits<std::int64_t>::max());
    record.l_len = 1;
    return record;
}

} // namespace

LockFile::LockFile(const FileIdentity& folder, FolderFile file)
    : folder_(folder), file_(std::move(file)), forks_(Turn::forks()) {}

std::vector<std::unique_ptr<LockFile>>& LockFile::all() {
    static constinit TurnState<std::vector<std::unique_ptr<LockFile>>> files;
    return files.get();
}

LockFile& LockFile::openOrMake(const Folder& folder) {
    if (LockFile* const known = find(folder); known != nullptr) return *known;
    // Before another file gets the number of one that somebody closed: then nothing of somebody
    // else's is closed later.
    for (const std::unique_ptr<LockFile>& other : all()) {
        if (!other->isOpen()) other->file_.abandon();
    }
    return keep(folder, FolderFile::openOrMake(folder, leaf));
}

LockFile* LockFile::find(const Folder& folder) {
    for (const std::unique_ptr<LockFile>& file : all()) {
        if (file->folder_ == folder.identity() && file->isCurrent(folder)) return file.get();
    }
    return nullptr;
}

// Those that are not of use any more are given up here: a program that removes and makes folders
// again and again does not run out of descriptors.
LockFile& LockFile::keep(const Folder& folder, FolderFile file) {
    std::vector<std::unique_ptr<LockFile>>& files = all();
    std::erase_if(files, [&folder](const std::unique_ptr<LockFile>& other) {
        return other->folder_ == folder.identity() || other->isRemoved();
    });
    files.push_back(std::unique_ptr<LockFile>(new LockFile(folder.identity(), std::move(file))));
    return *files.back();
}

// Whether the folder's lock file is this one, and its descriptor still ours: a program may close
// what it does not know.
bool LockFile::isCurrent(const Folder& folder) const {
    const std::optional<FileStatus> named = statusOf(folder.descriptor(), leaf);
    return named && named->identity == identity() && isOpen();
}

bool LockFile::isOpen() const {
    const std::optional<FileStatus> open = statusOf(file_.descriptor());
    return open && open->identity == identity();
}

bool LockFile::isRemoved() const {
    const std::optional<FileStatus> open = statusOf(file_.descriptor());
    return !open || !open->isNamed;
}

std::vector<std::uint64_t>& LockFile::held() {
    if (forks_ != Turn::forks()) { // what the parent holds
        held_.clear();
        forks_ = Turn::forks();
    }
    return held_;
}

LockFile::Hold LockFile::hold(std::uint64_t number) {
    std::vector<std::uint64_t>& ours = held();
    if (std::ranges::find(ours, number) != ours.end()) return {false, ::getpid()};
    ours.reserve(ours.size() + 1);
    while (!tryLock(number)) {
        // Who has it may give it up between the two questions.
        if (const std::optional<int> holder = holderOf(number)) return {false, *holder};
    }
    ours.push_back(number);
    return {true, ::getpid()};
}

bool LockFile::tryLock(std::uint64_t number) const {
    const struct flock record = recordOf(number, F_WRLCK);
    while (::fcntl(file_.descriptor(), F_SETLK, &record) != 0) {
        if (errno == EAGAIN || errno == EACCES) return false;
        if (errno != EINTR) throw Failure("cannot lock " + file_.quotedPath(), errno);
    }
    return true;
}

std::optional<int> LockFile::holderOf(std::uint64_t number) const {
    struct flock record = recordOf(number, F_WRLCK);
    if (::fcntl(file_.descriptor(), F_GETLK, &record) != 0) {
        throw Failure("cannot examine the locks of " + file_.quotedPath(), errno);
    }
    if (record.l_type == F_UNLCK) return std::nullopt;
    return std::max(static_cast<int>(record.l_pid), 0); // -1: no process, but an open file has it
}

} // namespace pinbuf
