#include <Brixo/ResourceType.h>

#include <Brixo/testing/EnumConformance.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(ResourceType, ConvertsFromAndToItsNames) {
    Testing::expectEnum<ResourceType>("ResourceType",
                                      {"invalidResource", "tableResource", "registerResource"},
                                      ResourceTypeInstance, ResourceTypeInstance);
}

TEST(ResourceType, HasOneDescriptorWithoutABase) {
    EXPECT_EQ(_fwkType_ResourceType()->qualifiedName(), "Brixo::ResourceType");
    EXPECT_EQ(_fwkType_ResourceType(), _fwkType_ResourceType());
    EXPECT_EQ(_fwkType_ResourceType()->base(), nullptr);
}

} // namespace
} // namespace Brixo
