// Lane.h - what one thread needs at hand to append: its chunk, its counters, its clock.
//
// Owns:      the chunk it fills and one row of counters, alone: no other thread writes there, so
//            nothing is locked.
// Signals:   a handler of the same thread may append in the middle of an append: it reserves
//            behind.
// Kill:      a message is pending until its last store, so a reader sees it whole or knows that it
//            is not.
#pragma once

#include <Ferrolog/detail/Clock.h>
#include <Ferrolog/detail/Layout.h>
#include <Ferrolog/detail/Words.h>

namespace Ferrolog::detail {

class Recorder;

// The words of a chunk, behind its header.
inline U32* wordsOf(ChunkHeader& chunk) { return reinterpret_cast<U32*>(&chunk + 1); }

// The argument words. Hardly a message has more than two.
inline void writeArguments(U32* to, const U32* arguments, U32 count) {
    if (count == 0) return;
    store(to[0], arguments[0]);
    if (count == 1) return;
    store(to[1], arguments[1]);
    for (U32 i = 2; i < count; ++i) store(to[i], arguments[i]);
}

// The stores of one message in their order. `nextOrdinal` counts the message and says its ordinal:
// counted before it is committed, so that one that a kill cuts off counts as begun and lost, never
// as present and uncounted.
template <class NextOrdinal>
inline void writeMessage(U32* to, U32 tag, U64 age, const U32* arguments, NextOrdinal nextOrdinal) {
    store(to[0], tag + statePending); // the tag's own bits of the state are 0
    store(to[1], static_cast<U32>(age));
    store(to[2], nextOrdinal());
    writeArguments(to + messageHeadWords, arguments, tagWords(tag));
    storeLast(to[0], (static_cast<U32>(age >> 32) << 16) + tag + stateCommitted);
}

struct Lane {
    static constexpr U32 notReady = ~U32{0};

    // What tickets of the opening that the rest belongs to have in their upper half; notReady while
    // that changes. One of the two, by the lane's clock.
    U32 tickets = notReady;          // of the time stamp counter
    U32 monotonicTickets = notReady; // of CLOCK_MONOTONIC
    ChunkHeader* chunk = nullptr;
    U64* counters = nullptr;
    U64 baseTicks = 0;
    U64 horizonTicks = 0; // age at which the anchor, or the chunk, is too old
    U32 chunkWords = 0;
    U32 number = 0;
    U32 thread = 0;               // the kernel's thread id
    Recorder* recorder = nullptr; // that lent the lane; null: no lane
    bool busy = false; // being prepared: a signal handler that comes now must not touch it

    // The counter of the tag's site.
    U64& counterOf(U32 tag) const {
        static_assert(tagSite(0xFFC) == 0x3FF && sizeof(U64) == 8);
        return *reinterpret_cast<U64*>(reinterpret_cast<char*>(counters) +
                                       std::size_t{tag & 0xFFC} * 2);
    }

    // Appends unless the chunk is full or the horizon reached: then false, and nothing is counted.
    // `now` is of the lane's clock.
    bool tryAppend(U32 tag, const U32* arguments, U64 now) {
        const U64 age = now - baseTicks;
        if (age >= horizonTicks) [[unlikely]]
            return false;
        ChunkHeader& to = *chunk;
        const U32 need = messageHeadWords + tagWords(tag);
        const std::size_t at = addAsOnlyWriter(to.usedWords, need);
        if (at + need > chunkWords) [[unlikely]]
            return false;
        U64& counter = counterOf(tag);
        writeMessage(wordsOf(to) + at, tag, age, arguments,
                     [&] { return countAsOnlyWriter(counter); });
        return true;
    }
};

} // namespace Ferrolog::detail
