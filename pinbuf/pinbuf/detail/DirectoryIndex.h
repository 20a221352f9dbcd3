// DirectoryIndex.h - the records of a directory file in memory, proven to agree with each other.
//
// Invariant: each record is free or valid; the valid ones have region names that differ, both texts
//            ended, and address ranges inside the window that do not overlap.
// Cost:      300 bytes of memory per record, about. Loading is O(n log n) for n records; finding a
//            name, and a change, O(1) beside what FreeRanges takes.
#pragma once

#include <cstddef>
#include <optional>
#include <pinbuf/detail/AddressWindow.h>
#include <pinbuf/detail/DirectoryLayout.h>
#include <pinbuf/detail/Integers.h>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace pinbuf {

class DirectoryIndex {
public:
    // Takes all records of a file, in its order. Throws Failure with what is wrong with them.
    explicit DirectoryIndex(std::vector<DirectoryRecord> records);
    DirectoryIndex(DirectoryIndex&&) = default;
    DirectoryIndex& operator=(DirectoryIndex&&) = delete; // the names are views of the records

    std::size_t size() const { return records_.size(); }

    const DirectoryRecord& operator[](std::size_t index) const { return records_[index]; }

    // The index of the valid record of that name.
    std::optional<std::size_t> find(std::string_view name) const;

    const FreeRanges& freeRanges() const { return freeRanges_; }

    // The index of the first free record.
    std::optional<std::size_t> firstFree();

    // Makes record `index` free, or replaces a free one by `record`. The latter answers false, and
    // changes nothing, when the records would not agree any more.
    void clear(std::size_t index);
    bool put(std::size_t index, const DirectoryRecord& record);

    // Adds free records at the end.
    void lengthen(std::size_t size);

private:
    using Names = std::unordered_map<std::string_view, U32>;

    // Throws Failure when one is there twice.
    static Names namesOf(const std::vector<DirectoryRecord>& records);

    std::vector<DirectoryRecord> records_;
    Names names_; // of the valid records
    FreeRanges freeRanges_;
    std::size_t noneFreeBelow_ = 0; // where the search for a free record begins
};

} // namespace pinbuf
