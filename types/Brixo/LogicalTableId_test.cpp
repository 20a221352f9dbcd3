#include <Brixo/LogicalTableId.h>

#include <Brixo/LogicalResourceId.h>
#include <Brixo/testing/ResourceIdConformance.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(LogicalTableId, IsALogicalResourceIdOfItsKind) {
    Testing::expectRefinement<LogicalTableId, LogicalResourceId>("LogicalTableId",
                                                                 ResourceType::tableResource);
}

} // namespace
} // namespace Brixo
