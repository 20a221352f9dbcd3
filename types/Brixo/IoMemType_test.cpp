#include <Brixo/IoMemType.h>

#include <Brixo/testing/EnumConformance.h>
#include <Vel/testing/Registered.h>
#include <Vel/value/ValueGenericIf.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(IoMemType, ConvertsFromAndToItsNames) {
    Testing::expectEnum<IoMemType>("IoMemType", {"pinbufMem", "mmapMem"}, IoMemTypeInstance,
                                   IoMemTypeInstance);
}

TEST(IoMemType, HasOneDescriptorWithoutABase) {
    EXPECT_EQ(_fwkType_IoMemType()->qualifiedName(), "Brixo::IoMemType");
    EXPECT_EQ(_fwkType_IoMemType(), Vel::VelType::typeNode("Brixo::IoMemType"));
    EXPECT_EQ(_fwkType_IoMemType()->base(), nullptr);
}

TEST(IoMemType, HasAnAdapterOfItsName) {
    const Vel::Ptr<Vel::GenericIf> adapter = new IoMemType_GenericIf_(IoMemType::mmapMem, true);
    EXPECT_EQ(adapter->type(), _fwkType_IoMemType());
    EXPECT_EQ(adapter->strRep(), "'mmapMem'");
    EXPECT_EQ(adapter->attributeId("mmapMem"), 1u);
    EXPECT_TRUE(adapter->isConst());
}

TEST(IoMemType, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Brixo::IoMemType"), "enumeration\n"
                                                            "0 pinbufMem: Brixo::IoMemType\n"
                                                            "1 mmapMem: Brixo::IoMemType\n");
}

} // namespace
} // namespace Brixo
