// Tables.h - the tables of the tests: one identity, any shape; and their regions byte by byte. Not
// installed.
#pragma once

#include <Brixo/CacheTable.h>
#include <Vel/Ptr.h>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace Brixo::Testing {

using Vel::U32;
using Vel::U64;
using Vel::U8;

inline const CacheTableIndex tableId(DeviceId(1),
                                     PhysicalResourceId(ResourceType::tableResource, 3));

// The region of agent 3's table: 1512465672 is the mix of type 1 in 4 bytes and number 3 in 8.
inline const std::string regionName = "CacheTable-3-1-1512465672";

// A table of agent 3; each call is a new table on the same region.
inline Vel::Ptr<CacheTable> openTable(U32 size, U32 entrySize) {
    return cacheTableFactory(AgentId(3), tableId, size, entrySize);
}

inline DeviceOffset key(U32 value) { return DeviceOffset(value); }

// `count` bytes, each `value`.
inline std::string filled(unsigned count, int value) {
    return std::string(count, static_cast<char>(value));
}

inline void write(CacheTable& table, U32 key, const std::string& data) {
    table.entryIs(DeviceOffset(key), reinterpret_cast<const unsigned char*>(data.data()));
}

// The bytes of an entry, or "absent".
inline std::string entry(const CacheTable& table, U32 key) {
    const unsigned char* data = table.entry(DeviceOffset(key));
    if (data == nullptr) return "absent";
    return {reinterpret_cast<const char*>(data), table.entrySize()};
}

inline std::string word(U32 value) {
    std::string bytes;
    for (unsigned i = 0; i < 4; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xff);
    return bytes;
}

// A region: header, then key words and data in turn.
inline std::string region(U32 magic, int formatted,
                          std::initializer_list<std::pair<U32, std::string>> slots) {
    std::string bytes =
        word(magic) + std::string(1, static_cast<char>(formatted)) + std::string(3, '\0');
    for (const auto& [keyWord, data] : slots) bytes += word(keyWord) + data;
    return bytes;
}

inline std::string formattedRegion(std::initializer_list<std::pair<U32, std::string>> slots) {
    return region(0xbeefcafe, 1, slots);
}

using Pairs = std::vector<std::pair<U32, U32>>;

// Key and slot of every member, and the free slots, in the maps' order.
inline Pairs usedSlots(const CacheTable& table) {
    Pairs pairs;
    for (const auto& [key, index] : table.keyToIndex()) pairs.emplace_back(key.value(), index);
    return pairs;
}

inline std::vector<U32> freeSlots(const CacheTable& table) {
    std::vector<U32> slots;
    for (const auto& [index, isFree] : table.freeIndex())
        if (isFree) slots.push_back(index);
    return slots;
}

} // namespace Brixo::Testing
