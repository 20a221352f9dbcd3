#include <Vel/nearestNames.h>

#include <gtest/gtest.h>

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

TEST(nearestNames, OffersNothingFarAway) {
    EXPECT_EQ(nearestNames("colour", {"hash", "value"}), "");
    EXPECT_EQ(nearestNames("", {"a"}), "");
    EXPECT_EQ(nearestNames("a", {}), "");
}

} // namespace
} // namespace Vel
