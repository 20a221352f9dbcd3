#include <Ferrolog/detail/Snapshot.h>

#include <Ferrolog/detail/openFile.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Ferrolog::detail {

namespace {

// Reads up to `count` bytes from the start of the file; fewer if it ends or breaks off before.
std::vector<std::byte> readWhole(int descriptor, std::size_t count) {
    std::vector<std::byte> bytes(count);
    std::size_t done = 0;
    while (done < count) {
        const ssize_t got =
            ::pread(descriptor, bytes.data() + done, count - done, static_cast<off_t>(done));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) break;
        done += static_cast<std::size_t>(got);
    }
    bytes.resize(done);
    return bytes;
}

} // namespace

Snapshot Snapshot::ofFile(const std::string& path) {
    Snapshot snapshot;
    const int descriptor = openFile(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0) {
        snapshot.error = std::strerror(errno);
        return snapshot;
    }

    struct stat status {};

    if (::fstat(descriptor, &status) != 0) {
        snapshot.error = std::strerror(errno);
    } else if (!S_ISREG(status.st_mode)) {
        snapshot.error = "it is not a regular file";
    } else {
        // No trace file is larger; one byte more tells a file that is.
        constexpr U64 most = U64{layoutOf(maxRingBytes).fileBytes} + 1;
        const auto count =
            static_cast<std::size_t>(std::min<U64>(most, static_cast<U64>(status.st_size)));
        for (auto& copy : snapshot.storage) copy = readWhole(descriptor, count);
        snapshot.first = Bytes(snapshot.storage[0]);
        snapshot.second = Bytes(snapshot.storage[1]);
        snapshot.third = Bytes(snapshot.storage[2]);
    }
    ::close(descriptor);
    return snapshot;
}

Snapshot Snapshot::ofBytes(std::span<std::byte const> bytes) {
    Snapshot snapshot;
    snapshot.first = snapshot.second = snapshot.third = Bytes(bytes);
    return snapshot;
}

} // namespace Ferrolog::detail
