#include <Brixo/UserMode.h>

#include <Brixo/testing/EnumConformance.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(UserMode, ConvertsFromAndToItsNames) {
    Testing::expectEnum<UserMode>("UserMode", {"requester", "serializer"}, UserModeInstance,
                                  UserModeInstance);
}

} // namespace
} // namespace Brixo
