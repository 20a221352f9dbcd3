#include <pinbuf/detail/ShmBackend.h>

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <limits>
#include <memory>
#include <optional>
#include <pinbuf/detail/Error.h>
#include <pinbuf/detail/FolderLock.h>
#include <pinbuf/detail/Integers.h>
#include <pinbuf/detail/Mapping.h>
#include <string>

namespace pinbuf {
namespace {

// The address on record for a file that exists; a file without a fitting record gets one.
U32 adopt(Directory& directory, const FolderFile& file, const RegionName& name,
          std::string_view owner) {
    if (const DirectoryRecord* record = directory.find(name.text());
        record != nullptr && record->sizeBytes == file.sizeBytes())
        return record->address;
    directory.forget(name.text());
    const Directory::Place place = directory.placeFor(file.sizeBytes());
    // It fits the address window, so it fits 32 bits.
    directory.enter(place, name, static_cast<U32>(file.sizeBytes()), owner, RegionOrigin::unknown);
    return place.address;
}

// An existing region: long enough, reserved, the user's alone.
U32 reuse(Directory& directory, const FolderFile& file, const RegionName& name, U32 sizeBytes,
          std::string_view owner) {
    if (file.sizeBytes() < sizeBytes) {
        throw Failure("the region has " + std::to_string(file.sizeBytes()) + " bytes, " +
                      std::to_string(sizeBytes) + " are asked for");
    }
    file.makePrivate();
    const U32 address = adopt(directory, file, name, owner);
    if (file.status().hasHoles) reserveHoles(file);
    return address;
}

FolderFile openRegion(const std::optional<Folder>& folder, const RegionName& name) {
    std::optional<FolderFile> file = folder ? FolderFile::open(*folder, name.text()) : std::nullopt;
    if (!file) throw Failure("there is no region of this name");
    return std::move(*file);
}

// Whether it is worth while to open the region's file: to look whether it is there costs less.
bool mayExist(const Folder& folder, const Directory& directory, const RegionName& name) {
    return directory.find(name.text()) != nullptr ||
           statusOf(folder.descriptor(), name.text().c_str()).has_value() || errno != ENOENT;
}

// The names of the folder that may be regions, sorted.
std::vector<std::string> regionNames(const Folder& folder) {
    const auto close = [](DIR* stream) { ::closedir(stream); };
    // A stream owns its descriptor and moves its position: it gets one of its own.
    Descriptor descriptor(::openat(folder.descriptor(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor.isOpen()) throw Failure("cannot read the folder", errno);
    const std::unique_ptr<DIR, decltype(close)> stream(::fdopendir(descriptor.number()), close);
    if (!stream) throw Failure("cannot read the folder", errno);
    descriptor.release();

    std::vector<std::string> names;
    errno = 0;
    while (const dirent* entry = ::readdir(stream.get()))
        if (RegionName::objectionTo(entry->d_name).empty()) names.emplace_back(entry->d_name);
    if (errno != 0) throw Failure("cannot read the folder", errno);
    std::ranges::sort(names);
    return names;
}

// What is known of the file `name`; empty when it is no region.
std::optional<RegionInfo> describe(const Folder& folder, const std::optional<Directory>& directory,
                                   const std::string& name) {
    const std::optional<FileStatus> found = statusOf(folder.descriptor(), name.c_str());
    if (!found || !found->isRegular || found->sizeBytes > std::numeric_limits<U32>::max())
        return std::nullopt;
    RegionInfo info{name, "", 0, static_cast<U32>(found->sizeBytes), false};
    const DirectoryRecord* record = directory ? directory->find(name) : nullptr;
    if (record != nullptr && record->sizeBytes == info.sizeBytes) {
        info.owner = record->owner;
        info.address = record->address;
        info.isMade = record->isMade();
    }
    return info;
}

} // namespace

const ShmBackend& ShmBackend::instance() {
    static constexpr ShmBackend backend;
    return backend;
}

U32 ShmBackend::alloc(const RegionName& name, U32 sizeBytes, std::string_view owner) const {
    const Folder folder = Folder::openOrMake(Folder::chosenPath());
    const FolderLock lock = FolderLock::toChange(folder);
    Directory directory = Directory::openOrMake(folder);
    const std::optional<FolderFile> file =
        mayExist(folder, directory, name) ? FolderFile::open(folder, name.text()) : std::nullopt;
    return file ? reuse(directory, *file, name, sizeBytes, owner)
                : make(folder, directory, name, sizeBytes, owner);
}

U32 ShmBackend::make(const Folder& folder, Directory& directory, const RegionName& name,
                     U32 sizeBytes, std::string_view owner) const {
    directory.forget(name.text()); // its file has vanished
    const Directory::Place place = directory.placeFor(sizeBytes);
    UnfinishedFile unfinished(folder, unfinishedLeaf);
    reserveRange(unfinished.file().descriptor(), 0, sizeBytes, reserve_);
    directory.enter(place, name, sizeBytes, owner, RegionOrigin::made);
    try {
        unfinished.publishAs(name.text());
    } catch (...) {
        directory.forget(name.text());
        throw;
    }
    return place.address;
}

void* ShmBackend::map(const RegionName& name, const PlatformConstants&) const {
    const std::optional<Folder> folder = Folder::openToRead(Folder::chosenPath());
    return mapOnce(openRegion(folder, name));
}

RegionHolder ShmBackend::hold(const RegionName& name) const {
    const std::optional<Folder> folder = Folder::openToRead(Folder::chosenPath());
    const FolderFile file = openRegion(folder, name);
    const FolderLock lock = FolderLock::toChange(*folder);
    const std::optional<RegionInfo> info =
        describe(*folder, Directory::openToRead(*folder), name.text());
    const LockFile::Hold hold = lock.file().hold(file.status().identity.inode);
    return {hold.isNew, hold.process, info ? info->owner : ""};
}

std::optional<RegionInfo> ShmBackend::find(const RegionName& name) const {
    const std::optional<Folder> folder = Folder::openToRead(Folder::chosenPath());
    if (!folder) return std::nullopt;

    const FolderLock lock = FolderLock::toRead(*folder);
    return describe(*folder, Directory::openToRead(*folder), name.text());
}

std::vector<RegionInfo> ShmBackend::list() const {
    std::vector<RegionInfo> regions;
    const std::optional<Folder> folder = Folder::openToRead(Folder::chosenPath());
    if (!folder) return regions;

    const FolderLock lock = FolderLock::toRead(*folder);
    const std::optional<Directory> directory = Directory::openToRead(*folder);
    for (const std::string& name : regionNames(*folder))
        if (std::optional<RegionInfo> info = describe(*folder, directory, name))
            regions.push_back(std::move(*info));
    return regions;
}

} // namespace pinbuf
