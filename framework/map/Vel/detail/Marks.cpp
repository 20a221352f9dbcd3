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

void Marks::setAbove(U32 n) noexcept {
    for (unsigned l = level_; l != 0; --l) {
        Word& above = at(l - 1, n);
        const Word old = std::exchange(above, static_cast<Word>(above | bit(l - 1, n)));
        if (old ==
            above) { // a number without further digits ended there: down from here it is beside n
            do at(l, n) |= 1;
            while ((n >> digitBits * l) % wordBits == 0 && l++ != level_);
            return;
        }
        if (old != 0) return;
    }
}

void Marks::clearAbove(U32 n) noexcept {
    for (unsigned l = level_; l-- != 0;) {
        Word& above = at(l, n);
        if (above == 0) continue; // n ends further above
        above = static_cast<Word>(above & ~bit(l, n));
        if (above != 0) return;
    }
}

} // namespace Vel::detail
