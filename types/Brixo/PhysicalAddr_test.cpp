#include <Brixo/PhysicalAddr.h>

#include <Brixo/testing/ScalarConformance.h>
#include <Vel/testing/Registered.h>
#include <concepts>
#include <gtest/gtest.h>

namespace {

static_assert(std::equality_comparable<PhysicalAddr>);
static_assert(!std::totally_ordered<PhysicalAddr>);

TEST(PhysicalAddr, IsA32BitNumber) { Brixo::Testing::expectScalar(&PhysicalAddr::value, "value"); }

TEST(PhysicalAddr, ComparesForEqualityOnly) {
    EXPECT_TRUE(PhysicalAddr(5) == PhysicalAddr(5));
    EXPECT_TRUE(PhysicalAddr(5) != PhysicalAddr(6));
    EXPECT_FALSE(PhysicalAddr(5) != PhysicalAddr(5));
}

TEST(PhysicalAddr, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("PhysicalAddr"), "value(value: U32)\n"
                                                        "2 value: U32; stored\n");
}

} // namespace
