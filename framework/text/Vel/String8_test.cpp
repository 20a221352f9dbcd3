#include <Vel/String8.h>

#include <Vel/value/EnumNames.h>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <thread>
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
        static constexpr EternalText<7> text("readCmd");
        const String8 name = String8::ofEternal(text.data());
        std::vector<String8> copies(1000, name);
        for (const String8& copy : copies) {
            EXPECT_EQ(copy.charPtr(), name.charPtr());
            EXPECT_EQ(copy, "readCmd");
        }
        copies[0] += "2";
        copies[1].reserve(100);
        copies[1] += "3";
        EXPECT_EQ(copies[0], "readCmd2");
        EXPECT_EQ(copies[1], "readCmd3");
        EXPECT_EQ(name, "readCmd");
        EXPECT_EQ(name + "4", "readCmd4");
    }
    VFPtrInterface::enableThreadSafePointers = false;
}

TEST(String8, IsWrittenWhereItStays) {
    for (const std::size_t most : {1U, 3U, 4U, 5U, 19U, 20U, 499U, 500U, 501U, 5000U}) {
        for (const std::size_t length : {std::size_t{0}, most / 2, most}) {
            String8 text = String8::written(most, [length](char* out) {
                std::memset(out, 'x', length);
                return out + length;
            });
            const std::string expected(length, 'x');
            EXPECT_EQ(text.view(), expected);
            EXPECT_EQ(std::strlen(text.charPtr()), length);
            EXPECT_EQ(text.references(), 1u);
            EXPECT_EQ(text.capacity(), most);
            text += "yz";
            EXPECT_EQ(text.view(), expected + "yz");
        }
    }
}

TEST(String8, DataComeAndGoInAnyThread) {
    VFPtrInterface::enableThreadSafePointers = true;
    std::vector<String8> texts;
    std::thread maker([&texts] {
        for (std::size_t i = 0; i < 2000; ++i)
            texts.emplace_back(std::string(i % 700, 'a').c_str());
    });
    maker.join();
    for (std::size_t i = 0; i < texts.size(); ++i) ASSERT_EQ(texts[i].length(), i % 700);
    std::thread breaker([&texts] { texts.clear(); });
    breaker.join();
    VFPtrInterface::enableThreadSafePointers = false;
}

} // namespace
} // namespace Vel
