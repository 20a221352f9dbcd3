#include <Brixo/UserMode.h>

#include <Brixo/testing/EnumConformance.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(UserMode, ConvertsFromAndToItsNames) {
    Testing::expectEnum<UserMode>("UserMode", {"requester", "serializer"}, UserModeInstance,
                                  UserModeInstance);
}

TEST(UserMode, HasOneDescriptorWithoutABase) {
    EXPECT_EQ(_fwkType_UserMode()->qualifiedName(), "Brixo::UserMode");
    EXPECT_EQ(_fwkType_UserMode(), _fwkType_UserMode());
    EXPECT_EQ(_fwkType_UserMode()->base(), nullptr);
}

} // namespace
} // namespace Brixo
