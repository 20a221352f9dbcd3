#include <Brixo/DeviceId.h>

#include <Brixo/testing/ScalarConformance.h>
#include <Vel/testing/Registered.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(DeviceId, IsA16BitNumber) {
    Testing::expectScalar(&DeviceId::value, "value");
    Testing::expectOrdered<DeviceId, Vel::U16>();
}

TEST(DeviceId, KeepsTheLowBitsOfWhatItReads) {
    EXPECT_EQ(Vel::Testing::parsed<DeviceId>("70000").value(), 4464u);
}

TEST(DeviceId, HashesToItsValue) { EXPECT_EQ(DeviceId(0xabcd).hash(), 0xabcdu); }

TEST(DeviceId, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Brixo::DeviceId"), "value(value: U16)\n"
                                                           "2 value: U16; stored\n"
                                                           "3 hash: U16\n");
}

} // namespace
} // namespace Brixo
