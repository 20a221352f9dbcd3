#include <Vel/detail/OrderBits.h>

#include <gtest/gtest.h>
#include <random>
#include <set>
#include <string>

namespace Vel::detail {
namespace {

class OrderBitsOf : public testing::TestWithParam<unsigned> {};

INSTANTIATE_TEST_SUITE_P(Depths, OrderBitsOf, testing::Values(0U, 1U, 5U, 6U, 7U, 12U, 13U, 19U));

TEST_P(OrderBitsOf, AgreesWithASet) {
    const unsigned bits = GetParam();
    OrderBits order;
    EXPECT_FALSE(order.made());
    ASSERT_TRUE(order.make(bits));
    EXPECT_TRUE(order.made());
    EXPECT_TRUE(order.empty());
    EXPECT_EQ(order.next(0), OrderBits::none);

    std::set<U32> model;
    const U32 limit = U32{1} << bits;
    const U32 seed = 4711;
    SCOPED_TRACE("seed " + std::to_string(seed));
    auto random = [engine = std::mt19937(seed)]() mutable { return static_cast<U32>(engine()); };
    for (int step = 0; step < 20'000; ++step) {
        const U32 number = random() % limit;
        if (step / 2500 % 2 == 0 ? random() % 4 != 0 : random() % 4 == 0) {
            order.set(number);
            model.insert(number);
        } else {
            order.clear(number);
            model.erase(number);
        }
        ASSERT_EQ(order.has(number), model.contains(number));
        ASSERT_EQ(order.empty(), model.empty());
        const U32 from = random() % limit;
        const auto expected = model.lower_bound(from);
        ASSERT_EQ(order.next(from), expected != model.end() ? *expected : OrderBits::none);
    }
    EXPECT_EQ(order.next(limit), OrderBits::none);
    EXPECT_EQ(order.auditErrors(), 0u);
}

TEST_P(OrderBitsOf, WideningDoublesEveryNumber) {
    const unsigned bits = GetParam();
    OrderBits order;
    OrderBits wider;
    ASSERT_TRUE(order.make(bits));
    ASSERT_TRUE(wider.make(bits + 1));
    std::set<U32> model;
    auto random = [engine = std::mt19937(815)]() mutable { return static_cast<U32>(engine()); };
    for (U32 count = 0; count < (U32{1} << bits) / 3 + 1; ++count) {
        const U32 number = random() % (U32{1} << bits);
        order.set(number);
        model.insert(2 * number);
    }
    for (U32 word = 0; word < order.words(); ++word) order.widenWord(word, wider);
    EXPECT_TRUE(order.empty());
    std::set<U32> found;
    for (U32 at = wider.next(0); at != OrderBits::none; at = wider.next(at + 1)) found.insert(at);
    EXPECT_EQ(found, model);
    EXPECT_EQ(order.auditErrors() + wider.auditErrors(), 0u);
}

TEST(OrderBits, SwapsSmallWithLarge) {
    OrderBits small;
    OrderBits large;
    ASSERT_TRUE(small.make(3));
    ASSERT_TRUE(large.make(14));
    small.set(5);
    large.set(9000);
    small.swap(large);
    EXPECT_EQ(small.next(0), 9000u);
    EXPECT_EQ(large.next(0), 5u);
    large.release();
    EXPECT_FALSE(large.made());
    small.swap(large);
    EXPECT_EQ(large.next(0), 9000u);
    EXPECT_FALSE(small.made());
}

TEST(OrderBits, GivesItsWords) {
    OrderBits order;
    ASSERT_TRUE(order.make(12));
    order.set(OrderBits::wordBits + 3);
    EXPECT_EQ(order.bitsIn(0), 0u);
    EXPECT_EQ(order.bitsIn(1), 8u);
    EXPECT_EQ(order.words(), 4096 / OrderBits::wordBits);
    EXPECT_EQ(order.bitsIn(order.words()), 0u);
}

} // namespace
} // namespace Vel::detail
