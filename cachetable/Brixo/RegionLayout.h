// RegionLayout.h - the bytes of a cache table's region. docs/region-layout.md tells the same for
// other readers.
//
// Order:    host byte order, little-endian on every machine that this library runs on.
// Trust:    recovery believes a region that has the magic and a formatted flag other than 0, and
//           then the key words alone. The data of a slot are never read, the reserved bytes never
//           to judge by.
// Access:   slots are packed, so key words and data may lie at any address: readKeyWord and
//           writeKeyWord, by memcpy, are the only places that touch a key word.
#pragma once

#include <Vel/Integers.h>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstring>

namespace Brixo::RegionLayout {

using Vel::U32;
using Vel::U64;
using Vel::U8;

struct Header {
    U32 magic;      // 0: 0xbeefcafe, written first
    U8 formatted;   // 4: 1 once every slot is marked unused, written last: a torn format is redone
    U8 reserved[3]; // 5: never written; read only to tell whether the region is fresh
};

static_assert(std::endian::native == std::endian::little);
static_assert(sizeof(Header) == 8 && offsetof(Header, formatted) == 4);

// Whether nothing was ever written there: pinbuf makes a region of zero bytes.
constexpr bool isFresh(const Header& header) noexcept {
    return (header.magic | header.formatted | header.reserved[0] | header.reserved[1] |
            header.reserved[2]) == 0;
}

constexpr U32 magic = 0xbeefcafe;
constexpr U32 headerBytes = sizeof(Header);
constexpr U32 keyWordBytes = sizeof(U32);
constexpr U32 unusedKeyWord =
    0xffffffff; // not Brixo::unusedEntryPattern(), which the table never uses

// Bytes from one slot's key word to the next, modulo 2^32.
constexpr U32 slotBytes(U32 entrySize) noexcept { return entrySize + keyWordBytes; }

// Bytes of a region, modulo 2^32.
constexpr U32 regionBytes(U32 entrySize, U32 size) noexcept {
    return slotBytes(entrySize) * size + headerBytes;
}

// Whether a region of 2^32 - 1 bytes has room for so many slots. Else regionBytes() has wrapped
// around and tells nothing.
constexpr bool fits(U32 entrySize, U32 size) noexcept {
    constexpr U64 most = 0xffffffff - headerBytes;
    return size == 0 || U64{entrySize} + keyWordBytes <= most / size;
}

// Where slot `index` begins, in bytes from the start of the region, modulo 2^32.
constexpr U32 slotOffset(U32 entrySize, U32 index) noexcept {
    return headerBytes + index * slotBytes(entrySize);
}

inline U32 readKeyWord(const unsigned char* slot) noexcept {
    U32 word = 0;
    std::memcpy(&word, slot, sizeof(word));
    return word;
}

inline void writeKeyWord(unsigned char* slot, U32 word) noexcept {
    std::memcpy(slot, &word, sizeof(word));
}

// All stores before this line reach the region before any store behind it: for other readers and
// for whoever finds the region after a kill. On x86 it costs nothing; it holds back the compiler.
inline void storesInOrder() noexcept { std::atomic_thread_fence(std::memory_order_release); }

} // namespace Brixo::RegionLayout
