#include <Brixo/LogicalRegisterId.h>

#include <Brixo/LogicalResourceId.h>
#include <Brixo/testing/ResourceIdConformance.h>
#include <Vel/testing/Registered.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(LogicalRegisterId, IsALogicalResourceIdOfItsKind) {
    Testing::expectRefinement<LogicalRegisterId, LogicalResourceId>("LogicalRegisterId",
                                                                    ResourceType::registerResource);
}

TEST(LogicalRegisterId, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Brixo::LogicalRegisterId"),
              "value of Brixo::LogicalResourceId(id: U64)\n");
}

} // namespace
} // namespace Brixo
