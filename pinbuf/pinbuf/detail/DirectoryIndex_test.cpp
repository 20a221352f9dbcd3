#include <pinbuf/detail/DirectoryIndex.h>

#include <gtest/gtest.h>
#include <map>
#include <pinbuf/detail/Integers.h>
#include <pinbuf/detail/TestSupport.h>
#include <random>
#include <string>

namespace pinbuf {
namespace {

using test::failureOf;

constexpr U32 page = addressPageBytes;

DirectoryRecord recordOf(const std::string& name, U32 address, U32 sizeBytes = 1) {
    DirectoryRecord record;
    record.state = DirectoryRecord::stateValid;
    record.address = address;
    record.sizeBytes = sizeBytes;
    name.copy(record.name, sizeof record.name - 1);
    return record;
}

TEST(DirectoryIndex, FindsRecordsByName) {
    const DirectoryIndex index({recordOf("b", windowBegin), DirectoryRecord{},
                                recordOf("a", windowBegin + page),
                                recordOf("ab", windowBegin + 2 * page)});
    EXPECT_EQ(index.size(), 4U);
    EXPECT_EQ(index.find("a"), 2U);
    EXPECT_EQ(index.find("ab"), 3U);
    EXPECT_EQ(index.find("b"), 0U);
    EXPECT_EQ(index.find(""), std::nullopt);
    EXPECT_EQ(index.find("aa"), std::nullopt);
    EXPECT_EQ(index.find("c"), std::nullopt);
}

TEST(DirectoryIndex, SaysWhichRecordsDoNotAgree) {
    const auto objection = [](std::vector<DirectoryRecord> records) {
        return failureOf([&] { const DirectoryIndex index(std::move(records)); });
    };
    const DirectoryRecord a = recordOf("a", windowBegin, page);
    EXPECT_EQ(objection({a, recordOf("b", windowBegin + page)}), "");
    EXPECT_EQ(objection({a, recordOf("a", windowBegin + page)}), "two records have the name \"a\"");
    EXPECT_EQ(objection({a, recordOf("b", windowBegin)}), "two regions overlap");
    EXPECT_EQ(objection({a, recordOf("/", windowBegin + page)}), "record 1 has no region name");
    EXPECT_EQ(objection({a, recordOf("b", 0)}), "record 1 lies outside the address window");
}

TEST(DirectoryIndex, TakesNoRecordThatDoesNotAgreeWithTheOthers) {
    DirectoryIndex index({recordOf("a", windowBegin, page), DirectoryRecord{}, DirectoryRecord{}});
    EXPECT_FALSE(index.put(1, recordOf("a", windowBegin + page)));
    EXPECT_FALSE(index.put(1, recordOf("b", windowBegin)));
    EXPECT_FALSE(index.put(1, recordOf(".", windowBegin + page)));
    EXPECT_EQ(index.find("b"), std::nullopt);
    EXPECT_EQ(index.firstFree(), 1U);
    EXPECT_TRUE(index.put(1, recordOf("b", windowBegin + page)));
    EXPECT_EQ(index.find("b"), 1U);
    EXPECT_EQ(index.firstFree(), 2U);
    index.clear(0);
    EXPECT_EQ(index.firstFree(), 0U);
    EXPECT_TRUE(index.put(0, recordOf("c", windowBegin)));
}

TEST(DirectoryIndex, GrowsByFreeRecords) {
    DirectoryIndex index({recordOf("a", windowBegin)});
    EXPECT_EQ(index.firstFree(), std::nullopt);
    index.lengthen(3);
    EXPECT_EQ(index.firstFree(), 1U);
    EXPECT_EQ(index.find("a"), 0U);
}

// What stands in it after many changes is what a fresh one over the same records says.
TEST(DirectoryIndex, AgreesWithOneThatIsLoadedAnew) {
    constexpr U32 seed = 20240613;
    constexpr std::size_t size = 40;
    std::mt19937 random(seed);
    SCOPED_TRACE("seed " + std::to_string(seed));
    DirectoryIndex index(std::vector<DirectoryRecord>(size, DirectoryRecord{}));
    for (int step = 0; step < 2000; ++step) {
        const std::size_t record = random() % size;
        if (!index[record].isFree()) {
            index.clear(record);
        } else {
            const std::string name = "r" + std::to_string(random() % 60);
            const auto sizeBytes = static_cast<U32>(1 + random() % (5 * page));
            const bool isKnown = index.find(name).has_value();
            const U32 address = *index.freeRanges().firstFit(sizeBytes);
            ASSERT_EQ(index.put(record, recordOf(name, address, sizeBytes)), !isKnown);
        }
        std::vector<DirectoryRecord> records;
        for (std::size_t i = 0; i < size; ++i) records.push_back(index[i]);
        DirectoryIndex fresh(std::move(records));
        ASSERT_EQ(index.firstFree(), fresh.firstFree());
        for (int name = 0; name < 60; ++name) {
            const std::string text = "r" + std::to_string(name);
            ASSERT_EQ(index.find(text), fresh.find(text));
        }
        for (U32 bytes = page; bytes < 9 * page; bytes += page) {
            ASSERT_EQ(index.freeRanges().firstFit(bytes), fresh.freeRanges().firstFit(bytes));
        }
        ASSERT_EQ(index.freeRanges().largestFit(), fresh.freeRanges().largestFit());
    }
}

} // namespace
} // namespace pinbuf
