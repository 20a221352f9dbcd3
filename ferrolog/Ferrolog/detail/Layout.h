// Layout.h - the trace file, byte by byte. docs/trace-file.md is the same in words.
//
// Order:      host byte order of x86 (little-endian), the same for 32- and 64-bit programs.
// Sizes:      all follow from the ring size, so a reader that knows the file's size alone can find
//             every part.
// Validity:   each part says beside it which store makes it valid; that store is the last one.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace Ferrolog::detail {

using U8 = std::uint8_t;
using U16 = std::uint16_t;
using U32 = std::uint32_t;
using U64 = std::uint64_t;

inline constexpr std::array<char, 8> fileMagic = {'F', 'E', 'R', 'R', 'O', 'L', 'O', 'G'};
// Until then: an opening has begun to make the file, and nothing is in it yet.
inline constexpr std::array<char, 8> unfinishedMagic = {'F', 'E', 'R', 'R', 'O', 'L', 'O', '\0'};
inline constexpr U32 fileByteOrder = 0x01020304;
inline constexpr U32 fileVersion = 1;

inline constexpr U32 minRingBytes = U32{16} << 10;
inline constexpr U32 maxRingBytes = U32{256} << 20;
inline constexpr U32 defaultRingBytes = U32{1} << 20;
inline constexpr U32 maxLanes = 32;

// One moment on three clocks. `ticks` is the clock of the messages.
struct Anchor {
    U64 ticks;
    U64 monotonicNs; // CLOCK_MONOTONIC
    U64 realtimeNs;  // since 1970, UTC
};

static_assert(sizeof(Anchor) == 24);

// Who writes without a lock: a thread holds a lane, a lane fills a chunk. Lane 0 is for the threads
// that found none.
struct LaneRecord {
    U32 owner; // number of the life that holds the lane; 0: free
    U32 chunk; // slot of the chunk that the lane fills, plus 1; 0: none
};

static_assert(sizeof(LaneRecord) == 8);

struct FileHeader {
    std::array<char, 8> magic; // 0: stored last, makes the file valid
    U32 byteOrder;             // 8
    U32 version;               // 12
    U64 createdNs;             // 16: since 1970, UTC
    U32 ringBytes;             // 24: power of two
    U32 check;                 // 28: of bytes 0 to 27
    U64 nextChunk;             // 32: ordinal of the next chunk to be taken; the first is 1
    U32 livesBegun;            // 40
    U32 sessionsBegun;         // 44
    U32 sitesUsed; // 48: entries handed out, also those never completed; may exceed the capacity
    U32 textUsed;  // 52: bytes handed out; may exceed the capacity
    std::array<U32, 2> unused;              // 56
    std::array<LaneRecord, maxLanes> lanes; // 64
    std::array<U32, 48> reserved;           // 320
};

static_assert(sizeof(FileHeader) == 512 && offsetof(FileHeader, nextChunk) == 32 &&
              offsetof(FileHeader, lanes) == 64 && offsetof(FileHeader, reserved) == 320);

enum class ClockKind : U32 { timeStampCounter = 1, monotonicNs = 2 };

// One process that wrote. Life n stands at index (n - 1) modulo the number of lives.
struct LifeRecord {
    U32 number;      // 0: stored last, makes the record valid; 0 while it changes
    U32 session;     // 4: one for each opening; a forked child has the session of its parent
    U32 pid;         // 8
    ClockKind clock; // 12: what the ticks of this life are
    std::array<char, 16> name;    // 16: of the process, padded with zero bytes
    Anchor first;                 // 32
    U32 latestIndex;              // 56: which of `latest` holds; stored after it was written
    U32 unused;                   // 60
    std::array<Anchor, 2> latest; // 64: written in turn, about once a second while messages come
    U64 beganTicks;               // 112
    U64 reserved;                 // 120
};

static_assert(sizeof(LifeRecord) == 128 && offsetof(LifeRecord, name) == 16 &&
              offsetof(LifeRecord, first) == 32 && offsetof(LifeRecord, latest) == 64);

// One call site. Its texts stand in the text area, one after another: file, format, letters.
struct SiteRecord {
    U32 valid;                   // 0: 1 makes the record valid, stored last
    U32 line;                    // 4
    U32 textOffset;              // 8: bytes from the start of the text area
    U16 fileBytes;               // 12
    U16 formatBytes;             // 14
    U16 letterBytes;             // 16
    U16 words;                   // 18: argument words of each message
    U32 check;                   // 20: of the three texts, the line and the words
    std::array<U32, 2> reserved; // 24
};

static_assert(sizeof(SiteRecord) == 32 && offsetof(SiteRecord, check) == 20);

inline constexpr U32 ownerSiteId =
    0; // not a site: the message says which life and thread wrote the ones after it
inline constexpr U32 noRoomSiteId =
    1; // made with the file: takes the messages of sites that found no room
inline constexpr U32 maxArgumentWords = 15;

// A piece of the ring that one lane fills with messages, from the front. Zeroed before each use.
struct ChunkHeader {
    U64 ordinal;   // 0: stored last, makes the chunk valid; slot = ordinal % chunks
    U64 baseTicks; // 8: times of the messages count from here
    U32 owner;     // 16: lane that fills the chunk, plus 1; 0: free to be taken
    U32 users;     // 20: threads that write into it right now; kept in lane 0 only
    U32 usedWords; // 24: handed out after this header; more than fit: the chunk is full
    U32 lane;      // 28
};

static_assert(sizeof(ChunkHeader) == 32 && offsetof(ChunkHeader, usedWords) == 24);

// A message: three words, then the argument words.
//   word 0, low half    words << 12 | site id << 2 | state
//   word 0, high half   bits 32 to 47 of the age
//   word 1              bits 0 to 31 of the age: ticks since the chunk's baseTicks
//   word 2              how many messages its lane had begun for this site before, modulo 2^32
inline constexpr U32 messageHeadWords = 3;
inline constexpr U32 statePending = 1;       // length and site known, words not yet
inline constexpr U32 stateCommitted = 2;     // stored last
inline constexpr U32 ownerArgumentWords = 2; // life number, thread id
inline constexpr U32 ageBits = 48;

constexpr U32 messageTag(U32 siteId, U32 words) { return words << 12 | siteId << 2; }

constexpr U32 tagSite(U32 word0) { return word0 >> 2 & 0x3FF; }

constexpr U32 tagWords(U32 word0) { return word0 >> 12 & 0xF; }

constexpr U32 tagState(U32 word0) { return word0 & 3; }

// FNV-1a, 32 bits: finds a damaged byte, keeps nobody out.
class Check {
public:
    constexpr void add(const char* bytes, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) addByte(static_cast<U8>(bytes[i]));
    }

    constexpr void add(U32 word) {
        for (unsigned shift = 0; shift < 32; shift += 8) addByte(static_cast<U8>(word >> shift));
    }

    constexpr U32 value() const { return value_; }

private:
    constexpr void addByte(U8 byte) { value_ = (value_ ^ byte) * 16777619U; }

    U32 value_ = 2166136261U;
};

constexpr U32 headerCheck(const FileHeader& header) {
    Check check;
    check.add(fileMagic.data(), fileMagic.size());
    check.add(header.byteOrder);
    check.add(header.version);
    check.add(static_cast<U32>(header.createdNs));
    check.add(static_cast<U32>(header.createdNs >> 32));
    check.add(header.ringBytes);
    return check.value();
}

// Where everything is, in bytes from the start of the file.
struct Layout {
    U32 ringBytes;
    U32 chunkBytes;
    U32 chunks;
    U32 lanes;
    U32 siteCapacity; // ids 0 to siteCapacity - 1; id 0 is ownerSiteId
    U32 textBytes;
    U32 lives;
    U32 livesAt;
    U32 sitesAt;
    U32 textAt;
    U32 countersAt; // U64 for each lane and site: messages begun; lane by lane
    U32 ringAt;
    U32 fileBytes;

    constexpr U32 chunkWords() const {
        return (chunkBytes - static_cast<U32>(sizeof(ChunkHeader))) / 4;
    }

    constexpr U32 lifeAt(U32 number) const {
        return livesAt + (number - 1) % lives * static_cast<U32>(sizeof(LifeRecord));
    }

    constexpr U32 siteAt(U32 id) const {
        return sitesAt + id * static_cast<U32>(sizeof(SiteRecord));
    }

    constexpr U32 counterAt(U32 lane, U32 id) const {
        return countersAt + (lane * siteCapacity + id) * static_cast<U32>(sizeof(U64));
    }

    constexpr U32 chunkAt(U32 slot) const { return ringAt + slot * chunkBytes; }
};

constexpr bool isRingSize(U32 bytes) {
    return bytes >= minRingBytes && bytes <= maxRingBytes && (bytes & (bytes - 1)) == 0;
}

// Precondition: isRingSize(ringBytes). Chunks are at least twice the lanes, so that there is always
//               one to take.
constexpr Layout layoutOf(U32 ringBytes) {
    Layout l{};
    l.ringBytes = ringBytes;
    l.chunkBytes = std::clamp<U32>(ringBytes / 64, 256, 4096);
    l.chunks = ringBytes / l.chunkBytes;
    l.lanes = std::min(maxLanes, l.chunks / 4);
    l.siteCapacity = std::clamp<U32>(ringBytes / 256, 64, 1024);
    l.textBytes = l.siteCapacity * 128;
    l.lives = std::clamp<U32>(l.chunks, 64, 1024);
    l.livesAt = sizeof(FileHeader);
    l.sitesAt = l.livesAt + l.lives * static_cast<U32>(sizeof(LifeRecord));
    l.textAt = l.sitesAt + l.siteCapacity * static_cast<U32>(sizeof(SiteRecord));
    l.countersAt = l.textAt + l.textBytes;
    l.ringAt = (l.counterAt(l.lanes, 0) + 4095) & ~U32{4095};
    l.fileBytes = l.ringAt + ringBytes;
    return l;
}

static_assert(layoutOf(minRingBytes).fileBytes == 45056);
static_assert(layoutOf(defaultRingBytes).fileBytes == 1511424);
static_assert(layoutOf(minRingBytes).chunkWords() == 56);

} // namespace Ferrolog::detail
