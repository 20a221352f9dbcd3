// FileStatus.h - what the kernel says of a file, in the same widths in both word sizes and whatever
// its times are.
#pragma once

#include <optional>
#include <pinbuf/detail/Integers.h>

namespace pinbuf {

// Tells the files of one machine apart, whatever they are named. No other file has the identity of
// one that is open or mapped.
struct FileIdentity {
    U64 device = 0;
    U64 inode = 0;
    bool operator==(const FileIdentity&) const = default;
};

struct FileStatus {
    FileIdentity identity;
    U64 sizeBytes = 0;
    U32 mode = 0;             // permissions alone
    U32 owner = 0;            // user id
    std::int64_t changed = 0; // when its bytes or its status did last, in nanoseconds
    bool isRegular = false;
    bool isLink = false;   // a symbolic one
    bool isNamed = false;  // in some folder: it is not removed
    bool hasHoles = false; // bytes that take no memory yet
};

// Of an open file; empty, with the reason in errno, on failure.
std::optional<FileStatus> statusOf(int descriptor);

// Of the file that is named so relative to the open folder, or of the symbolic link itself; empty,
// with the reason in errno, on failure. An absolute path needs no folder.
std::optional<FileStatus> statusOf(int folder, const char* name);

} // namespace pinbuf
