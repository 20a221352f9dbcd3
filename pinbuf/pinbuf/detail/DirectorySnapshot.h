// DirectorySnapshot.h - a directory file as it was when this process used it last.
//
// Owns:    the memory of the records, and a descriptor of the file: as long as that is open, no
//          other file gets the identity of this one.
// Threads: remembered and recalled during a Turn.
#pragma once

#include <memory>
#include <pinbuf/detail/DirectoryIndex.h>
#include <pinbuf/detail/DirectoryLayout.h>
#include <pinbuf/detail/FileStatus.h>
#include <pinbuf/detail/FolderFile.h>

namespace pinbuf {

struct DirectorySnapshot {
    // The one that the process remembers, if it is of that folder and its descriptor is still ours;
    // it is remembered no more. Its status is that of its file now.
    static std::unique_ptr<DirectorySnapshot> recall(const FileIdentity& folder);

    // Remembers this one instead of any other.
    static void remember(std::unique_ptr<DirectorySnapshot> snapshot);

    FileIdentity folder;
    FolderFile file;
    bool mayChange;       // the file is open to be written, too
    std::int64_t changed; // as of FileStatus
    DirectoryHeader header;
    DirectoryIndex index;
};

} // namespace pinbuf
