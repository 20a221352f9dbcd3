#include <Vel/Builtin.h>

#include <gtest/gtest.h>

namespace Vel {
namespace {

TEST(Builtin, NamesEachType) {
    EXPECT_STREQ(Builtin<bool>::_fwkType()->name(), "bool");
    EXPECT_STREQ(Builtin<int>::_fwkType()->name(), "int");
    EXPECT_STREQ(Builtin<unsigned char>::_fwkType()->name(), "U8");
    EXPECT_STREQ(Builtin<unsigned short>::_fwkType()->name(), "U16");
    EXPECT_STREQ(Builtin<unsigned>::_fwkType()->name(), "U32");
    EXPECT_STREQ(Builtin<unsigned long long>::_fwkType()->name(), "U64");
    EXPECT_STREQ(Builtin<unsigned char*>::_fwkType()->name(), "Vel::BytePtr");
    EXPECT_STREQ(Builtin<void*>::_fwkType()->name(), "Vel::VoidPtr");
}

TEST(Builtin, MakesOneDescriptorATypeWithoutABase) {
    EXPECT_EQ(Builtin<int>::_fwkType(), Builtin<int>::_fwkType());
    EXPECT_NE(Builtin<int>::_fwkType(), Builtin<unsigned>::_fwkType());
    EXPECT_EQ(Builtin<int>::_fwkType()->base(), nullptr);
}

} // namespace
} // namespace Vel
