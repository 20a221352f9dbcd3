#include <pinbuf/detail/AddressWindow.h>

#include <algorithm>
#include <gtest/gtest.h>
#include <pinbuf/detail/Integers.h>
#include <random>
#include <vector>

namespace pinbuf {
namespace {

constexpr U32 page = addressPageBytes;

static_assert(wholePages(0) == 0 && wholePages(1) == 4096);
static_assert(wholePages(4095) == 4096 && wholePages(4096) == 4096 && wholePages(4097) == 8192);
static_assert(wholePages(0xffffffff) == 0x100000000);

TEST(AddressWindow, NeverContainsZeroAndEndsBelow32Bits) {
    EXPECT_EQ(windowBegin, 0x40000000U);
    EXPECT_EQ(windowEnd - 1, 0xbfffffffU);
}

TEST(AddressWindow, KnowsWhichExtentsArePossible) {
    EXPECT_TRUE((Extent{windowBegin, 1}.isPossible()));
    EXPECT_TRUE((Extent{windowBegin, windowEnd - windowBegin}.isPossible()));
    EXPECT_TRUE((Extent{windowEnd - page, page}.isPossible()));
    EXPECT_FALSE((Extent{windowEnd - page, page + 1}.isPossible())) << "ends outside";
    EXPECT_FALSE((Extent{windowBegin - page, page}.isPossible())) << "begins outside";
    EXPECT_FALSE((Extent{windowBegin + 1, 1}.isPossible())) << "not aligned";
    EXPECT_FALSE((Extent{windowBegin, 0}.isPossible())) << "empty";
    EXPECT_FALSE((Extent{0xfffff000, 0xffffffff}.isPossible())) << "wraps around 32 bits";
    EXPECT_FALSE((Extent{0, 1}.isPossible()));
}

TEST(FreeRanges, FindTheLowestThatIsLargeEnough) {
    EXPECT_EQ(FreeRanges().firstFit(1), windowBegin);
    const FreeRanges free =
        *FreeRanges::around({{windowBegin + page, 1}, {windowBegin + 4 * page, page + 1}});
    EXPECT_EQ(free.firstFit(page - 1), windowBegin);
    EXPECT_EQ(free.firstFit(page), windowBegin);
    EXPECT_EQ(free.firstFit(page + 1), windowBegin + 2 * page);
    EXPECT_EQ(free.firstFit(2 * page), windowBegin + 2 * page);
    EXPECT_EQ(free.firstFit(2 * page + 1), windowBegin + 6 * page);
}

TEST(FreeRanges, ReachToTheLastByteAndNoFurther) {
    constexpr U32 all = windowEnd - windowBegin;
    EXPECT_EQ(FreeRanges().firstFit(all), windowBegin);
    EXPECT_EQ(FreeRanges().firstFit(U64{all} + 1), std::nullopt);
    EXPECT_EQ(FreeRanges().firstFit(0xffffffff), std::nullopt);
    EXPECT_EQ(FreeRanges().firstFit(U64{1} << 40U), std::nullopt);
    EXPECT_EQ(FreeRanges().largestFit(), all);
    FreeRanges lastPage;
    ASSERT_TRUE(lastPage.take({windowBegin, all - page}));
    EXPECT_EQ(lastPage.firstFit(page), windowEnd - page);
    EXPECT_EQ(lastPage.firstFit(page + 1), std::nullopt);
    EXPECT_EQ(lastPage.largestFit(), page);
    FreeRanges none;
    ASSERT_TRUE(none.take({windowBegin, all}));
    EXPECT_EQ(none.firstFit(1), std::nullopt);
    EXPECT_EQ(none.largestFit(), 0U);
}

TEST(FreeRanges, AreNotAroundExtentsThatShareAPage) {
    EXPECT_TRUE(FreeRanges::around({}).has_value());
    EXPECT_TRUE(FreeRanges::around({{windowBegin, page}, {windowBegin + page, 1}}).has_value());
    EXPECT_FALSE(
        FreeRanges::around({{windowBegin, page + 1}, {windowBegin + page, 1}}).has_value());
    EXPECT_FALSE(FreeRanges::around({{windowBegin, 1}, {windowBegin, 1}}).has_value());
}

TEST(FreeRanges, GiveNoPageTwice) {
    FreeRanges free;
    ASSERT_TRUE(free.take({windowBegin + 2 * page, 2 * page}));
    EXPECT_FALSE(free.take({windowBegin + 2 * page, 1}));
    EXPECT_FALSE(free.take({windowBegin + 3 * page, 2 * page})) << "begins in it";
    EXPECT_FALSE(free.take({windowBegin + page, page + 1})) << "ends in it";
    EXPECT_FALSE(free.take({windowBegin, 8 * page})) << "contains it";
    EXPECT_TRUE(free.take({windowBegin, 2 * page}));
    EXPECT_TRUE(free.take({windowBegin + 4 * page, page}));
}

// Against a list of single pages, in which every question is a plain search.
TEST(FreeRanges, AgreeWithAModelOfSinglePages) {
    constexpr U32 seed = 20240611;
    std::mt19937 random(seed);
    constexpr std::size_t modelPages = 64; // the low end of the window; the rest stays free
    for (int round = 0; round < 300; ++round) {
        std::vector<bool> isTaken(modelPages + 9, false);
        std::vector<Extent> taken;
        FreeRanges free;
        for (int step = 0; step < 60; ++step) {
            const U32 sizeBytes = 1 + random() % (8 * page);
            const std::size_t pages = static_cast<std::size_t>(wholePages(sizeBytes) / page);
            std::size_t expected = 0;
            const auto isFree = [&](std::size_t from) {
                for (std::size_t i = from; i < from + pages; ++i) {
                    if (i < isTaken.size() && isTaken[i]) return false;
                }
                return true;
            };
            while (!isFree(expected)) ++expected;

            const auto found = free.firstFit(sizeBytes);
            ASSERT_TRUE(found.has_value());
            ASSERT_EQ((*found - windowBegin) / page, expected)
                << "seed " << seed << " round " << round;
            if (expected + pages > modelPages) { // give one back instead
                if (taken.empty()) continue;
                const auto victim =
                    taken.begin() + static_cast<std::ptrdiff_t>(random() % taken.size());
                for (U64 a = victim->address; a < victim->end(); a += page) {
                    isTaken[static_cast<std::size_t>((a - windowBegin) / page)] = false;
                }
                ASSERT_FALSE(free.take(*victim));
                free.giveBack(*victim);
                taken.erase(victim);
                continue;
            }
            for (std::size_t i = expected; i < expected + pages; ++i) isTaken[i] = true;
            taken.push_back({*found, sizeBytes});
            ASSERT_TRUE(free.take(taken.back()));
            std::sort(taken.begin(), taken.end(),
                      [](const Extent& a, const Extent& b) { return a.address < b.address; });
            const auto rebuilt = FreeRanges::around(taken);
            ASSERT_TRUE(rebuilt.has_value());
            for (U32 size = page; size <= 12 * page; size += page) {
                ASSERT_EQ(rebuilt->firstFit(size), free.firstFit(size));
            }
            ASSERT_EQ(rebuilt->largestFit(), free.largestFit());
        }
    }
}

} // namespace
} // namespace pinbuf
