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

} // namespace
} // namespace Brixo
