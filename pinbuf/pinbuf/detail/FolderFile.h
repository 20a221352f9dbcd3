// FolderFile.h - an open regular file of the folder.
//
// Owns:   one descriptor.
// Links:  a file is opened by its name inside the open folder and never through a symbolic link.
// Errors: throws Failure. An absent file is no error.
#pragma once

#include <cstddef>
#include <optional>
#include <pinbuf/detail/Descriptor.h>
#include <pinbuf/detail/FileStatus.h>
#include <pinbuf/detail/Folder.h>
#include <pinbuf/detail/Integers.h>
#include <string>

namespace pinbuf {

class FolderFile {
public:
    // Opens the file to read and write it, by outcome:
    // (1) a regular file of the effective user: open;
    // (2) absent: empty;
    // (3) a symbolic link, anything else that is no regular file, another user's file: Failure.
    static std::optional<FolderFile> open(const Folder& folder, const std::string& leaf);

    // The same to read only, and whoever owns it.
    static std::optional<FolderFile> openToRead(const Folder& folder, const std::string& leaf);

    // As open() does, but makes an empty file, the user's alone, when there is none. It has its
    // name from the first: only for a file whose bytes say nothing.
    static FolderFile openOrMake(const Folder& folder, const std::string& leaf);

    int descriptor() const { return descriptor_.number(); }

    // For texts.
    std::string quotedPath() const;

    // What was found when the file was opened, or looked at again.
    const FileStatus& status() const { return status_; }

    // Looks again at a file that was kept open for long. False when its descriptor is another
    // file's now, or nobody's: a program may close what it does not know. Then it is given up, and
    // not closed.
    bool lookAgain();

    U64 sizeBytes() const { return status_.sizeBytes; }

    // Gives the owner alone access.
    void makePrivate() const;

    // Moves exactly `sizeBytes` bytes, or throws.
    void readAt(U64 offsetBytes, void* to, std::size_t sizeBytes) const;
    void writeAt(U64 offsetBytes, const void* from, std::size_t sizeBytes) const;

private:
    friend class UnfinishedFile;
    FolderFile(std::string path, Descriptor descriptor);
    static std::optional<FolderFile> openWith(const Folder& folder, const std::string& leaf,
                                              int flags);
    void requireOurs() const;

    std::string path_;
    Descriptor descriptor_;
    FileStatus status_;
};

// Reserves memory for bytes [offset, offset + length) of a file and makes the file reach that far,
// as posix_fallocate does; returns 0 or the error number. Tests put a failing one in its place.
using Reserve = int (*)(int descriptor, U64 offsetBytes, U64 lengthBytes);
int reserveBytes(int descriptor, U64 offsetBytes, U64 lengthBytes);

// Extends the file to `endBytes` with zeros from `beginBytes` on, all of it reserved. In steps of a
// megabyte: a step that a signal interrupts is repeated, and a step is short enough to get through
// between two signals of a timer.
void reserveRange(int descriptor, U64 beginBytes, U64 endBytes, Reserve reserve = reserveBytes);

// Reserves memory for the holes of a file that is already in use. Neither its bytes nor its size
// change.
void reserveHoles(const FolderFile& file);

// A new file that nobody can mistake for a finished one: it has a name of its own, beginning with a
// dot, until it is complete, and one step of the kernel gives it its final name.
//
// Owns:      the unfinished file; removes it again unless it was published.
// Kill:      leaves the file behind under the unfinished name, where the next one removes it.
// Threads:   the folder is locked exclusively meanwhile.
class UnfinishedFile {
public:
    UnfinishedFile(const Folder& folder, std::string unfinishedLeaf);
    ~UnfinishedFile();
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;

    const FolderFile& file() const { return *file_; }

    // Throws, and replaces nothing, when `leaf` exists.
    void publishAs(const std::string& leaf);

private:
    const Folder& folder_;
    std::string leaf_; // empty once published
    std::optional<FolderFile> file_;
};

} // namespace pinbuf
