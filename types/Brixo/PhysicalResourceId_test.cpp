#include <Brixo/PhysicalResourceId.h>

#include <Brixo/testing/ResourceIdConformance.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(PhysicalResourceId, IsAKindAndANumber) {
    Testing::expectResourceId<PhysicalResourceId>("PhysicalResourceId");
}

TEST(PhysicalResourceId, ReadsTheTolerantGrammar) {
    Testing::expectResourceIdGrammar<PhysicalResourceId>("PhysicalResourceId");
}

} // namespace
} // namespace Brixo
