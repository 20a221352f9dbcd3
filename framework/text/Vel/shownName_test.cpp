#include <Vel/shownName.h>

#include <gtest/gtest.h>
#include <string>

namespace Vel {
namespace {

TEST(shownName, ShowsUpToSixtyFourBytes) {
    EXPECT_EQ(shownName(""), "");
    EXPECT_EQ(shownName("value"), "value");
    EXPECT_EQ(shownName(std::string(63, 'a')), std::string_view(std::string(63, 'a')));
    EXPECT_EQ(shownName(std::string(64, 'a')), std::string_view(std::string(64, 'a')));
    const std::string cut = std::string(64, 'a').append("...");
    EXPECT_EQ(shownName(std::string(65, 'a')), cut.c_str());
    EXPECT_EQ(shownName(std::string(1 << 20, 'a')), cut.c_str());
}

} // namespace
} // namespace Vel
