// region_directory_fuzz.cpp - any bytes as the directory file of a folder of regions.
//
// Promises: the file is refused by a Failure that says why in one line, and left as it is, or it is
//           consistent: a region can be entered into it, or there is no room, and what was entered
//           is found again.
#include <pinbuf/detail/Directory.h>
#include <pinbuf/detail/Error.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

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

// A folder of this process alone, which goes with it.
class Scratch {
public:
    Scratch() {
        std::string name = (fs::temp_directory_path() / "brixo-fuzz-XXXXXX").string();
        promise(::mkdtemp(name.data()) != nullptr, "a temporary folder can be made");
        path_ = name;
    }

    ~Scratch() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }

    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    fs::path directoryFile() const { return path_ / Directory::leaf; }

    fs::path path(const std::string& leaf) const { return path_ / leaf; }

    // Another file each time: bytes that change under one that is in use are not what is tried.
    void put(const std::string& bytes) const {
        fs::remove(directoryFile());
        std::ofstream file(directoryFile(), std::ios::binary | std::ios::trunc);
        file << bytes;
        file.close();
        fs::permissions(directoryFile(), fs::perms::owner_read | fs::perms::owner_write);
    }

    std::string bytes() const {
        std::ifstream file(directoryFile(), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    fs::path path_;
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
        std::ofstream(scratch.path(name)).close();
        fs::resize_file(scratch.path(name), regionBytes);
        directory.enter(place, pinbuf::RegionName(name.c_str()), regionBytes, "fuzzer");
    }
    const std::optional<Directory> directory = Directory::openToRead(folder);
    promise(directory.has_value(), "a directory stays one");
    const DirectoryRecord* const record = directory->find(name);
    promise(record != nullptr && record->address == place.address &&
                record->sizeBytes == regionBytes,
            "what was entered is found again");
    fs::remove(scratch.path(name));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Scratch scratch;
    const std::string given(reinterpret_cast<const char*>(data), size);
    scratch.put(given);
    const Folder folder = Folder::openOrMake(scratch.path("").string());
    try {
        Directory::openToRead(folder);
    } catch (const Failure& refused) {
        const std::string why = refused.what();
        promise(!why.empty() && why.find('\n') == why.npos, "a refusal is one line");
        promise(scratch.bytes() == given, "what is refused is left as it is");
        return 0;
    }
    checkUse(scratch, folder);
    return 0;
}
