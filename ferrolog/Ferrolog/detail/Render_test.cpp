#include <Ferrolog/detail/Render.h>

#include <gtest/gtest.h>
#include <vector>

namespace {

using Ferrolog::detail::harmless;
using Ferrolog::detail::render;
using Words = std::vector<Ferrolog::detail::U32>;

TEST(Render, ReplacesEachMarkByItsArgument) {
    EXPECT_EQ(render("Recovered entry, index: %i key: %i", Words{5, 77}),
              "Recovered entry, index: 5 key: 77");
    EXPECT_EQ(render("%i%u%d%x", Words{0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF}),
              "42949672954294967295-10xffffffff");
    EXPECT_EQ(render("%I %U %D %X", Words{1, 2, 3, 4, 0xFFFFFFFE, 0xFFFFFFFF, 0x10, 1}),
              "8589934593 17179869187 -2 0x100000010");
    EXPECT_EQ(render("%x", Words{0}), "0x0");
}

TEST(Render, DoubledPercentIsOne) {
    EXPECT_EQ(render("100%% %%i", Words{}), "100% %i");
    EXPECT_EQ(render("%%%i%%", Words{3}), "%3%");
}

TEST(Render, MarkWithoutWordIsAQuestionMark) {
    EXPECT_EQ(render("%i %i %i", Words{1}), "1 ? ?");
    EXPECT_EQ(render("%I", Words{1}), "?");
}

TEST(Render, WordsWithoutMarkFollowInHexadecimal) {
    EXPECT_EQ(render("a", Words{5, 0x4D}), "a 0x5 0x4d");
    EXPECT_EQ(render("%i", Words{5, 6}), "5 0x6");
}

TEST(Render, OtherPercentSignsStand) {
    EXPECT_EQ(render("%z %", Words{}), "%z %");
    EXPECT_EQ(render("%Z", Words{}), "%Z");
}

TEST(Render, ControlCharactersComeOutAsHexadecimal) {
    EXPECT_EQ(harmless("a\x1b[31m\n\x7f"), "a\\x1b[31m\\x0a\\x7f");
    EXPECT_EQ(harmless(std::string_view("\0", 1)), "\\x00");
    EXPECT_EQ(harmless("Gr\xc3\xbc\xc3\x9f"), "Gr\xc3\xbc\xc3\x9f");
}

TEST(Harmless, LeavesWhatIsReadableAsItIs) {
    EXPECT_EQ(harmless(""), "");
    EXPECT_EQ(harmless(" ~aZ0%"), " ~aZ0%");
    // Two, three and four bytes; the first and the last of each length.
    for (const char* const text : {"\xC2\xA0", "\xC3\xA4", "\xDF\xBF", "\xE0\xA0\x80",
                                   "\xE2\x82\xAC", "\xED\x9F\xBF", "\xEE\x80\x80", "\xEF\xBF\xBF",
                                   "\xF0\x90\x80\x80", "\xF0\x9F\x99\x82", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_EQ(harmless(text), text);
    }
}

TEST(Harmless, NothingCommandsATerminal) {
    EXPECT_EQ(harmless(std::string_view("\0\t\n\r\x1b[2J\x1f\x7f", 10)),
              "\\x00\\x09\\x0a\\x0d\\x1b[2J\\x1f\\x7f");
    EXPECT_EQ(harmless("\xC2\x80\xC2\x85\xC2\x9B\xC2\x9F"),
              "\\xc2\\x80\\xc2\\x85\\xc2\\x9b\\xc2\\x9f");
}

TEST(Harmless, NothingChangesTheOrderOrBeginsALine) {
    std::string last;
    for (const char* const text :
         {"\xD8\x9C", "\xE2\x80\x8E", "\xE2\x80\x8F", "\xE2\x80\xA8", "\xE2\x80\xA9",
          "\xE2\x80\xAA", "\xE2\x80\xAE", "\xE2\x81\xA6", "\xE2\x81\xA9"}) {
        last = harmless(text);
        EXPECT_EQ(last.find_first_not_of("\\x0123456789abcdef"), std::string::npos) << last;
    }
    EXPECT_EQ(last, "\\xe2\\x81\\xa9");
    // Their neighbours are no such characters.
    for (const char* const text :
         {"\xD8\x9B", "\xD8\x9D", "\xE2\x80\x8D", "\xE2\x80\x90", "\xE2\x80\xA7", "\xE2\x80\xAF",
          "\xE2\x81\xA5", "\xE2\x81\xAA"}) {
        EXPECT_EQ(harmless(text), text);
    }
}

TEST(Harmless, BytesThatAreNoUtf8AreShownOneByOne) {
    EXPECT_EQ(harmless("a\x80z"), "a\\x80z");
    EXPECT_EQ(harmless("\xC0\xAF\xC1\xBF"), "\\xc0\\xaf\\xc1\\xbf"); // longer than they need be
    EXPECT_EQ(harmless("\xE0\x9F\xBF"), "\\xe0\\x9f\\xbf");
    EXPECT_EQ(harmless("\xF0\x8F\xBF\xBF"), "\\xf0\\x8f\\xbf\\xbf");
    EXPECT_EQ(harmless("\xED\xA0\x80"), "\\xed\\xa0\\x80");          // half of a pair
    EXPECT_EQ(harmless("\xF4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80"); // beyond the last
    EXPECT_EQ(harmless("\xF8\x88\x80\x80\x80"), "\\xf8\\x88\\x80\\x80\\x80");
    EXPECT_EQ(harmless("\xE2\x82"), "\\xe2\\x82"); // cut off
    EXPECT_EQ(harmless("\xE2\xC3\xA4"), "\\xe2\xC3\xA4");
    EXPECT_EQ(harmless("\xFF\xFE"), "\\xff\\xfe");
}

TEST(Harmless, ABackslashIsTwo) { EXPECT_EQ(harmless("\\x1b\x1b"), "\\\\x1b\\x1b"); }

} // namespace
