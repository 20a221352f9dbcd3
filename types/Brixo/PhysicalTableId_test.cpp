#include <Brixo/PhysicalTableId.h>

#include <Brixo/PhysicalResourceId.h>
#include <Brixo/testing/ResourceIdConformance.h>
#include <Vel/testing/Registered.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(PhysicalTableId, IsAPhysicalResourceIdOfItsKind) {
    Testing::expectRefinement<PhysicalTableId, PhysicalResourceId>("PhysicalTableId",
                                                                   ResourceType::tableResource);
}

TEST(PhysicalTableId, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Brixo::PhysicalTableId"),
              "value of Brixo::PhysicalResourceId(id: U64)\n");
}

} // namespace
} // namespace Brixo
