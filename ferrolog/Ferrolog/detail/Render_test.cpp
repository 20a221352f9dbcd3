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

} // namespace
