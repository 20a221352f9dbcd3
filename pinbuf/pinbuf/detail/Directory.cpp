#include <pinbuf/detail/Directory.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <pinbuf/detail/Error.h>
#include <string>

namespace pinbuf {
namespace {

bool isValid(const DirectoryRecord& record) { return record.state == DirectoryRecord::stateValid; }

template <std::size_t size>
bool isTerminated(const char (&text)[size]) {
    return std::memchr(text, '\0', size) != nullptr;
}

// `text` filled up with zeros; at least one of them stays.
template <std::size_t size>
void storeText(char (&to)[size], std::string_view text) {
    std::memcpy(to, text.data(), std::min(text.size(), size - 1));
}

// What is wrong with a record by itself; "" when nothing is.
std::string_view objectionTo(const DirectoryRecord& record) {
    if (record.state == DirectoryRecord::stateFree) return "";
    if (!isValid(record)) return "has an unknown state";
    if (!isTerminated(record.name) || !RegionName::objectionTo(record.name).empty()) {
        return "has no region name";
    }
    if (!isTerminated(record.owner)) return "has no owner name";
    if (!Extent{record.address, record.sizeBytes}.isPossible())
        return "lies outside the address window";
    return "";
}

} // namespace

Directory Directory::openOrMake(const Folder& folder) {
    std::optional<FolderFile> file = FolderFile::open(folder, leaf);
    if (!file) {
        const DirectoryHeader header;
        UnfinishedFile unfinished(folder, unfinishedLeaf);
        reserveRange(unfinished.file().descriptor(), 0, directoryGrowthBytes);
        unfinished.file().writeAt(0, &header, sizeof header);
        unfinished.publishAs(leaf);
        file = FolderFile::open(folder, leaf);
    }
    if (!file) throw Failure(folder.quotedPathOf(leaf) + " has vanished");
    return Directory(folder, std::move(*file));
}

std::optional<Directory> Directory::openToRead(const Folder& folder) {
    std::optional<FolderFile> file = FolderFile::openToRead(folder, leaf);
    if (!file) return std::nullopt;
    return Directory(folder, std::move(*file));
}

Directory::Directory(const Folder& folder, FolderFile file)
    : folder_(&folder), file_(std::move(file)) {
    load();
}

void Directory::load() {
    const std::uint64_t fileBytes = file_.sizeBytes();
    requireHeader(fileBytes);
    const auto recordCount =
        static_cast<std::size_t>((fileBytes - sizeof(DirectoryHeader)) / sizeof(DirectoryRecord));
    records_.resize(recordCount);
    file_.readAt(recordOffsetBytes(0), records_.data(), recordCount * sizeof(DirectoryRecord));
    requireConsistentRecords();
}

void Directory::requireHeader(std::uint64_t fileBytes) const {
    const std::string path = folder_->quotedPathOf(leaf);
    const DirectoryHeader expected;
    DirectoryHeader header;
    if (fileBytes < sizeof header || fileBytes > maxDirectoryBytes) {
        throw Failure(path + " is not a directory of regions: it has " + std::to_string(fileBytes) +
                      " bytes");
    }
    file_.readAt(0, &header, sizeof header);
    if (header.magic != expected.magic) {
        throw Failure(path + " is not a directory of regions: it begins with other bytes");
    }
    if (header.version != expected.version) {
        throw Failure(path + " is written in version " + std::to_string(header.version) +
                      ", only version " + std::to_string(expected.version) + " is known");
    }
    if (header.recordBytes != expected.recordBytes || header.windowBegin != expected.windowBegin ||
        header.windowEnd != expected.windowEnd) {
        throw Failure(path + " is damaged: its header has other sizes than version 1 has");
    }
    if (fileBytes % sizeof(DirectoryRecord) != 0) {
        throw Failure(path + " is damaged: it ends within a record");
    }
}

void Directory::requireConsistentRecords() const {
    const std::string damaged = folder_->quotedPathOf(leaf) + " is damaged: ";
    std::vector<std::string_view> names;
    for (std::size_t index = 0; index < records_.size(); ++index) {
        const DirectoryRecord& record = records_[index];
        if (const std::string_view objection = objectionTo(record); !objection.empty()) {
            throw Failure(damaged + "record " + std::to_string(index) + " " +
                          std::string(objection));
        }
        if (isValid(record)) names.emplace_back(record.name);
    }
    std::ranges::sort(names);
    if (const auto twice = std::ranges::adjacent_find(names); twice != names.end()) {
        throw Failure(damaged + "two records have the name " + inQuotes(*twice));
    }
    if (!areDisjoint(takenExtents())) throw Failure(damaged + "two regions overlap");
}

const DirectoryRecord* Directory::find(std::string_view name) const {
    const auto found = std::ranges::find_if(records_, [name](const DirectoryRecord& record) {
        return isValid(record) && record.name == name;
    });
    return found == records_.end() ? nullptr : &*found;
}

Directory::Place Directory::placeFor(std::uint64_t sizeBytes) {
    std::optional<std::uint32_t> address = firstFit(takenExtents(), sizeBytes);
    if (!address || !freeIndex()) {
        forgetVanished();
        address = firstFit(takenExtents(), sizeBytes);
    }
    if (!address) {
        throw Failure("no physical addresses left for " + std::to_string(sizeBytes) +
                      " bytes, the longest free range has " +
                      std::to_string(largestFit(takenExtents())));
    }
    if (!freeIndex()) grow();
    return {*freeIndex(), *address};
}

void Directory::enter(Place place, const RegionName& name, std::uint32_t sizeBytes,
                      std::string_view owner, RegionOrigin origin) {
    DirectoryRecord record;
    record.address = place.address;
    record.sizeBytes = sizeBytes;
    record.origin = origin;
    storeText(record.name, name.text());
    storeText(record.owner, owner);

    file_.writeAt(recordOffsetBytes(place.index), &record,
                  sizeof record); // state free: counts for nothing yet
    records_[place.index] = record;
    writeState(place.index, DirectoryRecord::stateValid);
}

void Directory::forget(std::string_view name) {
    if (const DirectoryRecord* record = find(name); record != nullptr) {
        writeState(static_cast<std::size_t>(record - records_.data()), DirectoryRecord::stateFree);
    }
}

std::vector<Extent> Directory::takenExtents() const {
    std::vector<Extent> extents;
    for (const DirectoryRecord& record : records_) {
        if (isValid(record)) extents.push_back({record.address, record.sizeBytes});
    }
    std::ranges::sort(extents, {}, &Extent::address);
    return extents;
}

std::optional<std::size_t> Directory::freeIndex() const {
    const auto found =
        std::ranges::find(records_, DirectoryRecord::stateFree, &DirectoryRecord::state);
    if (found == records_.end()) return std::nullopt;
    return static_cast<std::size_t>(found - records_.begin());
}

bool Directory::isVanished(const DirectoryRecord& record) const {
    const std::optional<FileStatus> found = statusOf(folder_->descriptor(), record.name);
    return found ? found->sizeBytes != record.sizeBytes : errno == ENOENT;
}

void Directory::forgetVanished() {
    for (std::size_t index = 0; index < records_.size(); ++index) {
        if (isValid(records_[index]) && isVanished(records_[index])) {
            writeState(index, DirectoryRecord::stateFree);
        }
    }
}

void Directory::grow() {
    const std::uint64_t oldBytes = recordOffsetBytes(records_.size());
    const std::uint64_t newBytes =
        oldBytes - oldBytes % directoryGrowthBytes + directoryGrowthBytes;
    reserveRange(file_.descriptor(), oldBytes, newBytes);
    records_.resize(
        static_cast<std::size_t>((newBytes - sizeof(DirectoryHeader)) / sizeof(DirectoryRecord)));
}

void Directory::writeState(std::size_t index, std::uint32_t state) {
    file_.writeAt(recordOffsetBytes(index) + offsetof(DirectoryRecord, state), &state,
                  sizeof state);
    records_[index].state = state;
}

} // namespace pinbuf
