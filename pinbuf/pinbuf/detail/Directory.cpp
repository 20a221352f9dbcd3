#include <pinbuf/detail/Directory.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <pinbuf/detail/Error.h>
#include <pinbuf/detail/Integers.h>
#include <string>

namespace pinbuf {
namespace {

// `text` filled up with zeros; at least one of them stays.
template <std::size_t size>
void storeText(char (&to)[size], std::string_view text) {
    std::memcpy(to, text.data(), std::min(text.size(), size - 1));
}

// When no record is free, so many are examined for regions that have vanished: about as many as the
// file grows by otherwise, and each time others.
constexpr std::size_t examinedRecords = 16;

} // namespace

Directory Directory::openOrMake(const Folder& folder) {
    std::unique_ptr<DirectorySnapshot> known = DirectorySnapshot::recall(folder.identity());
    if (known != nullptr && known->mayChange && isUntouched(*known))
        return Directory(folder, std::move(known));
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
    return Directory(folder, read(folder, std::move(*file), true, std::move(known)));
}

std::optional<Directory> Directory::openToRead(const Folder& folder) {
    std::unique_ptr<DirectorySnapshot> known = DirectorySnapshot::recall(folder.identity());
    if (known != nullptr && isUntouched(*known)) return Directory(folder, std::move(known));
    std::optional<FolderFile> file = FolderFile::openToRead(folder, leaf);
    if (!file) return std::nullopt;
    return Directory(folder, read(folder, std::move(*file), false, std::move(known)));
}

Directory::Directory(const Folder& folder, std::unique_ptr<DirectorySnapshot> snapshot)
    : folder_(&folder), snapshot_(std::move(snapshot)) {}

Directory::~Directory() {
    if (snapshot_ == nullptr || state_ == State::inDoubt) return;
    if (state_ == State::changed) { // how we left the file is the last thing to be known of it
        if (!snapshot_->file.lookAgain()) return;
        snapshot_->changed = snapshot_->file.status().changed;
    }
    DirectorySnapshot::remember(std::move(snapshot_));
}

// Whether nobody wrote to the file since, moved it, or put another one in its place: all of that
// shows in its status, but for a change in the same tick of the clock, which is counted.
bool Directory::isUntouched(const DirectorySnapshot& known) {
    const FileStatus& status = known.file.status();
    if (!status.isNamed || status.changed != known.changed) return false;
    DirectoryHeader header;
    known.file.readAt(0, &header, sizeof header);
    return header == known.header;
}

// Reads what is not `known`, and checks it.
std::unique_ptr<DirectorySnapshot> Directory::read(const Folder& folder, FolderFile file,
                                                   bool mayChange,
                                                   std::unique_ptr<DirectorySnapshot> known) {
    const FileStatus status = file.status();
    const DirectoryHeader header = readHeader(file);
    if (known == nullptr || known->file.status().identity != status.identity ||
        !bringUpToDate(*known, file, header)) {
        DirectoryIndex index = checked(file, readRecords(file));
        // NOLINTNEXTLINE(modernize-make-unique): an aggregate
        return std::unique_ptr<DirectorySnapshot>(
            new DirectorySnapshot{folder.identity(), std::move(file), mayChange, status.changed,
                                  header, std::move(index)});
    }
    known->file = std::move(file);
    known->mayChange = mayChange;
    known->changed = status.changed;
    known->header = header;
    return known;
}

DirectoryIndex Directory::checked(const FolderFile& file, std::vector<DirectoryRecord> records) {
    try {
        return DirectoryIndex(std::move(records));
    } catch (const Failure& objection) {
        throw Failure(file.quotedPath() + " is damaged: " + objection.what());
    }
}

// Reads again what others say that they changed. False when that does not explain how the file is
// now: then what is known is of no use any more.
bool Directory::bringUpToDate(DirectorySnapshot& known, const FolderFile& file,
                              const DirectoryHeader& header) {
    const U32 changes = header.changes - known.header.changes; // modulo 2^32
    const std::size_t recordCount = recordCountOf(file.sizeBytes());
    if (changes == 0) return header == known.header && file.status().changed == known.changed;
    if (changes > DirectoryHeader::changedLength || recordCount < known.index.size()) return false;
    std::vector<U32> changed;
    for (U32 change = known.header.changes; change != header.changes;)
        changed.push_back(header.changed[DirectoryHeader::slotOf(++change)]);
    std::ranges::sort(changed);
    changed.erase(std::unique(changed.begin(), changed.end()), changed.end());
    if (changed.back() >= recordCount) return false;
    known.index.lengthen(recordCount);
    for (const U32 record : changed) known.index.clear(record);
    return std::ranges::all_of(
        changed, [&](U32 record) { return known.index.put(record, readRecord(file, record)); });
}

DirectoryHeader Directory::readHeader(const FolderFile& file) {
    const U64 fileBytes = file.sizeBytes();
    const DirectoryHeader expected;
    DirectoryHeader header;
    if (fileBytes < sizeof header || fileBytes > maxDirectoryBytes) {
        throw Failure(file.quotedPath() + " is not a directory of regions: it has " +
                      std::to_string(fileBytes) + " bytes");
    }
    file.readAt(0, &header, sizeof header);
    if (header.magic != expected.magic) {
        throw Failure(file.quotedPath() +
                      " is not a directory of regions: it begins with other bytes");
    }
    if (header.version != expected.version) {
        throw Failure(file.quotedPath() + " is written in version " +
                      std::to_string(header.version) + ", only version " +
                      std::to_string(expected.version) + " is known");
    }
    if (header.recordBytes != expected.recordBytes || header.windowBegin != expected.windowBegin ||
        header.windowEnd != expected.windowEnd) {
        throw Failure(file.quotedPath() +
                      " is damaged: its header has other sizes than version 1 has");
    }
    if (fileBytes % sizeof(DirectoryRecord) != 0)
        throw Failure(file.quotedPath() + " is damaged: it ends within a record");
    return header;
}

std::vector<DirectoryRecord> Directory::readRecords(const FolderFile& file) {
    std::vector<DirectoryRecord> records(recordCountOf(file.sizeBytes()));
    file.readAt(recordOffsetBytes(0), records.data(), records.size() * sizeof(DirectoryRecord));
    return records;
}

DirectoryRecord Directory::readRecord(const FolderFile& file, std::size_t index) {
    DirectoryRecord record;
    file.readAt(recordOffsetBytes(index), &record, sizeof record);
    return record;
}

const DirectoryRecord* Directory::find(std::string_view name) const {
    const std::optional<std::size_t> found = index().find(name);
    return found ? &index()[*found] : nullptr;
}

Directory::Place Directory::placeFor(U64 sizeBytes) {
    makeRoom(sizeBytes);
    const std::optional<U32> address = index().freeRanges().firstFit(sizeBytes);
    if (!address) {
        throw Failure("no physical addresses left for " + std::to_string(sizeBytes) +
                      " bytes, the longest free range has " +
                      std::to_string(index().freeRanges().largestFit()));
    }
    if (!index().firstFree()) grow();
    const std::size_t record = *index().firstFree();
    if (readRecord(file(), record) != index()[record]) {
        state_ = State::inDoubt;
        throw Failure(file().quotedPath() + " is being changed by other means");
    }
    return {record, *address};
}

void Directory::makeRoom(U64 sizeBytes) {
    const std::size_t all = index().size();
    if (!index().firstFree() && all > 0)
        forgetVanished(snapshot_->header.changes % all, std::min(examinedRecords, all));
    if (!index().freeRanges().firstFit(sizeBytes)) forgetVanished(0, all);
}

void Directory::enter(Place place, const RegionName& name, U32 sizeBytes, std::string_view owner,
                      RegionOrigin origin) {
    DirectoryRecord record;
    record.address = place.address;
    record.sizeBytes = sizeBytes;
    record.origin = origin;
    storeText(record.name, name.text());
    storeText(record.owner, owner);

    count(place.index);
    file().writeAt(recordOffsetBytes(place.index), &record,
                   sizeof record); // state free: counts for nothing yet
    writeState(place.index, DirectoryRecord::stateValid);
    record.state = DirectoryRecord::stateValid;
    if (!index().put(place.index, record)) throw Failure("the place is taken");
    state_ = State::changed;
}

void Directory::forget(std::string_view name) {
    if (const std::optional<std::size_t> found = index().find(name)) forgetAt(*found);
}

void Directory::forgetAt(std::size_t record) {
    count(record);
    writeState(record, DirectoryRecord::stateFree);
    index().clear(record);
    state_ = State::changed;
}

bool Directory::isVanished(const DirectoryRecord& record) const {
    const std::optional<FileStatus> found = statusOf(folder_->descriptor(), record.name);
    return found ? found->sizeBytes != record.sizeBytes : errno == ENOENT;
}

// Of `count` records from `begin` on, and from the first on behind the last.
void Directory::forgetVanished(std::size_t begin, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t record = (begin + i) % index().size();
        if (index()[record].isValid() && isVanished(index()[record])) forgetAt(record);
    }
}

void Directory::grow() {
    const U64 oldBytes = recordOffsetBytes(index().size());
    const U64 newBytes = oldBytes - oldBytes % directoryGrowthBytes + directoryGrowthBytes;
    state_ = State::inDoubt;
    reserveRange(file().descriptor(), oldBytes, newBytes);
    index().lengthen(recordCountOf(newBytes));
    state_ = State::changed;
}

// Counts a change of a record, before it is made.
void Directory::count(std::size_t index) {
    state_ = State::inDoubt; // until it is made
    DirectoryHeader& header = snapshot_->header;
    ++header.changes; // modulo 2^32
    header.changed[DirectoryHeader::slotOf(header.changes)] = static_cast<U32>(index);
    file().writeAt(0, &header, sizeof header);
}

void Directory::writeState(std::size_t index, U32 state) {
    file().writeAt(recordOffsetBytes(index) + offsetof(DirectoryRecord, state), &state,
                   sizeof state);
}

} // namespace pinbuf
