// DirectoryLayout.h - the bytes of the directory file, which gives each region its physical
// address.
//
// Bytes:   host byte order (little-endian), the same in both word sizes: a header of 256 bytes,
//          then records of 256 bytes each up to the end of the file, no part of one. Bytes called
//          reserved are written as 0 and not interpreted.
// Valid:   a record counts when its state is 1. All its other bytes are written first and the state
//          last, in one aligned word; giving a record up is one store of 0 there. So a kill leaves
//          it whole or absent. The file itself gets its name only once its header is complete.
// Changes: before a record is changed, the header counts it and names the record. So who remembers
//          the file as it was a few changes ago knows which records to read again.
// Trusted: nothing is taken on faith. A reader checks every record that counts (see Directory.h).
// Ignored: everything but the state of a record whose state is 0.
#pragma once

#include <cstddef>
#include <pinbuf/detail/AddressWindow.h>
#include <pinbuf/detail/Integers.h>
#include <pinbuf/detail/RegionName.h>

namespace pinbuf {

inline constexpr U32 directoryMagic = 0x44424e50; // the bytes "PNBD"
inline constexpr U32 directoryVersion = 1;

struct DirectoryHeader {
    static constexpr U32 changedLength = 32; // divides 2^32

    U32 magic = directoryMagic;            //  0
    U32 version = directoryVersion;        //  4
    U32 recordBytes = 256;                 //  8
    U32 windowBegin = pinbuf::windowBegin; // 12: first address of the window
    U32 windowEnd = pinbuf::windowEnd;     // 16: first address after it
    U32 changes = 0;                       // 20: of records so far, modulo 2^32
    U32 changed[changedLength] = {};       // 24: records of the last changes
    U32 reserved[26] = {};                 // 152

    // Where change number `change`, counted from 1, is entered.
    static constexpr std::size_t slotOf(U32 change) { return (change - 1) % changedLength; }

    bool operator==(const DirectoryHeader&) const = default;
};

static_assert(sizeof(DirectoryHeader) == 256 && alignof(DirectoryHeader) == 4);
static_assert(offsetof(DirectoryHeader, windowEnd) == 16 &&
              offsetof(DirectoryHeader, changes) == 20);
static_assert(offsetof(DirectoryHeader, changed) == 24 &&
              offsetof(DirectoryHeader, reserved) == 152);

// How a region came to be. Another number than these says as little as `unknown`.
enum class RegionOrigin : U32 {
    unknown = 0, // by other means, or before records said so
    made = 1,    // by the library, with exactly the size on record
};

struct DirectoryRecord {
    static constexpr U32 stateFree = 0;
    static constexpr U32 stateValid = 1;
    static constexpr std::size_t maxOwnerBytes = 111;

    U32 state = stateFree;                    //   0: written last
    U32 address = 0;                          //   4: physical, a multiple of 4096
    U32 sizeBytes = 0;                        //   8: of the region's file; it takes whole pages
    RegionOrigin origin{};                    //  12
    char name[RegionName::maxBytes + 1] = {}; //  16: of region and file, zeros up to the end
    char owner[maxOwnerBytes + 1] = {};       // 144: who asked first, zeros up to the end

    bool isFree() const { return state == stateFree; }

    bool isValid() const { return state == stateValid; }

    bool isMade() const { return origin == RegionOrigin::made; }

    Extent extent() const { return {address, sizeBytes}; }

    bool operator==(const DirectoryRecord&) const = default;
};

static_assert(sizeof(DirectoryRecord) == 256 && alignof(DirectoryRecord) == 4);
static_assert(offsetof(DirectoryRecord, address) == 4 && offsetof(DirectoryRecord, sizeBytes) == 8);
static_assert(offsetof(DirectoryRecord, origin) == 12);
static_assert(offsetof(DirectoryRecord, name) == 16 && offsetof(DirectoryRecord, owner) == 144);

// Where record `index` begins in the file.
constexpr U64 recordOffsetBytes(U64 index) {
    return sizeof(DirectoryHeader) + index * sizeof(DirectoryRecord);
}

// How many records a file of that size has, whose header is whole.
constexpr std::size_t recordCountOf(U64 fileBytes) {
    return static_cast<std::size_t>((fileBytes - sizeof(DirectoryHeader)) /
                                    sizeof(DirectoryRecord));
}

// The file grows by one page at a time; the header and 15 records fill the first.
inline constexpr U64 directoryGrowthBytes = 4096;

// More regions than the address window has pages cannot be.
inline constexpr U64 maxDirectoryBytes =
    recordOffsetBytes((windowEnd - windowBegin) / addressPageBytes) + directoryGrowthBytes;

} // namespace pinbuf
