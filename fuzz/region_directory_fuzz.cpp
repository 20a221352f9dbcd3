// region_directory_fuzz.cpp - any bytes as the directory file of a folder of regions.
//
// Promises: the file is refused by a Failure that says why in one line, and left as it is, or it is
//           consistent: a region can be entered into it, or there is no room, and what was entered
//           is found again.
#include <pinbuf/detail/Descriptor.h>
#include <pinbuf/detail/Directory.h>
#include <pinbuf/detail/Error.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using pinbuf::Directory;
using pinbuf::DirectoryRecord;
using pinbuf::Failure;
using pinbuf::Folder;

constexpr std::uint32_t regionBytes = 3 * 4096;

void promise(bool kept, const char* what) {
    if (kept) return;
    std::fprintf(stderr, "broken promise: %s\n", what);
    std::abort();
}

// A folder of this process alone, in memory, which goes with it.
class Scratch {
public:
    Scratch() {
        std::string name = "/dev/shm/brixo-fuzz-XXXXXX";
        promise(::mkdtemp(name.data()) != nullptr, "a temporary folder can be made");
        path_ = name;
    }

    ~Scratch() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }

    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    std::string path(const std::string& leaf) const { return path_ + "/" + leaf; }

    // Another file each time: bytes that change under one that is in use are not what is tried.
    void put(std::string_view bytes) const {
        ::unlink(path(Directory::leaf).c_str());
        const pinbuf::Descriptor file(
            ::open(path(Directory::leaf).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR));
        promise(::pwrite(file.number(), bytes.data(), bytes.size(), 0) ==
                        static_cast<ssize_t>(bytes.size()) &&
                    ::ftruncate(file.number(), static_cast<off_t>(bytes.size())) == 0,
                "the file can be written");
    }

    bool holds(std::string_view bytes) const {
        const pinbuf::Descriptor file(::open(path(Directory::leaf).c_str(), O_RDONLY | O_CLOEXEC));
        std::string found(bytes.size() + 1, '\0'); // one more, to see that there is none
        const ssize_t length = ::pread(file.number(), found.data(), found.size(), 0);
        return length == static_cast<ssize_t>(bytes.size()) && found.starts_with(bytes);
    }

private:
    std::string path_;
};

std::string unusedName(const Directory& directory) {
    std::string name = "new";
    while (directory.find(name) != nullptr) name += 'x';
    return name;
}

// Enters a region and finds it again.
void checkUse(const Scratch& scratch, const Folder& folder) {
    std::string name;
    Directory::Place place{};
    {
        Directory directory = Directory::openOrMake(folder);
        name = unusedName(directory);
        try {
            place = directory.placeFor(regionBytes);
        } catch (const Failure&) {
            return; // full
        }
        promise(place.address != 0 && place.address % 4096 == 0, "an address is that of a page");
        const pinbuf::Descriptor region(
            ::open(scratch.path(name).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR));
        promise(::ftruncate(region.number(), regionBytes) == 0, "a region can be made");
        directory.enter(place, pinbuf::RegionName(name.c_str()), regionBytes, "fuzzer",
                        pinbuf::RegionOrigin::made);
    }
    const std::optional<Directory> directory = Directory::openToRead(folder);
    promise(directory.has_value(), "a directory stays one");
    const DirectoryRecord* const record = directory->find(name);
    promise(record != nullptr && record->address == place.address &&
                record->sizeBytes == regionBytes,
            "what was entered is found again");
    ::unlink(scratch.path(name).c_str());
}

} // namespace

// All that an execution frees stays out of use until it has ended.
extern "C" const char* __asan_default_options() { return "quarantine_size_mb=8"; }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Scratch scratch;
    static const Folder folder = Folder::openOrMake(scratch.path(""));
    const std::string_view given(reinterpret_cast<const char*>(data), size);
    scratch.put(given);
    try {
        Directory::openToRead(folder);
    } catch (const Failure& refused) {
        const std::string why = refused.what();
        promise(!why.empty() && why.find('\n') == why.npos, "a refusal is one line");
        promise(scratch.holds(given), "what is refused is left as it is");
        return 0;
    }
    checkUse(scratch, folder);
    return 0;
}
