#include <Brixo/IoMemType.h>

#include <Brixo/testing/EnumConformance.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(IoMemType, ConvertsFromAndToItsNames) {
    Testing::expectEnum<IoMemType>("IoMemType", {"pinbufMem", "mmapMem"}, IoMemTypeInstance,
                                   IoMemTypeInstance);
}

TEST(IoMemType, HasOneDescriptorWithoutABase) {
    EXPECT_EQ(_fwkType_IoMemType()->qualifiedName(), "Brixo::IoMemType");
    EXPECT_EQ(_fwkType_IoMemType(), _fwkType_IoMemType());
    EXPECT_EQ(_fwkType_IoMemType()->base(), nullptr);
}

} // namespace
} // namespace Brixo
