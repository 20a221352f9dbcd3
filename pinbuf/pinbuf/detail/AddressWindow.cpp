#include <pinbuf/detail/AddressWindow.h>

#include <algorithm>

namespace pinbuf {
namespace {

// Calls `gap(begin, bytes)` for each stretch between the extents, from the lowest up, until one
// answers true.
template <typename Gap>
void eachGap(const std::vector<Extent>& taken, Gap gap) {
    std::uint64_t begin = windowBegin;
    for (const Extent& extent : taken) {
        if (gap(begin, extent.address - begin)) return;
        begin = extent.end();
    }
    gap(begin, windowEnd - begin);
}

} // namespace

bool areDisjoint(const std::vector<Extent>& extents) {
    return std::ranges::adjacent_find(extents, [](const Extent& low, const Extent& high) {
               return low.end() > high.address;
           }) == extents.end();
}

std::optional<std::uint32_t> firstFit(const std::vector<Extent>& taken, std::uint64_t sizeBytes) {
    std::optional<std::uint32_t> result;
    eachGap(taken, [&](std::uint64_t begin, std::uint64_t gapBytes) {
        if (gapBytes < wholePages(sizeBytes)) return false;
        result = static_cast<std::uint32_t>(begin);
        return true;
    });
    return result;
}

std::uint64_t largestFit(const std::vector<Extent>& taken) {
    std::uint64_t largest = 0;
    eachGap(taken, [&](std::uint64_t, std::uint64_t gapBytes) {
        largest = std::max(largest, gapBytes);
        return false;
    });
    return largest;
}

} // namespace pinbuf
