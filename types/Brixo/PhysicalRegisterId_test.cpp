#include <Brixo/PhysicalRegisterId.h>

#include <Brixo/PhysicalResourceId.h>
#include <Brixo/testing/ResourceIdConformance.h>
#include <Vel/testing/Registered.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(PhysicalRegisterId, IsAPhysicalResourceIdOfItsKind) {
    Testing::expectRefinement<PhysicalRegisterId, PhysicalResourceId>(
        "PhysicalRegisterId", ResourceType::registerResource);
}

TEST(PhysicalRegisterId, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Brixo::PhysicalRegisterId"),
              "value of Brixo::PhysicalResourceId(id: U64)\n");
}

} // namespace
} // namespace Brixo
