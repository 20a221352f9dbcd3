#include <Vel/detail/Marks.h>

#include <Vel/detail/ZeroedMemory.h>

namespace Vel::detail {

bool Marks::reach(U32 count) noexcept {
    unsigned level = level_;
    while ((U64{1} << digitBits * (level + 1)) < count) ++level;
    if (level == level_) return true;
    const std::size_t bytes = wordsAbove(level + 1) * sizeof(Word);
    void* const grown =
        level_ != 0 ? zeroedMemoryGrown(words_, heapBytes(), bytes) : zeroedMemory(bytes);
    if (grown == nullptr) return false;
    if (level_ == 0) *static_cast<Word*>(grown) = only_;
    words_ = static_cast<Word*>(grown);
    level_ = level;
    return true;
}

void Marks::release() noexcept {
    if (level_ != 0) zeroedMemoryDel(words_, heapBytes());
    level_ = 0;
    only_ = 0;
}

} // namespace Vel::detail
