#include <Vel/nearestNames.h>

#include <cstddef>
#include <gtest/gtest.h>
#include <string>

namespace Vel {
namespace {

TEST(nearestNames, OffersTheNearestFirst) {
    EXPECT_EQ(nearestNames("vlaue", {"hash", "valid", "value"}), "value");
    EXPECT_EQ(nearestNames("size", {"seize", "sizes", "hash", "sizs"}), "seize, sizes, sizs");
    EXPECT_EQ(nearestNames("value", {"values", "value"}), "value, values");
}

TEST(nearestNames, OffersThreeAtMost) {
    EXPECT_EQ(nearestNames("port", {"port1", "port2", "port3", "port4"}), "port1, port2, port3");
}

TEST(nearestNames, ACaseIsNoDistance) {
    EXPECT_EQ(nearestNames("FWKKEY", {"fwkKeys", "fwkKey"}), "fwkKey, fwkKeys");
}

TEST(nearestNames, ALengthMayBeTooFarAwayByItself) {
    EXPECT_EQ(nearestNames("valuxyz", {"value"}), "") << "3 more of 7";
    EXPECT_EQ(nearestNames("values", {"value"}), "value") << "1 more of 6";
    EXPECT_EQ(nearestNames("abc", {"ab"}), "") << "1 more of 3";
    EXPECT_EQ(nearestNames("abcd", {"abc"}), "abc");
    EXPECT_EQ(nearestNames("abc", {"abcd"}), "abcd");
}

// With all pairs of characters in a table this would take terabytes.
TEST(nearestNames, AVeryLongNameIsNotCompared) {
    const std::string written(std::size_t{1} << 24, 'a');
    const std::string known(2000, 'a');
    EXPECT_EQ(nearestNames(written, {"value", known, ""}), "");
    EXPECT_EQ(nearestNames("", {"value", ""}), "");
}

TEST(nearestNames, OffersNothingFarAway) {
    EXPECT_EQ(nearestNames("colour", {"hash", "value"}), "");
    EXPECT_EQ(nearestNames("", {"a"}), "");
    EXPECT_EQ(nearestNames("a", {}), "");
}

} // namespace
} // namespace Vel
