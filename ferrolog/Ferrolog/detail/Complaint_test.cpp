#include <Ferrolog/detail/Complaint.h>

#include <Ferrolog/testing/TestFile.h>

#include <cerrno>
#include <cstring>

namespace {

using Ferrolog::detail::complain;
using Ferrolog::detail::lastComplaint;
using Ferrolog::detail::textOfError;
using Ferrolog::testing::complaintsOf;

TEST(Complaint, IsOneLineThatTheCallerCanReadToo) {
    errno = ENOENT;
    EXPECT_EQ(complaintsOf([] {
                  complain({"cannot open \"", "a%sb", "\": ", 7U});
              }),
              "Ferrolog: cannot open \"a%sb\": 7\n");
    EXPECT_EQ(errno, ENOENT);
    EXPECT_STREQ(lastComplaint(), "Ferrolog: cannot open \"a%sb\": 7");
    EXPECT_EQ(complaintsOf([] { complain({4294967295U}); }), "Ferrolog: 4294967295\n");
}

TEST(Complaint, IsCutAt511Bytes) {
    const std::string longText(1000, 'x');
    const std::string printed = complaintsOf([&] { complain({std::string_view(longText)}); });
    EXPECT_EQ(printed, "Ferrolog: " + std::string(501, 'x') + "\n");
    EXPECT_EQ(lastComplaint(), "Ferrolog: " + std::string(501, 'x'));
}

TEST(Complaint, IsOneLineWhateverTheNames) {
    EXPECT_EQ(complaintsOf([] {
                  complain({"a\nb\x1b[2J\x7f", "\xC3\xA4"});
              }),
              "Ferrolog: a\\x0ab\\x1b[2J\\x7f\xC3\xA4\n");
}

TEST(Complaint, TheLineStaysForOneMore) {
    complaintsOf([] {
        complain({"first"});
        const char* const first = lastComplaint();
        complain({"second"});
        EXPECT_STREQ(first, "Ferrolog: first");
        EXPECT_STREQ(lastComplaint(), "Ferrolog: second");
    });
}

TEST(Complaint, NamesTheErrorsOfTheSystem) {
    EXPECT_STREQ(textOfError(ENOENT), "No such file or directory");
    EXPECT_STREQ(textOfError(EAGAIN), "Resource temporarily unavailable");
    EXPECT_STREQ(textOfError(123456), "unknown error");
}

} // namespace
