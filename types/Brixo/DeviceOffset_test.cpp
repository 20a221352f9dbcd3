#include <Brixo/DeviceOffset.h>

#include <Brixo/testing/ScalarConformance.h>
#include <Vel/testing/Registered.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(DeviceOffset, IsA32BitNumber) {
    Testing::expectScalar(&DeviceOffset::value, "value");
    Testing::expectOrdered<DeviceOffset, Vel::U32>();
}

TEST(DeviceOffset, NullIsTheGreatestButNotTheDefault) {
    EXPECT_EQ(DeviceOffset::null(), 4294967295u);
    EXPECT_GT(DeviceOffset(DeviceOffset::null()), DeviceOffset(4294967294u));
    EXPECT_NE(DeviceOffset(), DeviceOffset(DeviceOffset::null()));
}

TEST(DeviceOffset, HashesToItsValue) {
    EXPECT_EQ(DeviceOffset(0xdeadbeef).hash(), 0xdeadbeefu);
    EXPECT_EQ(std::hash<DeviceOffset>{}(DeviceOffset(7)), 7u);
}

TEST(DeviceOffset, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Brixo::DeviceOffset"), "value(value: U32)\n"
                                                               "2 value: U32; stored\n"
                                                               "3 hash: U32\n"
                                                               "4 null: U32\n");
}

} // namespace
} // namespace Brixo
