// A table and a plain model of it do the same things in the same random order, and stay the same.
#include <Brixo/CacheTable.h>

#include <Brixo/testing/RegionFolder.h>
#include <Brixo/testing/TableModel.h>
#include <Vel/TraceHandle.h>
#include <gtest/gtest.h>
#include <random>

namespace Brixo {
namespace {

using namespace Testing;

constexpr unsigned seed = 520053;

// Some of the keys differ in their upper bits alone, some in their lower ones.
U32 keyOf(U32 number) { return number % 3 == 0 ? number << 24 : number * 4; }

void compare(const RegionFolder& regions, U32 size, U32 entrySize, unsigned operations) {
    SCOPED_TRACE("seed " + std::to_string(seed) + ", size " + std::to_string(size) +
                 ", entry size " + std::to_string(entrySize));
    regions.clear();
    std::mt19937 random(seed + size);
    const auto below = [&random](U32 bound) { return static_cast<U32>(random() % bound); };
    Vel::Ptr<CacheTable> table = openTable(size, entrySize);
    TableModel model(size, entrySize);
    unsigned restarts = 0;
    for (unsigned i = 0; i < operations; ++i) {
        const U32 choice = below(1000);
        const U32 k = keyOf(below(size + size / 2));
        if (choice < 5) {
            ++restarts;
            if (choice == 0)
                table = openTable(size, entrySize);
            else
                table->doRestart();
            model.restart();
        } else if (choice < 400) {
            table->entryDel(key(k));
            model.del(k);
        } else if (model.takes(k)) {
            std::string data;
            for (U32 byte = 0; byte < entrySize; ++byte) data += static_cast<char>(below(256));
            write(*table, k, data);
            model.write(k, data);
        }
        const U32 asked = keyOf(below(size + size / 2));
        const auto found = model.used.find(asked);
        ASSERT_EQ(entry(*table, asked),
                  found == model.used.end() ? "absent" : model.slots[found->second].data)
            << "operation " << i;
        if (i % 64 == 0 || choice < 5) {
            ASSERT_EQ(model.difference(*table), "") << "operation " << i;
        }
    }
    EXPECT_EQ(model.difference(*table), "");
    EXPECT_EQ(regions.bytes(regionName), model.bytes());
    EXPECT_GT(restarts, operations / 1000) << "maps were rebuilt on the way";
}

TEST(CacheTableModel, ATableDoesWhatAPlainModelDoes) {
    const RegionFolder regions;
    Vel::TraceHandle::settingsAre("*/none"); // duplicates come by the thousand
    compare(regions, 64, 16, 40000);
    compare(regions, 37, 5, 40000);
    compare(regions, 3, 9, 15000);
    compare(regions, 1, 1, 5000);
}

} // namespace
} // namespace Brixo
