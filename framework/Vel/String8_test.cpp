#include <Vel/String8.h>

#include <gtest/gtest.h>
#include <vector>

namespace Vel {
namespace {

TEST(String8, AppendingToACopyLeavesTheOriginalAlone) {
    String8 a("abc");
    String8 b(a);
    EXPECT_EQ(a.references(), 2u);
    b += "def";
    EXPECT_STREQ(a.charPtr(), "abc");
    EXPECT_STREQ(b.charPtr(), "abcdef");
    EXPECT_EQ(a.references(), 1u);
}

TEST(String8, AppendsItsOwnText) {
    String8 a("abc");
    for (int i = 0; i < 4; ++i) a += a;
    EXPECT_EQ(a.length(), 48u);
    EXPECT_EQ(a.view().substr(44), "cabc");
}

TEST(String8, GrowsInAVectorWithoutAWarningOfTheOptimiser) {
    std::vector<String8> strings;
    for (const char* const text : {"abc", "", "abc", "d", ""}) strings.push_back(text);
    EXPECT_EQ(strings, (std::vector<String8>{"abc", "", "abc", "d", ""}));
}

TEST(String8, EternalDataAreSharedAndNeverCounted) {
    for (const bool isAtomic : {false, true}) {
        VFPtrInterface::enableThreadSafePointers = isAtomic;
        static const String8* const name = new String8(String8::eternal("readCmd"));
        std::vector<String8> copies(1000, *name);
        for (const String8& copy : copies) {
            EXPECT_EQ(copy.charPtr(), name->charPtr());
            EXPECT_EQ(copy, "readCmd");
        }
        copies[0] += "2";
        copies[1].reserve(100);
        copies[1] += "3";
        EXPECT_EQ(copies[0], "readCmd2");
        EXPECT_EQ(copies[1], "readCmd3");
        EXPECT_EQ(*name, "readCmd");
        EXPECT_EQ(*name + "4", "readCmd4");
    }
    VFPtrInterface::enableThreadSafePointers = false;
    EXPECT_EQ(String8::eternal("").charPtr(), String8().charPtr());
}

} // namespace
} // namespace Vel
