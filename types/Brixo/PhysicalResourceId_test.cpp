#include <Brixo/PhysicalResourceId.h>

#include <Brixo/testing/ResourceIdConformance.h>
#include <Vel/testing/Registered.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(PhysicalResourceId, IsAKindAndANumber) {
    Testing::expectResourceId<PhysicalResourceId>("PhysicalResourceId");
}

TEST(PhysicalResourceId, ReadsTheTolerantGrammar) {
    Testing::expectResourceIdGrammar<PhysicalResourceId>("PhysicalResourceId");
}

TEST(PhysicalResourceId, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Brixo::PhysicalResourceId"),
              "value(type: Brixo::ResourceType, id: U64)\n"
              "2 type: Brixo::ResourceType; stored\n"
              "3 id: U64; stored\n"
              "4 hash: U32; procedural\n");
}

} // namespace
} // namespace Brixo
