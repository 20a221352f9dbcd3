#include <pinbuf/detail/AddressWindow.h>

#include <algorithm>
#include <pinbuf/detail/Integers.h>

namespace pinbuf {

FreeRanges::FreeRanges() : ranges_{{windowBegin, windowEnd}} {}

std::optional<FreeRanges> FreeRanges::around(const std::vector<Extent>& extents) {
    std::vector<Range> ranges;
    U64 begin = windowBegin;
    for (const Extent& extent : extents) {
        if (extent.address < begin) return std::nullopt;
        if (extent.address > begin) ranges.push_back({begin, extent.address});
        begin = extent.end();
    }
    if (begin < windowEnd) ranges.push_back({begin, windowEnd});
    return FreeRanges(std::move(ranges));
}

bool FreeRanges::take(const Extent& extent) {
    const auto range = std::ranges::upper_bound(ranges_, extent.address, {}, &Range::end);
    if (range == ranges_.end() || extent.address < range->begin || extent.end() > range->end)
        return false;
    const Range before{range->begin, extent.address};
    const Range behind{extent.end(), range->end};
    const bool isBefore = before.begin < before.end;
    const bool isBehind = behind.begin < behind.end;
    if (isBefore && isBehind) {
        *range = behind;
        ranges_.insert(range, before);
    } else if (isBefore) {
        *range = before;
    } else if (isBehind) {
        *range = behind;
    } else {
        ranges_.erase(range);
    }
    return true;
}

void FreeRanges::giveBack(const Extent& extent) {
    const auto behind = std::ranges::lower_bound(ranges_, extent.end(), {}, &Range::begin);
    const bool joinsBehind = behind != ranges_.end() && behind->begin == extent.end();
    const bool joinsBefore = behind != ranges_.begin() && std::prev(behind)->end == extent.address;
    if (joinsBefore && joinsBehind) {
        std::prev(behind)->end = behind->end;
        ranges_.erase(behind);
    } else if (joinsBefore) {
        std::prev(behind)->end = extent.end();
    } else if (joinsBehind) {
        behind->begin = extent.address;
    } else {
        ranges_.insert(behind, {extent.address, extent.end()});
    }
}

std::optional<U32> FreeRanges::firstFit(U64 sizeBytes) const {
    const auto fitting = std::ranges::find_if(ranges_, [sizeBytes](const Range& range) {
        return range.end - range.begin >= wholePages(sizeBytes);
    });
    if (fitting == ranges_.end()) return std::nullopt;
    return static_cast<U32>(fitting->begin);
}

U64 FreeRanges::largestFit() const {
    U64 largest = 0;
    for (const Range& range : ranges_) largest = std::max(largest, range.end - range.begin);
    return largest;
}

} // namespace pinbuf
