#include <Brixo/IoMemType.h>

#include <Brixo/testing/EnumConformance.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(IoMemType, ConvertsFromAndToItsNames) {
    Testing::expectEnum<IoMemType>("IoMemType", {"pinbufMem", "mmapMem"}, IoMemTypeInstance,
                                   IoMemTypeInstance);
}

} // namespace
} // namespace Brixo
