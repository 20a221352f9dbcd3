// FileIdentity.h - tells the files of one machine apart, whatever they are named. No other file has
// the identity of one that is open or mapped.
#ifndef PINBUF_DETAIL_FILE_IDENTITY_H
#define PINBUF_DETAIL_FILE_IDENTITY_H

#include <cstdint>
#include <sys/stat.h>

namespace pinbuf {

struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    bool operator==(const FileIdentity&) const = default;

    static FileIdentity of(const struct stat& status) { return {status.st_dev, status.st_ino}; }
};

} // namespace pinbuf

#endif // PINBUF_DETAIL_FILE_IDENTITY_H
