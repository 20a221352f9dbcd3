#include <Brixo/LogicalResourceId.h>

#include <Brixo/testing/ResourceIdConformance.h>
#include <Vel/testing/Registered.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(LogicalResourceId, IsAKindAndANumber) {
    Testing::expectResourceId<LogicalResourceId>("LogicalResourceId");
}

TEST(LogicalResourceId, ReadsTheTolerantGrammar) {
    Testing::expectResourceIdGrammar<LogicalResourceId>("LogicalResourceId");
}

TEST(LogicalResourceId, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Brixo::LogicalResourceId"),
              "value(type: Brixo::ResourceType, id: U64)\n"
              "2 type: Brixo::ResourceType; stored\n"
              "3 id: U64; stored\n"
              "4 hash: U32; procedural\n");
}

} // namespace
} // namespace Brixo
