#include "Bar.h"

#include <gtest/gtest.h>

namespace {

using PciAgent::bar;

TEST(Bar, IsFullOnlyWhenAllIsThereAndEmptyOnlyWhenNothingIs) {
    EXPECT_EQ(bar(0, 1000, 12), "[..........]");
    EXPECT_EQ(bar(1, 1000, 12), "[#.........]");
    EXPECT_EQ(bar(499, 1000, 12), "[####......]");
    EXPECT_EQ(bar(500, 1000, 12), "[#####.....]");
    EXPECT_EQ(bar(999, 1000, 12), "[#########.]");
    EXPECT_EQ(bar(1000, 1000, 12), "[##########]");
}

TEST(Bar, TakesNumbersWhoseProductExceedsAWord) {
    EXPECT_EQ(bar(0x80000000, 0xffffffff, 12), "[#####.....]");
}

} // namespace
