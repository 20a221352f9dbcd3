#include <Vel/detail/OrderBits.h>

#include <Vel/detail/ZeroedMemory.h>

namespace Vel::detail {

namespace {

using Word = OrderBits::Word;
constexpr unsigned halfBits = OrderBits::wordBits / 2;

// Bit n of the low half becomes bit 2n: the halves are drawn apart in ever smaller pieces.
constexpr Word spread(Word half) noexcept {
    half &= (Word{1} << halfBits) - 1;
    for (unsigned step = halfBits / 2; step != 0; step /= 2) {
        const Word pieces = ~Word{0} / ((Word{1} << step) + 1); // step ones, step zeroes, ...
        half = (half | half << step) & pieces;
    }
    return half;
}

static_assert(spread(0b1011) == 0b1000101);
static_assert(spread(~Word{0}) == ~Word{0} / 3);

} // namespace

bool OrderBits::make(unsigned bits) noexcept {
    const U32 words = bits > wordShift ? U32{1} << (bits - wordShift) : 1;
    U32 total = words;
    for (U32 level = words; level > 1; total += level) level = summaryWords(level);
    Word* memory = nullptr;
    if (total > 1) {
        memory = static_cast<Word*>(zeroedMemory(total * sizeof(Word)));
        if (memory == nullptr) return false;
    }
    release();
    words_ = words;
    total_ = total;
    if (total > 1) memory_ = memory;
    return true;
}

void OrderBits::release() noexcept {
    if (total_ > 1) zeroedMemoryDel(memory_, total_ * sizeof(Word));
    only_ = 0;
    words_ = total_ = 0;
}

void OrderBits::swap(OrderBits& other) noexcept {
    // Both members of the union are one word wide.
    const bool small = total_ <= 1;
    const bool otherSmall = other.total_ <= 1;
    const Word only = small ? only_ : 0;
    Word* const memory = small ? nullptr : memory_;
    if (otherSmall)
        only_ = other.only_;
    else
        memory_ = other.memory_;
    if (small)
        other.only_ = only;
    else
        other.memory_ = memory;
    std::swap(words_, other.words_);
    std::swap(total_, other.total_);
}

void OrderBits::wordFilled(U32 word) noexcept {
    Word* level = data();
    for (U32 count = words_; count != 1; count = summaryWords(count)) {
        level += count;
        const Word bit = Word{1} << (word % wordBits);
        word >>= wordShift;
        if (std::exchange(level[word], level[word] | bit) != 0) return;
    }
}

void OrderBits::wordEmptied(U32 word) noexcept {
    Word* level = data();
    for (U32 count = words_; count != 1; count = summaryWords(count)) {
        level += count;
        const Word bit = Word{1} << (word % wordBits);
        word >>= wordShift;
        if ((level[word] &= ~bit) != 0) return;
    }
}

// Climbs until a summary shows a word that is not empty, then goes down to that word's first bit.
U32 OrderBits::nextWord(U32 word) const noexcept {
    const Word* levels[8];
    U32 counts[8];
    unsigned height = 0;
    levels[0] = data();
    counts[0] = words_;
    for (;;) {
        if (word >= counts[height] || counts[height] == 1) return none;
        levels[height + 1] = levels[height] + counts[height];
        counts[height + 1] = summaryWords(counts[height]);
        ++height;
        const Word rest = levels[height][word >> wordShift] >> (word % wordBits);
        if (rest != 0) {
            word += static_cast<U32>(std::countr_zero(rest));
            break;
        }
        word = (word >> wordShift) + 1;
    }
    while (height-- > 0)
        word = (word << wordShift) + static_cast<U32>(std::countr_zero(levels[height][word]));
    return word;
}

void OrderBits::widenWord(U32 word, OrderBits& wider) noexcept {
    const Word bits = data()[word];
    if (bits == 0) return;
    const Word low = spread(bits);
    const Word high = spread(bits >> halfBits);
    const auto move = [&wider](U32 to, Word moved) {
        if (moved == 0) return;
        Word& present = wider.data()[to];
        if (std::exchange(present, present | moved) == 0) wider.wordFilled(to);
    };
    move(2 * word, low);
    move(2 * word + 1, high);
    data()[word] = 0;
    wordEmptied(word);
}

unsigned OrderBits::auditErrors() const noexcept {
    unsigned errors = 0;
    const Word* level = data();
    for (U32 count = words_; count > 1; count = summaryWords(count)) {
        const Word* summary = level + count;
        for (U32 word = 0; word < count; ++word) {
            const bool said = (summary[word >> wordShift] >> (word % wordBits) & 1) != 0;
            errors += said != (level[word] != 0);
        }
        level = summary;
    }
    return errors;
}

} // namespace Vel::detail
