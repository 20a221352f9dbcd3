#include <Ferrolog/detail/Complaint.h>

#include <Ferrolog/testing/TestFile.h>

#include <cerrno>

namespace {

using Ferrolog::detail::complain;
using Ferrolog::detail::lastComplaint;
using Ferrolog::testing::complaintsOf;

TEST(Complaint, IsOneLineThatTheCallerCanReadToo) {
    errno = ENOENT;
    EXPECT_EQ(complaintsOf([] { complain("cannot open \"%s\": %u", "a%sb", 7U); }),
              "Ferrolog: cannot open \"a%sb\": 7\n");
    EXPECT_EQ(errno, ENOENT);
    EXPECT_STREQ(lastComplaint(), "Ferrolog: cannot open \"a%sb\": 7");
}

TEST(Complaint, IsCutAt511Bytes) {
    std::string const longText(1000, 'x');
    std::string const printed = complaintsOf([&] { complain("%s", longText.c_str()); });
    EXPECT_EQ(printed, "Ferrolog: " + std::string(501, 'x') + "\n");
    EXPECT_EQ(lastComplaint(), "Ferrolog: " + std::string(501, 'x'));
}

} // namespace
