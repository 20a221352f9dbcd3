#include <Brixo/Command.h>

#include <Brixo/testing/EnumConformance.h>
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
    EXPECT_EQ(_fwkType_Command(), _fwkType_Command());
    EXPECT_EQ(_fwkType_Command()->base(), nullptr);
}

} // namespace
} // namespace Brixo
