#include <Vel/detail/Marks.h>

#include <Vel/KeyHash.h>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <string>

namespace Vel::detail {
namespace {

struct HashesBelow {
    bool operator()(U32 a, U32 b) const { return hashesBelow(a, b); }
};

using Model = std::set<U32, HashesBelow>;

void expectSame(const Marks& marks, const Model& model, U32 from) {
    ASSERT_EQ(marks.empty(), model.empty());
    ASSERT_EQ(marks.first(), model.empty() ? Marks::none : *model.begin());
    const auto next = model.upper_bound(from);
    ASSERT_EQ(marks.next(from), next != model.end() ? *next : Marks::none) << from;
    ASSERT_EQ(marks.has(from), model.contains(from)) << from;
}

class MarksBelow : public testing::TestWithParam<U32> {};

INSTANTIATE_TEST_SUITE_P(Counts, MarksBelow,
                         testing::Values(1U, 2U, 15U, 16U, 17U, 256U, 257U, 4096U, 70'000U));

TEST_P(MarksBelow, AgreeWithASet) {
    const U32 count = GetParam();
    Marks marks{};
    ASSERT_TRUE(marks.reach(count));
    Model model;
    std::mt19937 random(4711);
    for (int step = 0; step < 20'000; ++step) {
        const U32 n = static_cast<U32>(random()) % count;
        if (step / 2500 % 2 == 0 ? random() % 4 != 0 : random() % 4 == 0) {
            marks.set(n);
            model.insert(n);
        } else if (marks.has(n)) {
            marks.clear(n);
            model.erase(n);
        }
        ASSERT_NO_FATAL_FAILURE(expectSame(marks, model, static_cast<U32>(random()) % count));
    }
    marks.release();
    EXPECT_TRUE(marks.empty());
}

TEST(Marks, StayWhereTheyAreWhenMoreMayCome) {
    Marks marks{};
    Model model;
    std::mt19937 random(815);
    U32 count = 1;
    for (int step = 0; step < 20'000; ++step) {
        if (step % 1000 == 0 && count < 200'000) {
            count *= 2;
            ASSERT_TRUE(marks.reach(count));
        }
        const U32 n = static_cast<U32>(random()) % count;
        if (random() % 3 != 0) {
            marks.set(n);
            model.insert(n);
        } else if (marks.has(n)) {
            marks.clear(n);
            model.erase(n);
        }
        ASSERT_NO_FATAL_FAILURE(expectSame(marks, model, static_cast<U32>(random()) % count));
    }
    U32 walked = 0;
    for (U32 at = marks.first(); at != Marks::none; at = marks.next(at)) ++walked;
    EXPECT_EQ(walked, model.size());
    for (const U32 n : model) marks.clear(n);
    EXPECT_TRUE(marks.empty());
    EXPECT_EQ(marks.first(), Marks::none);
    marks.release();
}

TEST(Marks, TakeAboutAByteForANumberAndNothingForAFew) {
    Marks marks{};
    ASSERT_TRUE(marks.reach(16));
    EXPECT_EQ(marks.heapBytes(), 0u);
    ASSERT_TRUE(marks.reach(17));
    EXPECT_EQ(marks.heapBytes(), 2u + 2 * 16);
    ASSERT_TRUE(marks.reach(1U << 20));
    EXPECT_LT(marks.heapBytes(), (1U << 20) / 7);
    marks.release();
    EXPECT_EQ(marks.heapBytes(), 0u);
}

} // namespace
} // namespace Vel::detail
