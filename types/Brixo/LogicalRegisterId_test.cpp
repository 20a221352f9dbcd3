#include <Brixo/LogicalRegisterId.h>

#include <Brixo/LogicalResourceId.h>
#include <Brixo/testing/ResourceIdConformance.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(LogicalRegisterId, IsALogicalResourceIdOfItsKind) {
    Testing::expectRefinement<LogicalRegisterId, LogicalResourceId>("LogicalRegisterId",
                                                                    ResourceType::registerResource);
}

} // namespace
} // namespace Brixo
