#include <Vel/Builtin.h>

#include <Vel/RangeException.h>
#include <gtest/gtest.h>
#include <string>

namespace Vel {
namespace {

TEST(Builtin, NamesEachType) {
    EXPECT_EQ(Builtin<bool>::_fwkType()->name(), "bool");
    EXPECT_EQ(Builtin<int>::_fwkType()->name(), "int");
    EXPECT_EQ(Builtin<unsigned char>::_fwkType()->name(), "U8");
    EXPECT_EQ(Builtin<unsigned short>::_fwkType()->name(), "U16");
    EXPECT_EQ(Builtin<unsigned>::_fwkType()->name(), "U32");
    EXPECT_EQ(Builtin<unsigned long long>::_fwkType()->name(), "U64");
    EXPECT_EQ(Builtin<unsigned char*>::_fwkType()->name(), "Vel::BytePtr");
    EXPECT_EQ(Builtin<void*>::_fwkType()->name(), "Vel::VoidPtr");
}

TEST(Builtin, MakesOneDescriptorATypeWithoutABase) {
    EXPECT_EQ(Builtin<int>::_fwkType(), VelType::typeNode("int"));
    EXPECT_NE(Builtin<int>::_fwkType(), Builtin<unsigned>::_fwkType());
    EXPECT_EQ(Builtin<int>::_fwkType()->base(), nullptr);
}

TEST(Builtin, ADescriptorSurvivesAReferenceThatComesAndGoes) {
    { const Ptr<VelType> type = Builtin<bool>::_fwkType(); }
    EXPECT_EQ(Builtin<bool>::_fwkType()->name(), "bool");
    EXPECT_EQ(VelType::typeNode("bool"), Builtin<bool>::_fwkType());
}

TEST(Builtin, WrapsAValue) {
    const Ptr<GenericIf> adapter = Builtin<unsigned short>::genericIf(443);
    EXPECT_EQ(adapter->type(), Builtin<unsigned short>::_fwkType());
    EXPECT_EQ(adapter->strRep(), "443");
    EXPECT_FALSE(adapter->isConst());
    EXPECT_TRUE(Builtin<bool>::genericIf(true, true)->isConst());
}

TEST(Builtin, ReadsAWholeTextThatFits) {
    const auto read = [](VelType* type, const char* text) -> std::string {
        try {
            return type->genericIf(String8(text), false)->strRep().charPtr();
        } catch (const RangeException& refused) {
            return std::string("! ") + refused.what();
        }
    };
    EXPECT_EQ(read(Builtin<U8>::_fwkType(), "255"), "255");
    EXPECT_EQ(read(Builtin<U8>::_fwkType(), "256"), "! 256 is out of range for U8");
    EXPECT_EQ(read(Builtin<U16>::_fwkType(), "-1"), "! -1 is out of range for U16");
    EXPECT_EQ(read(Builtin<int>::_fwkType(), "-2147483648"), "-2147483648");
    EXPECT_EQ(read(Builtin<int>::_fwkType(), "2147483648"), "! 2147483648 is out of range for int");
    EXPECT_EQ(read(Builtin<U32>::_fwkType(), "0xffffffff"), "4294967295");
    EXPECT_EQ(read(Builtin<U64>::_fwkType(), "18446744073709551615"), "18446744073709551615");
    EXPECT_EQ(read(Builtin<bool>::_fwkType(), "true"), "True");
    EXPECT_EQ(read(Builtin<bool>::_fwkType(), "True!"), "! junk at column 4 deserializing True!");
    EXPECT_EQ(read(Builtin<U32>::_fwkType(), "1 2"), "! junk at column 1 deserializing 1 2");
    EXPECT_EQ(read(Builtin<BytePtr>::_fwkType(), "None"), "None");
}

TEST(Builtin, AnAddressPrintsForPeopleAndIsNotReadBack) {
    unsigned char byte = 0;
    const String8 text = Builtin<BytePtr>::genericIf(&byte)->strRep();
    EXPECT_EQ(text.view().substr(0, 2), "0x");
    EXPECT_THROW((void)Builtin<BytePtr>::_fwkType()->genericIf(text, false), RangeException);
    EXPECT_EQ(Builtin<BytePtr>::genericIf(nullptr)->strRep(), "None");
}

} // namespace
} // namespace Vel
