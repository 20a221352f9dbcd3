#include <Brixo/PhysicalRegisterId.h>

#include <Brixo/PhysicalResourceId.h>
#include <Brixo/testing/ResourceIdConformance.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(PhysicalRegisterId, IsAPhysicalResourceIdOfItsKind) {
    Testing::expectRefinement<PhysicalRegisterId, PhysicalResourceId>(
        "PhysicalRegisterId", ResourceType::registerResource);
}

} // namespace
} // namespace Brixo
