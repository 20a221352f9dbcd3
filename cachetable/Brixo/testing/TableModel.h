// TableModel.h - a table as plain containers: what the bytes and the maps must be. Not installed.
//
// It follows the words of CacheTable.h and shares no code with it: deleting writes nothing, the
// first free slot is the one with the least number when its bits are read backwards, and the lowest
// slot wins when the maps are rebuilt.
#pragma once

#include <Brixo/testing/Tables.h>
#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace Brixo::Testing {

struct TableModel {
    struct Slot {
        U32 keyWord = 0xffffffff;
        std::string data;
    };

    std::vector<Slot> slots;
    std::map<U32, U32> used;         // key to slot
    std::map<U32, U32> freeBackward; // a free slot's bits read backwards, to the slot

    TableModel(U32 size, U32 entrySize) : slots(size, Slot{0xffffffff, filled(entrySize, 0)}) {
        restart();
    }

    static U32 backward(U32 number) {
        U32 result = 0;
        for (unsigned bit = 0; bit < 32; ++bit)
            if ((number >> bit & 1U) != 0) result |= 0x80000000U >> bit;
        return result;
    }

    // The slot that a write of this key goes into; the table is not full, or has the key.
    U32 slotFor(U32 key) const {
        const auto found = used.find(key);
        return found != used.end() ? found->second : freeBackward.begin()->second;
    }

    bool takes(U32 key) const { return used.contains(key) || !freeBackward.empty(); }

    void write(U32 key, const std::string& data) {
        const U32 slot = slotFor(key);
        freeBackward.erase(backward(slot));
        used[key] = slot;
        slots[slot] = {key, data};
    }

    void del(U32 key) {
        const auto found = used.find(key);
        if (found == used.end()) return;
        freeBackward[backward(found->second)] = found->second;
        used.erase(found);
    }

    void restart() {
        used.clear();
        freeBackward.clear();
        for (U32 i = 0; i < slots.size(); ++i) {
            if (slots[i].keyWord != 0xffffffff && used.emplace(slots[i].keyWord, i).second)
                continue;
            slots[i].keyWord = 0xffffffff;
            freeBackward[backward(i)] = i;
        }
    }

    std::string slotBytes(U32 slot) const { return word(slots[slot].keyWord) + slots[slot].data; }

    std::string bytes() const {
        std::string result = formattedRegion({});
        for (U32 i = 0; i < slots.size(); ++i) result += slotBytes(i);
        return result;
    }

    // What is wrong with a table that should be like this; "" if nothing is.
    std::string difference(const CacheTable& table) const {
        if (table.auditErrors(9) != 0) return "the table's own audit finds errors";
        if (table.keyToIndexs() != used.size()) return "it has another number of keys";
        if (table.freeIndexs() != freeBackward.size()) return "it has another number of free slots";
        for (const auto& [k, slot] : used) {
            if (table.keyToIndex().find(key(k)) == nullptr)
                return "it lacks key " + std::to_string(k);
            if (table.keyToIndex(key(k)) != slot)
                return "it has key " + std::to_string(k) + " elsewhere";
            if (entry(table, k) != slots[slot].data)
                return "it has other data under key " + std::to_string(k);
        }
        auto expected = freeBackward.begin();
        for (const U32 slot : freeSlots(table))
            if (slot != (expected++)->second) return "its free slots are in another order";
        return "";
    }
};

} // namespace Brixo::Testing
