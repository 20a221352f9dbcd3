#include <pinbuf/detail/DirectoryIndex.h>

#include <algorithm>
#include <cstring>
#include <pinbuf/detail/Error.h>
#include <pinbuf/detail/Integers.h>

namespace pinbuf {
namespace {

template <std::size_t size>
bool isTerminated(const char (&text)[size]) {
    return std::memchr(text, '\0', size) != nullptr;
}

// What is wrong with a record by itself; "" when nothing is.
std::string_view objectionTo(const DirectoryRecord& record) {
    if (record.isFree()) return "";
    if (!record.isValid()) return "has an unknown state";
    if (!isTerminated(record.name) || !RegionName::objectionTo(record.name).empty())
        return "has no region name";
    if (!isTerminated(record.owner)) return "has no owner name";
    if (!record.extent().isPossible()) return "lies outside the address window";
    return "";
}

} // namespace

DirectoryIndex::DirectoryIndex(std::vector<DirectoryRecord> records)
    : records_(std::move(records)) {
    std::vector<Extent> extents;
    for (std::size_t index = 0; index < records_.size(); ++index) {
        const DirectoryRecord& record = records_[index];
        if (const std::string_view objection = objectionTo(record); !objection.empty())
            throw Failure("record " + std::to_string(index) + " " + std::string(objection));
        if (record.isValid()) extents.push_back(record.extent());
    }
    names_ = namesOf(records_);
    std::ranges::sort(extents, {}, &Extent::address);
    std::optional<FreeRanges> ranges = FreeRanges::around(extents);
    if (!ranges) throw Failure("two regions overlap");
    freeRanges_ = std::move(*ranges);
}

DirectoryIndex::Names DirectoryIndex::namesOf(const std::vector<DirectoryRecord>& records) {
    Names names;
    names.reserve(records.size());
    for (U32 index = 0; index < records.size(); ++index) {
        const DirectoryRecord& record = records[index];
        if (record.isValid() && !names.emplace(record.name, index).second)
            throw Failure("two records have the name " + inQuotes(record.name));
    }
    return names;
}

std::optional<std::size_t> DirectoryIndex::find(std::string_view name) const {
    const auto found = names_.find(name);
    if (found == names_.end()) return std::nullopt;
    return found->second;
}

std::optional<std::size_t> DirectoryIndex::firstFree() {
    while (noneFreeBelow_ < records_.size() && !records_[noneFreeBelow_].isFree()) ++noneFreeBelow_;
    if (noneFreeBelow_ == records_.size()) return std::nullopt;
    return noneFreeBelow_;
}

void DirectoryIndex::clear(std::size_t index) {
    DirectoryRecord& record = records_[index];
    if (record.isFree()) return;
    names_.erase(record.name);
    freeRanges_.giveBack(record.extent());
    record.state = DirectoryRecord::stateFree;
    noneFreeBelow_ = std::min(noneFreeBelow_, index);
}

bool DirectoryIndex::put(std::size_t index, const DirectoryRecord& record) {
    if (!objectionTo(record).empty()) return false;
    if (record.isValid() && (names_.contains(record.name) || !freeRanges_.take(record.extent())))
        return false;
    records_[index] = record;
    if (record.isValid()) names_.emplace(records_[index].name, static_cast<U32>(index));
    return true;
}

void DirectoryIndex::lengthen(std::size_t size) {
    if (size > records_.capacity()) { // the records move, and with them what the names view
        std::vector<DirectoryRecord> moved;
        moved.reserve(std::max(size, 2 * records_.size()));
        moved.assign(records_.begin(), records_.end());
        names_ = namesOf(moved);
        records_ = std::move(moved);
    }
    records_.resize(size);
}

} // namespace pinbuf
