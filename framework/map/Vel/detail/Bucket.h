// Bucket.h - a bucket: one cache line that seats its first members in order, or leads to further buckets.
//
// Seats:  five members (seven in a 32-bit process), each with its fold beside it, ascending by hash, then by key. A member
//         in a seat has no next, but for the last seat's when all are taken: there a chain of the rest begins.
// Lookup: compares all folds at once and touches a member only where the fold agrees.
// Leads:  to a table over further bits, or to an index of members of one hash: SubBuckets.
#pragma once

#include <Vel/Integers.h>
#include <Vel/KeyHash.h>
#include <algorithm>
#include <bit>
#ifdef __SSE2__
    #include <emmintrin.h>
#endif

namespace Vel {
class MapLink;
}

namespace Vel::detail {

class BucketTable;
class EqualHashes;

// What a bucket leads to when it seats nobody. All its members share the bits of the fold below `shift`.
class SubBuckets {
public:
    static constexpr unsigned allBits = 32;

    SubBuckets(U32 fold, unsigned shift) noexcept : shift_(shift), prefix_(fold & lowBits(shift)) {}

    SubBuckets(const SubBuckets&) = delete;
    SubBuckets& operator=(const SubBuckets&) = delete;

    unsigned shift() const noexcept { return shift_; }

    U32 prefix() const noexcept { return prefix_; }

    // The bits in which a fold differs from what all members here share; 0: it belongs here.
    U32 differs(U32 fold) const noexcept { return (fold ^ prefix_) & lowBits(shift_); }

    static U32 lowBits(unsigned bits) noexcept {
        return bits >= allBits ? ~U32{0} : (U32{1} << bits) - 1;
    }

protected:
    ~SubBuckets() = default;

    // Nobody is here.
    void startAt(U32 fold, unsigned shift) noexcept {
        shift_ = shift;
        prefix_ = fold & lowBits(shift);
    }

private:
    unsigned shift_;
    U32 prefix_;
};

// Loops that move seats are unrolled: GCC would count, and would not keep in registers what it moves.
class Bucket {
public:
    static constexpr U32 seats = sizeof(void*) == 8 ? 5 : 7;

    // Sets of seats, one bit each.
    using Seats = U32;

    bool isEmpty() const noexcept { return state() == 0; }

    // No members of its own.
    bool leads() const noexcept { return state() >= leadsToTable; }

    bool isTable() const noexcept { return state() == leadsToTable; }

    bool isEqual() const noexcept { return state() == leadsToEqual; }

    // Seats taken.
    U32 seated() const noexcept { return state() & countMask; }

    // How many members are behind the last seat, in a chain.
    U32 standing() const noexcept { return (state() & standingMask) / oneStands; }

    bool hasMore() const noexcept { return (state() & standingMask) != 0; }

    MapLink* member(U32 seat) const noexcept { return members_[seat]; }

    // Copies the members in the seats, and rubbish behind them: `to` has room for all seats. Returns how many they are.
    U32 copySeats(MapLink** to) const noexcept {
#pragma GCC unroll 8
        for (U32 seat = 0; seat < seats; ++seat) to[seat] = members_[seat];
        return seated();
    }

    MapLink*& memberAt(U32 seat) noexcept { return members_[seat]; }

    U32 fold(U32 seat) const noexcept { return words_[seat]; }

    // The seats with this fold, in order; one that is not taken may be among them. There are several where keys differ.
    Seats same(U32 fold) const noexcept { return equal(fold); }

    // `seats` for none.
    static U32 firstOf(Seats set) noexcept {
        return static_cast<U32>(std::countr_zero(set | Seats{1} << seats));
    }

    // The member's seat; `seats` for one that has none.
    U32 seatOf(const MapLink* member) const noexcept {
        Seats found = 0;
#pragma GCC unroll 8
        for (U32 seat = 0; seat < seats; ++seat) found |= Seats{members_[seat] == member} << seat;
        const U32 seat = firstOf(found);
        return seat < seated() ? seat : seats;
    }

    // How many seats go to hashes below this fold's: the place of the first that does not.
    U32 below(U32 fold) const noexcept {
        return static_cast<U32>(std::countr_one(lower(fold) & taken()));
    }

    // The members from `seat` on move up by one; the member in the last of all seats is pushed out, which is returned.
    // All seats are written, taken or not: that is cheaper than to guess how many are.
    MapLink* seatIn(U32 seat, MapLink* member, U32 fold) noexcept {
        const bool isFull = seated() == seats;
        MapLink* const out = isFull ? members_[seats - 1] : nullptr;
#pragma GCC unroll 8
        for (U32 i = seats - 1; i > 0; --i) {
            const U32 from = i - (i > seat ? 1 : 0);
            words_[i] = words_[from];
            members_[i] = members_[from];
        }
        words_[seat] = fold;
        members_[seat] = member;
        state() += isFull ? 0 : 1;
        return out;
    }

    // The members behind `seat` move down by one.
    void seatOut(U32 seat) noexcept {
#pragma GCC unroll 8
        for (U32 i = 0; i < seats - 1; ++i) {
            const U32 from = i + (i >= seat ? 1 : 0);
            words_[i] = words_[from];
            members_[i] = members_[from];
        }
        --state();
    }

    // Takes the next seat.
    void seatLast(MapLink* member, U32 fold) noexcept {
        const U32 seat = state()++;
        words_[seat] = fold;
        members_[seat] = member;
    }

    // A member of equal key.
    void replace(U32 seat, MapLink* member) noexcept { members_[seat] = member; }

    void standingInc() noexcept { state() += oneStands; }

    void standingDec() noexcept { state() -= oneStands; }

    // Moves the members with this bit set to `to`, which is empty. They are the last ones, for all agree in the bits below.
    // Nobody is behind the seats.
    void cut(U32 bit, Bucket& to) noexcept {
        const U32 count = state();
        const auto kept = static_cast<U32>(std::countr_one(clear(bit) & taken()));
#pragma GCC unroll 8
        for (U32 i = 0; i < seats; ++i) {
            const U32 from = std::min(i + kept, seats - 1);
            to.words_[i] = words_[from];
            to.members_[i] = members_[from];
        }
        to.state() = count - kept;
        state() = kept;
    }

    void clear() noexcept { state() = 0; }

    // What it leads to.
    SubBuckets& sub() const noexcept {
        return *static_cast<SubBuckets*>(static_cast<void*>(members_[0]));
    }

    inline BucketTable* table() const noexcept;
    inline EqualHashes* equal() const noexcept;
    inline void tableIs(BucketTable* table) noexcept;
    inline void equalIs(EqualHashes* equal) noexcept;

private:
    // The state: the numbers of seats taken and of members behind them; or what the bucket leads to.
    static constexpr U32 countMask = 0x0f;
    static constexpr U32 oneStands = 0x10;
    static constexpr U32 standingMask = 0x0ffffff0;
    static constexpr U32 leadsToTable = 0x80000000U;
    static constexpr U32 leadsToEqual = 0x90000000U;

    void leadIs(SubBuckets* lead, U32 kind) noexcept {
        members_[0] = static_cast<MapLink*>(static_cast<void*>(lead));
        state() = kind;
    }

    U32& state() noexcept { return words_[seats]; }

    U32 state() const noexcept { return words_[seats]; }

    Seats taken() const noexcept { return (Seats{1} << seated()) - 1; }

#ifdef __SSE2__
    // All folds, and what lies behind them: taken() leaves it out.
    struct Words {
        __m128i first;
        __m128i second;
    };

    Words words() const noexcept {
        const auto* const words =
            reinterpret_cast<const __m128i*>(words_); // NOLINT: four words each
        return {_mm_loadu_si128(words),
                seats == 5 ? _mm_loadl_epi64(words + 1) : _mm_loadu_si128(words + 1)};
    }

    static Seats bits(__m128i first, __m128i second) noexcept {
        const auto bits = [](__m128i ones) {
            return static_cast<Seats>(_mm_movemask_ps(_mm_castsi128_ps(ones)));
        };
        return bits(first) | bits(second) << 4;
    }

    Seats equal(U32 fold) const noexcept {
        const __m128i asked = _mm_set1_epi32(static_cast<int>(fold));
        const Words all = words();
        return bits(_mm_cmpeq_epi32(all.first, asked), _mm_cmpeq_epi32(all.second, asked));
    }

    Seats clear(U32 bit) const noexcept {
        const __m128i asked = _mm_set1_epi32(static_cast<int>(bit));
        const __m128i zero = _mm_setzero_si128();
        const Words all = words();
        return bits(_mm_cmpeq_epi32(_mm_and_si128(all.first, asked), zero),
                    _mm_cmpeq_epi32(_mm_and_si128(all.second, asked), zero));
    }

    // hashesBelow(each, fold).
    Seats lower(U32 fold) const noexcept {
        const __m128i asked = _mm_set1_epi32(static_cast<int>(fold));
        const __m128i zero = _mm_setzero_si128();
        const auto isNot = [&](__m128i folds) {
            const __m128i differ = _mm_xor_si128(folds, asked);
            const __m128i lowest = _mm_and_si128(differ, _mm_sub_epi32(zero, differ));
            return _mm_cmpeq_epi32(_mm_and_si128(lowest, asked), zero);
        };
        const Words all = words();
        return ~bits(isNot(all.first), isNot(all.second));
    }
#else
    Seats equal(U32 fold) const noexcept {
        return seatsWhere([fold](U32 word) { return word == fold; });
    }

    Seats clear(U32 bit) const noexcept {
        return seatsWhere([bit](U32 word) { return (word & bit) == 0; });
    }

    Seats lower(U32 fold) const noexcept {
        return seatsWhere([fold](U32 word) { return hashesBelow(word, fold); });
    }

    template <class Is>
    Seats seatsWhere(const Is& is) const noexcept {
        Seats found = 0;
        for (U32 seat = 0; seat < seats; ++seat) found |= Seats{is(words_[seat])} << seat;
        return found;
    }
#endif

    U32 words_[seats + 1] = {}; // the folds, and the state
    MapLink* members_[seats] = {};
};

static_assert(sizeof(Bucket) <= 64);

} // namespace Vel::detail
