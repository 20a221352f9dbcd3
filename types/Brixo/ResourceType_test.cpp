#include <Brixo/ResourceType.h>

#include <Brixo/testing/EnumConformance.h>
#include <Vel/testing/Registered.h>
#include <Vel/value/ValueGenericIf.h>
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
    EXPECT_EQ(_fwkType_ResourceType(), Vel::VelType::typeNode("Brixo::ResourceType"));
    EXPECT_EQ(_fwkType_ResourceType()->base(), nullptr);
}

TEST(ResourceType, HasAnAdapterOfItsName) {
    const Vel::Ptr<Vel::GenericIf> adapter =
        new ResourceType_GenericIf_(ResourceType::tableResource, true);
    EXPECT_EQ(adapter->type(), _fwkType_ResourceType());
    EXPECT_EQ(adapter->strRep(), "'tableResource'");
    EXPECT_EQ(adapter->attributeId("tableResource"), 1u);
    EXPECT_TRUE(adapter->isConst());
}

TEST(ResourceType, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Brixo::ResourceType"),
              "enumeration\n"
              "0 invalidResource: Brixo::ResourceType\n"
              "1 tableResource: Brixo::ResourceType\n"
              "2 registerResource: Brixo::ResourceType\n");
}

} // namespace
} // namespace Brixo
