#include <Brixo/LogicalTableId.h>

#include <Brixo/LogicalResourceId.h>
#include <Brixo/testing/ResourceIdConformance.h>
#include <Vel/testing/Registered.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(LogicalTableId, IsALogicalResourceIdOfItsKind) {
    Testing::expectRefinement<LogicalTableId, LogicalResourceId>("LogicalTableId",
                                                                 ResourceType::tableResource);
}

TEST(LogicalTableId, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Brixo::LogicalTableId"),
              "value of Brixo::LogicalResourceId(id: U64)\n");
}

} // namespace
} // namespace Brixo
