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

} // namespace
} // namespace Brixo
