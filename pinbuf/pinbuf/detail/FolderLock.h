// FolderLock.h - holds the advisory lock of a folder: every change to it happens under the
// exclusive lock, every look at its directory file under the shared one.
//
// Lock:  a record lock of one byte of the folder's lock file, which nobody but the folder's owner
//        can open. The kernel drops it when its process ends, however it ends; a child that was
//        forked meanwhile neither has nor prolongs it.
// Wait:  as long as another holder takes. After a second a line on standard error says who that is.
// Scope: it is also the thread's Turn, which keeps the threads of one process apart.
// Errors: throws Failure.
#pragma once

#include <pinbuf/detail/Folder.h>
#include <pinbuf/detail/LockFile.h>
#include <pinbuf/detail/Turn.h>

namespace pinbuf {

class FolderLock {
public:
    using Mode = LockFile::Mode;

    // To change the folder. Makes its lock file when there is none.
    static FolderLock toChange(const Folder& folder);

    // To look. A folder without a lock file needs no lock: nobody has begun to change it. Who
    // begins just now is seen not at all or with whole records, whose states are written last.
    static FolderLock toRead(const Folder& folder);

    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

    // Only of a lock to change.
    LockFile& file() const { return *file_; }

private:
    FolderLock(const Folder& folder, Mode mode);
    bool acquire(const Folder& folder, Mode mode) const;

    Turn turn_;
    LockFile* file_; // null: there is none
};

} // namespace pinbuf
