#include <pinbuf/detail/LockFile.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <limits>
#include <pinbuf/detail/Error.h>
#include <pinbuf/detail/Integers.h>
#include <pinbuf/detail/Turn.h>
#include <thread>
#include <unistd.h>

namespace pinbuf {
namespace {

// The record lock of one byte of the file.
struct flock recordOf(U64 number, int type) {
    struct flock record {};

    record.l_type = static_cast<short>(type);
    record.l_whence = SEEK_SET;
    // An inode number has 64 bits, an offset 63: the lower ones tell files of one folder apart,
    // too.
    record.l_start = static_cast<off_t>(number & std::numeric_limits<std::int64_t>::max());
    record.l_len = 1;
    return record;
}

int typeOf(LockFile::Mode mode) { return mode == LockFile::Mode::exclusive ? F_WRLCK : F_RDLCK; }

} // namespace

LockFile::LockFile(const FileIdentity& folder, FolderFile file, bool mayChange)
    : folder_(folder), file_(std::move(file)), mayChange_(mayChange), forks_(Turn::forks()) {}

std::vector<std::unique_ptr<LockFile>>& LockFile::all() {
    static constinit TurnState<std::vector<std::unique_ptr<LockFile>>> files;
    return files.get();
}

LockFile& LockFile::openOrMake(const Folder& folder) {
    LockFile* const known = find(folder);
    if (known != nullptr && known->mayChange_) return *known;
    giveUpOthers(folder);
    return keep(folder, FolderFile::openOrMake(folder, leaf), true);
}

LockFile* LockFile::openToRead(const Folder& folder) {
    if (LockFile* const known = find(folder); known != nullptr) return known;
    giveUpOthers(folder);
    std::optional<FolderFile> file = FolderFile::openToRead(folder, leaf);
    return file ? &keep(folder, std::move(*file), false) : nullptr;
}

LockFile* LockFile::find(const Folder& folder) {
    for (const std::unique_ptr<LockFile>& file : all())
        if (file->folder_ == folder.identity() && file->isCurrent(folder)) return file.get();
    return nullptr;
}

// Looks at all of them before another file gets the number of one that somebody closed: then
// nothing of somebody else's is closed here. Those that are of no use any more are given up: a
// program that removes and makes folders again and again does not run out of descriptors.
void LockFile::giveUpOthers(const Folder& folder) {
    std::erase_if(all(), [&folder](const std::unique_ptr<LockFile>& other) {
        return !other->file_.lookAgain() || !other->file_.status().isNamed ||
               other->folder_ == folder.identity();
    });
}

LockFile& LockFile::keep(const Folder& folder, FolderFile file, bool mayChange) {
    std::vector<std::unique_ptr<LockFile>>& files = all();
    files.push_back(
        std::unique_ptr<LockFile>(new LockFile(folder.identity(), std::move(file), mayChange)));
    return *files.back();
}

// Who puts another file in its place, or moves it, changes its status.
bool LockFile::isCurrent(const Folder& folder) {
    const std::int64_t before = file_.status().changed;
    if (!file_.lookAgain() || !file_.status().isNamed) return false;
    if (file_.status().changed == before) return true;
    const std::optional<FileStatus> named = statusOf(folder.descriptor(), leaf);
    return named && named->identity == file_.status().identity;
}

std::vector<U64>& LockFile::held() {
    if (forks_ != Turn::forks()) { // what the parent holds
        held_.clear();
        forks_ = Turn::forks();
    }
    return held_;
}

LockFile::Hold LockFile::hold(U64 number) {
    std::vector<U64>& ours = held();
    if (std::ranges::find(ours, number) != ours.end()) return {false, ::getpid()};
    ours.reserve(ours.size() + 1);
    while (!tryLock(number, Mode::exclusive)) {
        // Who has it may give it up between the two questions.
        if (const std::optional<int> holder = holderOf(number, Mode::exclusive))
            return {false, *holder};
    }
    ours.push_back(number);
    return {true, ::getpid()};
}

bool LockFile::tryLock(U64 number, Mode mode) const {
    const struct flock record = recordOf(number, typeOf(mode));
    if (::fcntl(file_.descriptor(), F_SETLK, &record) == 0) return true;
    if (errno == EAGAIN || errno == EACCES || errno == EINTR) return false;
    throw Failure("cannot lock " + file_.quotedPath(), errno);
}

void LockFile::lock(U64 number, Mode mode) const {
    const struct flock record = recordOf(number, typeOf(mode));
    while (::fcntl(file_.descriptor(), F_SETLKW, &record) != 0) {
        // The kernel takes it for a deadlock when a thread of the holder waits for some other
        // record lock of this process.
        if (errno == EDEADLK)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        else if (errno != EINTR)
            throw Failure("cannot lock " + file_.quotedPath(), errno);
    }
}

void LockFile::unlock(U64 number) const noexcept {
    const struct flock record = recordOf(number, F_UNLCK);
    if (::fcntl(file_.descriptor(), F_SETLK, &record) != 0)
        notice("cannot unlock the lock file of a folder");
}

std::optional<int> LockFile::holderOf(U64 number, Mode mode) const {
    struct flock record = recordOf(number, typeOf(mode));
    if (::fcntl(file_.descriptor(), F_GETLK, &record) != 0)
        throw Failure("cannot examine the locks of " + file_.quotedPath(), errno);
    if (record.l_type == F_UNLCK) return std::nullopt;
    return std::max(static_cast<int>(record.l_pid), 0); // -1: no process, but an open file has it
}

} // namespace pinbuf
