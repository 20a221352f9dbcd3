#include <Brixo/PhysicalTableId.h>

#include <Brixo/PhysicalResourceId.h>
#include <Brixo/testing/ResourceIdConformance.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(PhysicalTableId, IsAPhysicalResourceIdOfItsKind) {
    Testing::expectRefinement<PhysicalTableId, PhysicalResourceId>("PhysicalTableId",
                                                                   ResourceType::tableResource);
}

} // namespace
} // namespace Brixo
