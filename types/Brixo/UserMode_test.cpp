#include <Brixo/UserMode.h>

#include <Brixo/testing/EnumConformance.h>
#include <Vel/testing/Registered.h>
#include <Vel/value/ValueGenericIf.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(UserMode, ConvertsFromAndToItsNames) {
    Testing::expectEnum<UserMode>("UserMode", {"requester", "serializer"}, UserModeInstance,
                                  UserModeInstance);
}

TEST(UserMode, HasOneDescriptorWithoutABase) {
    EXPECT_EQ(_fwkType_UserMode()->qualifiedName(), "Brixo::UserMode");
    EXPECT_EQ(_fwkType_UserMode(), Vel::VelType::typeNode("Brixo::UserMode"));
    EXPECT_EQ(_fwkType_UserMode()->base(), nullptr);
}

TEST(UserMode, HasAnAdapterOfItsName) {
    const Vel::Ptr<Vel::GenericIf> adapter = new UserMode_GenericIf_(UserMode::serializer, true);
    EXPECT_EQ(adapter->type(), _fwkType_UserMode());
    EXPECT_EQ(adapter->strRep(), "'serializer'");
    EXPECT_EQ(adapter->attributeId("serializer"), 1u);
    EXPECT_TRUE(adapter->isConst());
}

TEST(UserMode, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Brixo::UserMode"), "enumeration\n"
                                                           "0 requester: Brixo::UserMode\n"
                                                           "1 serializer: Brixo::UserMode\n");
}

} // namespace
} // namespace Brixo
