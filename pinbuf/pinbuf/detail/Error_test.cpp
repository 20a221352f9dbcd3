#include <pinbuf/detail/Error.h>

#include <cerrno>
#include <gtest/gtest.h>
#include <pinbuf/detail/TestSupport.h>
#include <string>
#include <thread>

namespace pinbuf {
namespace {

using test::StandardError;

class Error : public testing::Test {
protected:
    void SetUp() override { clearError(); }

    // Reports, and returns what came out on standard error; it must be lastError() and a line feed.
    static std::string reported(std::string_view call, const char* name, std::string_view reason) {
        const StandardError standardError;
        report(call, name, reason);
        std::string line = standardError.text();
        EXPECT_EQ(line, std::string(lastError()) + "\n");
        return line;
    }
};

TEST_F(Error, NamesCallRegionAndReasonInOneLine) {
    EXPECT_EQ(reported("pinbuf_map", "a", "gone"), "pinbuf_map: region \"a\": gone\n");
}

TEST_F(Error, NamesNoRegionWhenThereIsNone) {
    EXPECT_EQ(reported("pinbuf_list", nullptr, "gone"), "pinbuf_list: gone\n");
}

TEST_F(Error, KeepsAHostileNameOnOneLine) {
    EXPECT_EQ(reported("c", "a\n\"b\\\x7f\x01z", "r"),
              "c: region \"a\\x0a\\x22b\\x5c\\x7f\\x01z\": r\n");
}

TEST_F(Error, ShowsBytesAboveAsciiAsTheyStand) {
    EXPECT_EQ(reported("c", "\xc3\xa4", "r"), "c: region \"\xc3\xa4\": r\n");
}

TEST_F(Error, CutsANameAfter127Bytes) {
    const std::string fits(127, 'n');
    EXPECT_EQ(reported("c", fits.c_str(), "r"), "c: region \"" + fits + "\": r\n");
    EXPECT_EQ(reported("c", (fits + "n").c_str(), "r"), "c: region \"" + fits + "\"...: r\n");
    EXPECT_EQ(reported("c", std::string(100000, 'n').c_str(), "r"),
              "c: region \"" + fits + "\"...: r\n");
}

TEST_F(Error, CutsALineAfter1020Bytes) {
    const std::string fits(1017, 'r'); // and 3 bytes before it
    EXPECT_EQ(reported("c", nullptr, fits), "c: " + fits + "\n");
    EXPECT_EQ(reported("c", nullptr, fits + "r"), "c: " + fits + "...\n");
    EXPECT_EQ(reported("c", nullptr, std::string(5000, 'r')), "c: " + fits + "...\n");
}

TEST_F(Error, NeverCutsAnEscapeInTwo) {
    const std::string line =
        reported("c", nullptr, std::string(1015, 'r') + inQuotes(std::string(9, '\n')));
    EXPECT_LE(line.size(), 1024U);
    EXPECT_TRUE(line.ends_with("...\n")) << line;
}

TEST_F(Error, IsEmptyUntilReportedAndOnceCleared) {
    EXPECT_STREQ(lastError(), "");
    reported("c", "n", "r");
    EXPECT_STREQ(lastError(), "c: region \"n\": r");
    clearError();
    EXPECT_STREQ(lastError(), "");
}

TEST_F(Error, BelongsToItsThread) {
    reported("c", "n", "here");
    std::thread([] { EXPECT_STREQ(lastError(), ""); }).join();
    EXPECT_STREQ(lastError(), "c: region \"n\": here");
}

TEST_F(Error, SurvivesAClosedStandardError) {
    EXPECT_EQ(test::inChild([] {
                  ::close(STDERR_FILENO);
                  report("c", "n", "r");
                  return std::string(lastError()) == "c: region \"n\": r" ? 0 : 1;
              }),
              0);
}

TEST(Failure, AddsTheTextOfTheSystemsError) {
    EXPECT_STREQ(Failure("cannot write", ENOSPC).what(), "cannot write: No space left on device");
    EXPECT_STREQ(Failure("no room").what(), "no room");
}

} // namespace
} // namespace pinbuf
