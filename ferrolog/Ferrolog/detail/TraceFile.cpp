#include <Ferrolog/detail/TraceFile.h>

#include <Ferrolog/detail/Clock.h>
#include <Ferrolog/detail/Complaint.h>
#include <Ferrolog/detail/SiteTable.h>
#include <Ferrolog/detail/Words.h>
#include <Ferrolog/detail/openFile.h>

#include <array>
#include <bit>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Ferrolog::detail {

namespace {

// The ring size of an existing file that is whole and of this version, else 0.
U32 ringBytesOf(FileHeader const& header, U64 fileBytes) {
    bool const whole = header.magic == fileMagic && header.byteOrder == fileByteOrder &&
                       header.version == fileVersion && header.check == headerCheck(header) &&
                       isRingSize(header.ringBytes) &&
                       layoutOf(header.ringBytes).fileBytes == fileBytes;
    return whole ? header.ringBytes : 0;
}

// A program built anew has new lines in its sources, and so new call sites: begin again before they
// no longer fit.
bool hasRoomForSites(FileHeader const& header, Layout const& layout) {
    return header.sitesUsed <= layout.siteCapacity / 4 * 3 &&
           header.textUsed <= layout.textBytes / 4 * 3;
}

void cannotOpen(char const* path, char const* why) {
    complain({"cannot open \"", path, "\": ", why, "; tracing stays off"});
}

void cannotReserve(char const* path, U32 bytes, int error) {
    complain({"cannot reserve ", bytes, " bytes for \"", path, "\": ", textOfError(error),
              "; tracing stays off"});
}

bool isSame(struct stat const& a, struct stat const& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

} // namespace

int TraceFile::open(char const* path, U32 ringBytes) {
    if (ringBytes > maxRingBytes) {
        complain({"cannot open \"", path, "\": a ring of ", ringBytes, " bytes is larger than ",
                  maxRingBytes, "; tracing stays off"});
        return EINVAL;
    }
    if (ringBytes != 0) {
        ringBytes = std::bit_ceil(std::max(ringBytes, minRingBytes));
    }

    // Each further round follows a file that was moved aside, by us or by another process.
    int error = 0;
    for (int round = 0; round < 16; ++round) {
        switch (tryOpen(path, ringBytes, error)) {
        case Outcome::ready: return 0;
        case Outcome::again: close(); break;
        case Outcome::failed: close(); return error;
        }
    }
    cannotOpen(path, "other processes keep replacing it");
    return EAGAIN;
}

void TraceFile::close() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
    descriptor_ = -1;
}

TraceFile::Outcome TraceFile::tryOpen(char const* path, U32 ringBytes, int& error) {
    // O_NONBLOCK: a fifo of that name must not stop us before we have seen that it is one.
    descriptor_ = openFile(path, O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY, 0600);
    if (descriptor_ < 0) {
        error = errno;
        cannotOpen(path, error == ELOOP ? "it is a symbolic link" : textOfError(error));
        return Outcome::failed;
    }
    if (!isAcceptable(path, error)) {
        return Outcome::failed;
    }
    if (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
        error = errno == EWOULDBLOCK ? EBUSY : errno;
        cannotOpen(path, error == EBUSY ? "another process writes into it" : textOfError(error));
        return Outcome::failed;
    }
    if (!isStillAt(path)) {
        return Outcome::again;
    }

    struct stat status {};

    if (::fstat(descriptor_, &status) != 0) {
        error = errno;
        cannotOpen(path, textOfError(error));
        return Outcome::failed;
    }
    auto const fileBytes = static_cast<U64>(status.st_size);
    if (fileBytes == 0) {
        return create(path, ringBytes == 0 ? defaultRingBytes : ringBytes, error);
    }
    return adopt(path, ringBytes, fileBytes, error);
}

bool TraceFile::isAcceptable(char const* path, int& error) {
    struct stat status {};

    char const* why = nullptr;
    if (::fstat(descriptor_, &status) != 0) {
        error = errno;
        why = textOfError(error);
    } else if (!S_ISREG(status.st_mode)) {
        error = EINVAL;
        why = "it is not a regular file";
    } else if (status.st_uid != ::geteuid()) {
        error = EPERM;
        why = "it belongs to another user";
    }
    if (why == nullptr) {
        return true;
    }
    cannotOpen(path, why);
    return false;
}

bool TraceFile::isStillAt(char const* path) const {
    struct stat ours {};

    struct stat there {};

    return ::fstat(descriptor_, &ours) == 0 && ::lstat(path, &there) == 0 && isSame(ours, there);
}

bool TraceFile::isSameFile(int descriptor) const {
    struct stat ours {};

    struct stat other {};

    return ::fstat(descriptor_, &ours) == 0 && ::fstat(descriptor, &other) == 0 &&
           isSame(ours, other);
}

// The order: space, every part, and the magic last. A process that dies before leaves a file that
// is moved aside.
TraceFile::Outcome TraceFile::create(char const* path, U32 ringBytes, int& error) {
    layout_ = layoutOf(ringBytes);
    error = ::posix_fallocate(descriptor_, 0, static_cast<off_t>(layout_.fileBytes));
    if (error != 0) {
        cannotReserve(path, layout_.fileBytes, error);
        // Made by us, or empty before: what was reserved of it must not fill the file system.
        ::unlink(path);
        return Outcome::failed;
    }
    if (!map(path, error)) {
        return Outcome::failed;
    }

    FileHeader& h = header();
    h.byteOrder = fileByteOrder;
    h.version = fileVersion;
    h.createdNs = nanoseconds(CLOCK_REALTIME);
    h.ringBytes = ringBytes;
    h.check = headerCheck(h);
    h.nextChunk = 1;
    h.sitesUsed = noRoomSiteId; // id 0 is not a site
    SiteTable(*this).enter({"Ferrolog", "call site without room for its text, words:", "", 0});
    std::atomic_thread_fence(std::memory_order_release);
    h.magic = fileMagic;
    return Outcome::ready;
}

TraceFile::Outcome TraceFile::adopt(char const* path, U32 ringBytes, U64 fileBytes, int& error) {
    FileHeader copy{};
    bool const read = ::pread(descriptor_, &copy, sizeof copy, 0) == ssize_t{sizeof copy};
    U32 const found = read ? ringBytesOf(copy, fileBytes) : 0;
    if (found == 0) {
        complain({"\"", path, "\" is not a whole trace file; it is moved aside"});
        return moveAside(path, error);
    }
    if (ringBytes != 0 && ringBytes != found) {
        complain({"\"", path, "\" has a ring of ", found, " bytes instead of ", ringBytes,
                  "; it is moved aside"});
        return moveAside(path, error);
    }
    layout_ = layoutOf(found);
    if (!hasRoomForSites(copy, layout_)) {
        complain({"\"", path, "\" has little room left for call sites; it is moved aside"});
        return moveAside(path, error);
    }
    // A file with holes, copied by a tool, say: the space must be there before it is mapped.
    error = ::posix_fallocate(descriptor_, 0, static_cast<off_t>(fileBytes));
    if (error != 0) {
        cannotReserve(path, layout_.fileBytes, error);
        return Outcome::failed;
    }
    if (!map(path, error)) {
        return Outcome::failed;
    }
    freeAllLanesAndChunks();
    return Outcome::ready;
}

TraceFile::Outcome TraceFile::moveAside(char const* path, int& error) {
    std::size_t const length = std::strlen(path);
    std::array<char, PATH_MAX + 2> target{}; // a longer name has not been opened
    if (length + 3 > target.size()) {
        error = ENAMETOOLONG;
        cannotOpen(path, textOfError(error));
        return Outcome::failed;
    }
    std::memcpy(target.data(), path, length);
    target[length] = '.';
    for (char digit = '1'; digit <= '9'; ++digit) {
        target[length + 1] = digit;
        if (::renameat2(AT_FDCWD, path, AT_FDCWD, target.data(), RENAME_NOREPLACE) == 0) {
            complain({"\"", path, "\" is now \"", target.data(), "\""});
            return Outcome::again;
        }
        error = errno;
        if (error == ENOENT) {
            return Outcome::again;
        }
        if (error != EEXIST) {
            complain({"cannot rename \"", path, "\" to \"", target.data(),
                      "\": ", textOfError(error), "; tracing stays off"});
            return Outcome::failed;
        }
    }
    complain({"cannot move \"", path, "\" aside: \"", path, ".1\" to \"", path,
              ".9\" exist; tracing stays off"});
    return Outcome::failed;
}

// Through a descriptor of its own: a mapping keeps its open file alive, and with it the lock that
// close() gives back.
bool TraceFile::map(char const* path, int& error) {
    int const mapped = openFile(path, O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
    void* address = MAP_FAILED;
    error = errno;
    if (mapped >= 0 && !isSameFile(mapped)) {
        error = ESTALE;
    } else if (mapped >= 0) {
        address = ::mmap(nullptr, layout_.fileBytes, PROT_READ | PROT_WRITE, MAP_SHARED, mapped, 0);
        error = errno;
    }
    if (mapped >= 0) {
        ::close(mapped);
    }
    if (address == MAP_FAILED) {
        complain({"cannot map \"", path, "\": ", textOfError(error), "; tracing stays off"});
        return false;
    }
    base_ = static_cast<char*>(address);
    return true;
}

// We hold the lock, so whoever held a lane or a chunk is gone.
void TraceFile::freeAllLanesAndChunks() const {
    for (LaneRecord& lane : header().lanes) {
        lane = {0, 0};
    }
    for (U32 slot = 0; slot < layout_.chunks; ++slot) {
        chunk(slot).owner = 0;
        chunk(slot).users = 0;
    }
}

} // namespace Ferrolog::detail
