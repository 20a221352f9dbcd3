// LockFile.h - the lock file of a folder: its bytes are empty, the kernel's record locks on them
// are what counts.
//
// Bytes:   0 stands for the folder (see FolderLock.h);
//          n stands for the region whose file has inode number n: who has it locked holds the
//          region.
// Owns:    the file's only descriptor in this process, from its first use to the end of the process
//          or of the file: to close any descriptor of a file drops all record locks that the
//          process has on it.
// Locks:   belong to the process, whichever of its threads took them. A forked child has none of
//          them, exec and every end of the process drop them.
// Errors:  throws Failure.
// Threads: everything here happens during a Turn, and a reference is good for as long.
#pragma once

#include <memory>
#include <optional>
#include <pinbuf/detail/FileStatus.h>
#include <pinbuf/detail/Folder.h>
#include <pinbuf/detail/FolderFile.h>
#include <pinbuf/detail/Integers.h>
#include <vector>

namespace pinbuf {

class LockFile {
public:
    static constexpr const char* leaf = ".locks";

    static constexpr U64 folderByte = 0;

    // The folder's lock file; makes it when there is none.
    static LockFile& openOrMake(const Folder& folder);

    // The same to look only, whoever owns it: null when there is none.
    static LockFile* openToRead(const Folder& folder);

    // Whether the folder's lock file still is this one, and its descriptor still ours: a program
    // may close what it does not know.
    bool isCurrent(const Folder& folder);

    enum class Mode { shared, exclusive };

    // Locks byte `number` for this process: at once or not at all; or as soon as the others permit.
    bool tryLock(U64 number, Mode mode) const;
    void lock(U64 number, Mode mode) const;
    void unlock(U64 number) const noexcept;

    // A process that keeps this one from locking byte `number`; 0: one in a PID name space that
    // this process does not see; empty when there is none.
    std::optional<int> holderOf(U64 number, Mode mode) const;

    // Locks byte `number` until the process ends, by outcome:
    // (1) nobody had it: has it now;
    // (2) this process or another one has it: who.
    struct Hold {
        bool isNew;
        int process; // as of holderOf
    };

    Hold hold(U64 number);

private:
    LockFile(const FileIdentity& folder, FolderFile file, bool mayChange);

    static std::vector<std::unique_ptr<LockFile>>& all();
    static LockFile* find(const Folder& folder);
    static void giveUpOthers(const Folder& folder);
    static LockFile& keep(const Folder& folder, FolderFile file, bool mayChange);

    std::vector<U64>& held();

    FileIdentity folder_;
    FolderFile file_;
    bool mayChange_;        // false: for shared locks only, and holds nothing
    std::vector<U64> held_; // by the process that was the forks_th child
    unsigned forks_;
};

} // namespace pinbuf
