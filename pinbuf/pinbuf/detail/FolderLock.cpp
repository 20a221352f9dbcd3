#include <pinbuf/detail/FolderLock.h>

#include <chrono>
#include <pinbuf/detail/Error.h>
#include <string>
#include <thread>

namespace pinbuf {
namespace {

using namespace std::chrono_literals;

constexpr auto silentWait = 1s;
constexpr auto pollEvery = 200us;

// As long as the wait is to be silent the lock is tried again and again: to wait in the kernel
// could be cut short by a signal only. Whether it was taken.
bool pollSilently(const LockFile& file, LockFile::Mode mode) {
    const auto end = std::chrono::steady_clock::now() + silentWait;
    while (std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(pollEvery);
        if (file.tryLock(LockFile::folderByte, mode)) return true;
    }
    return false;
}

void sayWhoHasIt(const Folder& folder, const LockFile& file, LockFile::Mode mode) {
    const std::optional<int> holder = file.holderOf(LockFile::folderByte, mode);
    if (!holder) return; // given up just now
    notice("waiting for the folder " + folder.quotedPath() + ", which " +
           (*holder == 0 ? "another process" : "process " + std::to_string(*holder)) +
           " has locked");
}

} // namespace

FolderLock FolderLock::toChange(const Folder& folder) { return {folder, Mode::exclusive}; }

FolderLock FolderLock::toRead(const Folder& folder) { return {folder, Mode::shared}; }

FolderLock::FolderLock(const Folder& folder, Mode mode) {
    // While it was waited for, somebody may have put another lock file in its place.
    do {
        file_ =
            mode == Mode::exclusive ? &LockFile::openOrMake(folder) : LockFile::openToRead(folder);
    } while (file_ != nullptr && !acquire(folder, mode));
}

FolderLock::~FolderLock() {
    if (file_ != nullptr) file_->unlock(LockFile::folderByte);
}

// Whether the lock that was taken is that of the folder.
bool FolderLock::acquire(const Folder& folder, Mode mode) const {
    if (file_->tryLock(LockFile::folderByte, mode)) return true;
    if (!pollSilently(*file_, mode)) {
        sayWhoHasIt(folder, *file_, mode);
        file_->lock(LockFile::folderByte, mode);
    }
    if (file_->isCurrent(folder)) return true;
    file_->unlock(LockFile::folderByte);
    return false;
}

} // namespace pinbuf
