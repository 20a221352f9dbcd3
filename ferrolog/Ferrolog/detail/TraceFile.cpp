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
U32 ringBytesOf(const FileHeader& header, U64 fileBytes) {
    const bool whole = header.magic == fileMagic && header.byteOrder == fileByteOrder &&
                       header.version == fileVersion && header.check == headerCheck(header) &&
                       isRingSize(header.ringBytes) && header.sitesUsed > noRoomSiteId &&
                       layoutOf(header.ringBytes).fileBytes == fileBytes;
    return whole ? header.ringBytes : 0;
}

// A program built anew has new lines in its sources, and so new call sites: begin again before they
// no longer fit.
bool hasRoomForSites(const FileHeader& header, const Layout& layout) {
    return header.sitesUsed <= layout.siteCapacity / 4 * 3 &&
           header.textUsed <= layout.textBytes / 4 * 3;
}

void cannotOpen(const char* path, const char* why) {
    complain({"cannot open \"", path, "\": ", why, "; tracing stays off"});
}

void cannotReserve(const char* path, U32 bytes, int error) {
    complain({"cannot reserve ", bytes, " bytes for \"", path, "\": ", textOfError(error),
              "; tracing stays off"});
}

// Piece by piece: on some file systems a signal undoes what the call has reserved so far, and a
// timer's next one may come before all of it is done.
int reserveSpace(int descriptor, U32 bytes) {
    U32 piece = U32{1} << 20;
    for (U32 done = 0; done < bytes;) {
        const U32 count = std::min(piece, bytes - done);
        const int error =
            ::posix_fallocate(descriptor, static_cast<off_t>(done), static_cast<off_t>(count));
        if (error == 0)
            done += count;
        else if (error == EINTR)
            piece = std::max(piece / 2, U32{4096});
        else
            return error;
    }
    return 0;
}

// Makes the file so large, all of it zeros but for the mark of a file that is being made.
int reserve(int descriptor, U32 bytes) {
    if (::ftruncate(descriptor, 0) != 0 ||
        ::pwrite(descriptor, unfinishedMagic.data(), unfinishedMagic.size(), 0) < 0)
        return errno;
    return reserveSpace(descriptor, bytes);
}

bool isSame(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

} // namespace

int TraceFile::open(const char* path, U32 ringBytes) {
    if (ringBytes > maxRingBytes) {
        complain({"cannot open \"", path, "\": a ring of ", ringBytes, " bytes is larger than ",
                  maxRingBytes, "; tracing stays off"});
        return EINVAL;
    }
    if (ringBytes != 0) ringBytes = std::bit_ceil(std::max(ringBytes, minRingBytes));

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
    if (descriptor_ < 0) return;
    if (base_ != nullptr)
        putZerosInItsPlace(); // first: who has the lock next may give any chunk to somebody else
    ::close(descriptor_);
    descriptor_ = -1;
}

void TraceFile::unmap() {
    if (base_ != nullptr) ::munmap(base_, layout_.fileBytes);
    base_ = nullptr;
}

TraceFile::Outcome TraceFile::tryOpen(const char* path, U32 ringBytes, int& error) {
    // O_NONBLOCK: a fifo of that name must not stop us before we have seen that it is one.
    descriptor_ = openFile(path, O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY, 0600);
    if (descriptor_ < 0) {
        error = errno;
        cannotOpen(path, error == ELOOP ? "it is a symbolic link" : textOfError(error));
        return Outcome::failed;
    }
    if (!isAcceptable(path, error)) return Outcome::failed;
    if (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
        error = errno == EWOULDBLOCK ? EBUSY : errno;
        cannotOpen(path, error == EBUSY ? "another process writes into it" : textOfError(error));
        return Outcome::failed;
    }
    if (!isStillAt(path)) return Outcome::again;

    struct stat status {};

    if (::fstat(descriptor_, &status) != 0) {
        error = errno;
        cannotOpen(path, textOfError(error));
        return Outcome::failed;
    }
    const auto fileBytes = static_cast<U64>(status.st_size);
    FileHeader found{}; // zeros where the file is shorter
    if (::pread(descriptor_, &found, sizeof found, 0) < 0) {
        error = errno;
        cannotOpen(path, textOfError(error));
        return Outcome::failed;
    }
    if (fileBytes == 0 || found.magic == unfinishedMagic)
        return create(path, ringBytes == 0 ? defaultRingBytes : ringBytes, error);
    return adopt(path, ringBytes, found, fileBytes, error);
}

bool TraceFile::isAcceptable(const char* path, int& error) {
    struct stat status {};

    const char* why = nullptr;
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
    if (why == nullptr) return true;
    cannotOpen(path, why);
    return false;
}

bool TraceFile::isStillAt(const char* path) const {
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

// The order: the mark of a file that is being made, space, every part, and the magic last, over the
// mark. A process that dies before leaves a file that the next opening makes anew.
TraceFile::Outcome TraceFile::create(const char* path, U32 ringBytes, int& error) {
    layout_ = layoutOf(ringBytes);
    error = reserve(descriptor_, layout_.fileBytes);
    if (error != 0) {
        cannotReserve(path, layout_.fileBytes, error);
        discard(path);
        return Outcome::failed;
    }
    if (!map(path, error)) {
        discard(path);
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

// What we made, or found empty or begun: it must not fill the file system, and no later opening
// take it for something worth keeping.
void TraceFile::discard(const char* path) const {
    const bool isEmpty = ::ftruncate(descriptor_, 0) == 0;
    if (isStillAt(path) && ::unlink(path) != 0 && !isEmpty)
        complain({"cannot remove \"", path, "\": ", textOfError(errno)});
}

TraceFile::Outcome TraceFile::adopt(const char* path, U32 ringBytes, const FileHeader& before,
                                    U64 fileBytes, int& error) {
    const U32 found = ringBytesOf(before, fileBytes);
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
    if (!hasRoomForSites(before, layout_)) {
        complain({"\"", path, "\" has little room left for call sites; it is moved aside"});
        return moveAside(path, error);
    }
    // A file with holes, copied by a tool, say: the space must be there before it is mapped.
    error = reserveSpace(descriptor_, layout_.fileBytes);
    if (error != 0) {
        cannotReserve(path, layout_.fileBytes, error);
        return Outcome::failed;
    }
    if (!map(path, error)) return Outcome::failed;
    freeAllLanesAndChunks();
    countWhatIsInUse();
    return Outcome::ready;
}

TraceFile::Outcome TraceFile::moveAside(const char* path, int& error) {
    const std::size_t length = std::strlen(path);
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
        if (error == ENOENT) return Outcome::again;
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
bool TraceFile::map(const char* path, int& error) {
    const int mapped = openFile(path, O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
    void* address = MAP_FAILED;
    error = errno;
    if (mapped >= 0 && !isSameFile(mapped)) {
        error = ESTALE;
    } else if (mapped >= 0) {
        address = ::mmap(nullptr, layout_.fileBytes, PROT_READ | PROT_WRITE, MAP_SHARED, mapped, 0);
        error = errno;
    }
    if (mapped >= 0) ::close(mapped);
    if (address == MAP_FAILED) {
        complain({"cannot map \"", path, "\": ", textOfError(error), "; tracing stays off"});
        return false;
    }
    base_ = static_cast<char*>(address);
    return true;
}

// The kernel exchanges the two in one step: a thread that writes meanwhile does not notice. Shared
// memory, though nobody shares it, for that stands by a name of its own in /proc/PID/maps.
void TraceFile::putZerosInItsPlace() const {
    const std::size_t bytes = layout_.fileBytes;
    void* const zeros = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE,
                               MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (zeros != MAP_FAILED &&
        ::mremap(zeros, bytes, bytes, MREMAP_MAYMOVE | MREMAP_FIXED, base_) == MAP_FAILED)
        ::munmap(zeros, bytes);
}

// We hold the lock, so whoever held a lane or a chunk is gone.
void TraceFile::freeAllLanesAndChunks() const {
    for (LaneRecord& lane : header().lanes) lane = {0, 0};
    for (U32 slot = 0; slot < layout_.chunks; ++slot) {
        chunk(slot).owner = 0;
        chunk(slot).users = 0;
    }
}

// The header's counts have no check of their own, and ids that mean two things would falsify what
// is in the file already.
void TraceFile::countWhatIsInUse() const {
    FileHeader& h = header();
    for (U32 id = noRoomSiteId; id < layout_.siteCapacity; ++id) {
        const SiteRecord& record = site(id);
        if (record.valid != 1) continue;
        const U64 end =
            U64{record.textOffset} + record.fileBytes + record.formatBytes + record.letterBytes;
        h.sitesUsed = std::max(h.sitesUsed, id + 1);
        if (end <= layout_.textBytes) h.textUsed = std::max(h.textUsed, static_cast<U32>(end));
    }
    for (U32 number = 1; number <= layout_.lives; ++number) {
        const LifeRecord& record = life(number);
        if (record.number != 0) {
            h.livesBegun = std::max(h.livesBegun, record.number);
            h.sessionsBegun = std::max(h.sessionsBegun, record.session);
        }
    }
}

} // namespace Ferrolog::detail
