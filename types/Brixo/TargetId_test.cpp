#include <Brixo/TargetId.h>

#include <Brixo/testing/ScalarConformance.h>
#include <Vel/testing/Registered.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(TargetId, IsAByte) {
    Testing::expectScalar<TargetId, Vel::U8>(&TargetId::value, "value");
    Testing::expectOrdered<TargetId, Vel::U8>();
}

TEST(TargetId, StatesItsConstants) {
    EXPECT_EQ(TargetId::min(), 0u);
    EXPECT_EQ(TargetId::anyTarget(), 62u);
    EXPECT_EQ(TargetId::allTargets(), 63u);
    EXPECT_EQ(TargetId::max(), 64u);
    EXPECT_EQ(TargetId::null(), 255u);
    EXPECT_EQ(TargetId().value(), 0u);
}

TEST(TargetId, OnlyTheTwoAliasesAreAliases) {
    for (unsigned v = 0; v < 256; ++v)
        EXPECT_EQ(TargetId(static_cast<Vel::U8>(v)).alias(), v == 62 || v == 63) << v;
}

TEST(TargetId, IsABitId) {
    EXPECT_TRUE(TargetId(7) == Orn::BitId(7));
    EXPECT_EQ(TargetId(200).hash(), 200u);
    EXPECT_EQ(Vel::Testing::parsed<TargetId>("200").value(), 200u);
}

TEST(TargetId, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Brixo::TargetId"), "value of Orn::BitId(value: U8)\n"
                                                           "130 min: U8\n"
                                                           "131 anyTarget: U8\n"
                                                           "132 allTargets: U8\n"
                                                           "133 max: U8\n"
                                                           "134 hash: U8\n"
                                                           "135 alias: bool; procedural\n");
}

} // namespace
} // namespace Brixo
