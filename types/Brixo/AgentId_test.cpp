#include <Brixo/AgentId.h>

#include <Brixo/testing/ScalarConformance.h>
#include <Vel/testing/Registered.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(AgentId, IsA16BitNumber) {
    Testing::expectScalar(&AgentId::value, "value");
    Testing::expectOrdered<AgentId, Vel::U16>();
}

TEST(AgentId, NullIsTheGreatestButNotTheDefault) {
    EXPECT_EQ(AgentId::null(), 65535u);
    EXPECT_EQ(Vel::Testing::text(AgentId(AgentId::null())), "65535");
    EXPECT_GT(AgentId(65535), AgentId(0));
    EXPECT_EQ(AgentId().value(), 0u);
}

TEST(AgentId, HashesToItsValue) { EXPECT_EQ(AgentId(513).hash(), 513u); }

TEST(AgentId, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Brixo::AgentId"), "value(value: U16)\n"
                                                          "2 value: U16; stored\n"
                                                          "3 hash: U16\n"
                                                          "4 null: U16\n");
}

} // namespace
} // namespace Brixo
