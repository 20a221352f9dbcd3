#include <Brixo/Command.h>

#include <Brixo/testing/EnumConformance.h>
#include <Vel/testing/Registered.h>
#include <Vel/value/ValueGenericIf.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(Command, ConvertsFromAndToItsNames) {
    Testing::expectEnum<Command>("Command",
                                 {"writeCmd", "readCmd", "bulkWriteCmd", "bulkReadCmd",
                                  "bulkInitReadCmd", "bulkInitFreeCmd"},
                                 CommandInstance, CommandInstance);
}

TEST(Command, HasOneDescriptorWithoutABase) {
    EXPECT_EQ(_fwkType_Command()->qualifiedName(), "Brixo::Command");
    EXPECT_EQ(_fwkType_Command(), Vel::VelType::typeNode("Brixo::Command"));
    EXPECT_EQ(_fwkType_Command()->base(), nullptr);
}

TEST(Command, HasAnAdapterOfItsName) {
    const Vel::Ptr<Vel::GenericIf> adapter = new Command_GenericIf_(Command::readCmd, true);
    EXPECT_EQ(adapter->type(), _fwkType_Command());
    EXPECT_EQ(adapter->strRep(), "'readCmd'");
    EXPECT_EQ(adapter->attributeId("readCmd"), 1u);
    EXPECT_TRUE(adapter->isConst());
}

TEST(Command, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Brixo::Command"), "enumeration\n"
                                                          "0 writeCmd: Brixo::Command\n"
                                                          "1 readCmd: Brixo::Command\n"
                                                          "2 bulkWriteCmd: Brixo::Command\n"
                                                          "3 bulkReadCmd: Brixo::Command\n"
                                                          "4 bulkInitReadCmd: Brixo::Command\n"
                                                          "5 bulkInitFreeCmd: Brixo::Command\n");
}

} // namespace
} // namespace Brixo
