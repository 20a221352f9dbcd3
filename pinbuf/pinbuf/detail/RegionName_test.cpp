#include <pinbuf/detail/RegionName.h>

#include <gtest/gtest.h>
#include <pinbuf/detail/Directory.h>
#include <pinbuf/detail/ShmBackend.h>
#include <pinbuf/detail/TestSupport.h>
#include <string>

namespace pinbuf {
namespace {

std::string objection(const char* text) {
    return test::failureOf([text] { RegionName name(text); });
}

TEST(RegionName, KeepsWhatItIsGiven) {
    EXPECT_EQ(RegionName("CacheTable-3-1-77").text(), "CacheTable-3-1-77");
    EXPECT_EQ(RegionName("a").text(), "a");
    EXPECT_EQ(RegionName("with blank and \xc3\xa4").text(), "with blank and \xc3\xa4");
    EXPECT_EQ(RegionName("not.first").text(), "not.first");
}

TEST(RegionName, RefusesNothing) {
    EXPECT_EQ(objection(nullptr), "the name is null");
    EXPECT_EQ(objection(""), "the name is empty");
}

TEST(RegionName, RefusesMoreThan127Bytes) {
    EXPECT_EQ(objection(std::string(126, 'n').c_str()), "");
    EXPECT_EQ(objection(std::string(127, 'n').c_str()), "");
    EXPECT_EQ(objection(std::string(128, 'n').c_str()), "the name is longer than 127 bytes");
    EXPECT_EQ(objection(std::string(1000000, 'n').c_str()), "the name is longer than 127 bytes");
}

TEST(RegionName, RefusesWhatBeginsWithADot) {
    for (const char* text : {".", "..", "...", ".hidden", "../up", Directory::leaf,
                             Directory::unfinishedLeaf, ShmBackend::unfinishedLeaf}) {
        EXPECT_EQ(objection(text), "the name begins with a dot") << text;
    }
}

TEST(RegionName, RefusesEverySlash) {
    for (const char* text : {"/", "/etc/passwd", "a/b", "a/", "a/../../b"}) {
        EXPECT_EQ(objection(text), "the name contains a slash") << text;
    }
}

TEST(RegionName, DecidesEveryByteByItself) {
    for (unsigned byte = 1; byte < 256; ++byte) {
        const char text[] = {'n', static_cast<char>(byte), '\0'};
        const std::string expected = byte < 0x20 || byte == 0x7f
                                         ? "the name contains a control character"
                                     : byte == '/' ? "the name contains a slash"
                                                   : "";
        EXPECT_EQ(objection(text), expected) << byte;
    }
}

} // namespace
} // namespace pinbuf
