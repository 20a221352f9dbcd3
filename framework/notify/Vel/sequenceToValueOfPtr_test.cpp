#include <Vel/sequenceToValueOfPtr.h>

#include <Vel/Entity.h>
#include <Vel/RangeException.h>
#include <Vel/VelType.h>
#include <Vel/valueToStrepOfRawPtr.h>
#include <gtest/gtest.h>
#include <string>

namespace Vel {
namespace {

class Port : public Entity {
public:
    using Entity::Entity;

    VelType* fwkType() const override {
        static const Ptr<VelType> type = new VelType("Port", nullptr, nullptr, VelTypeFlags());
        return type.ptr();
    }
};

class sequenceToValueOfPtrTest : public testing::Test {
protected:
    void SetUp() override {
        port->parentIs(root);
        Entity::rootIs(root);
    }

    void TearDown() override { Entity::rootIs(nullptr); }

    // The object, or why there is none; the cursor says where reading stopped.
    PtrInterface* read(const String8& text) {
        String8::IteratorConst it = text.begin();
        const String8::IteratorConst end = text.end();
        said.clear();
        PtrInterface* object = nullptr;
        try {
            object = sequenceToValueOfPtr(it, end, nullptr);
        } catch (const RangeException& failure) {
            said = failure.what();
        }
        column = it.column();
        return object;
    }

    Ptr<Port> root = new Port("system");
    Ptr<Port> port = new Port("port 1");
    std::string said;
    long long column = 0;
};

TEST_F(sequenceToValueOfPtrTest, ReadsWhatIsPrinted) {
    for (const Ptr<Port>& entity : {root, port}) {
        const String8 text = valueToStrepOfRawPtr(entity.ptr(), typeid(Entity));
        EXPECT_EQ(read(text), entity.ptr());
        EXPECT_EQ(said, "");
        EXPECT_EQ(column, static_cast<long long>(text.length()));
    }
    EXPECT_EQ(read("None"), nullptr);
    EXPECT_EQ(said, "");
    EXPECT_EQ(column, 4);
}

TEST_F(sequenceToValueOfPtrTest, TakesBlanksAndLeavesWhatFollows) {
    EXPECT_EQ(read("  Ptr ( 'Port' ,\t\"/system\" ), 5"), root.ptr());
    EXPECT_EQ(column, 28);
    EXPECT_EQ(read("  None, 5"), nullptr);
    EXPECT_EQ(said, "");
    EXPECT_EQ(column, 6);
}

TEST_F(sequenceToValueOfPtrTest, SaysWhatItCannotFind) {
    read(" Ptr('Port', '/system/x')");
    EXPECT_EQ(said, "no entity at '/system/x' for column 1");
    EXPECT_EQ(column, 0);
    read("Ptr('Card', '/system')");
    EXPECT_EQ(said, "entity at '/system' for column 0 is no 'Card'");
    EXPECT_EQ(column, 0);
    read("Ptr('Port', 0xf7e01230)");
    EXPECT_EQ(said, "cannot resolve the address at column 12");
    EXPECT_EQ(column, 0);
    Entity::rootIs(nullptr);
    read("Ptr('Port', '/system')");
    EXPECT_EQ(said, "no entity at '/system' for column 0");
}

TEST_F(sequenceToValueOfPtrTest, SaysWhatIsMalformed) {
    read("Nonesuch");
    EXPECT_EQ(said, "cannot convert \"Nonesuch\" at column 0 to Vel::PtrInterface");
    read("");
    EXPECT_EQ(said, "cannot convert end of text at column 0 to Vel::PtrInterface");
    read("Ptr['Port']");
    EXPECT_EQ(said, "expected \"(\" at column 3, found \"['Port']\"");
    read("Ptr('Port', '/system'");
    EXPECT_EQ(said, "expected \")\" at column 21, found end of text");
    EXPECT_EQ(column, 0);
}

} // namespace
} // namespace Vel
