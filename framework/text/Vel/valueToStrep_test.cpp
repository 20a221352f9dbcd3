#include <Vel/valueToStrep.h>

#include <gtest/gtest.h>
#include <string>
#include <type_traits>

namespace Vel {
namespace {

TEST(ValueToStrep, IntegersOfEveryWidthPrintAsDigits) {
    EXPECT_STREQ(valueToStrep(0ULL).charPtr(), "0");
    EXPECT_STREQ(valueToStrep(~0ULL).charPtr(), "18446744073709551615");
    EXPECT_STREQ(valueToStrep(-9223372036854775807LL - 1).charPtr(), "-9223372036854775808");
    EXPECT_STREQ(valueToStrep(-1L).charPtr(), "-1");
    EXPECT_STREQ(valueToStrep(4294967295UL).charPtr(), "4294967295");
    EXPECT_STREQ(valueToStrep(-2147483647 - 1).charPtr(), "-2147483648");
    EXPECT_STREQ(valueToStrep(4294967295U).charPtr(), "4294967295");
    EXPECT_STREQ(valueToStrep(static_cast<short>(-5)).charPtr(), "-5");
    EXPECT_STREQ(valueToStrep(static_cast<unsigned char>(65)).charPtr(), "65");
}

TEST(ValueToStrep, TruthValuesPrintAsWords) {
    EXPECT_STREQ(valueToStrep(true).charPtr(), "True");
    EXPECT_STREQ(valueToStrep(false).charPtr(), "False");
}

TEST(ValueToStrep, StringsPrintBetweenQuotes) {
    EXPECT_STREQ(valueToStrep(String8()).charPtr(), "''");
    EXPECT_STREQ(valueToStrep(String8("it's")).charPtr(), "'it\\'s'");
}

TEST(ValueToStrep, StringsOfEveryLengthPrintWhole) {
    for (const std::size_t length : {63U, 64U, 65U, 127U, 128U, 129U, 1000U}) {
        const std::string text(length, 'x');
        EXPECT_EQ(valueToStrep(String8(text)).view(), "'" + text + "'");
    }
    EXPECT_EQ(valueToStrep(String8(std::string(100, '\xff'))).length(), 402U);
}

template <class T>
concept Printable = requires(T value) {
    valueToStrep(value);
};

static_assert(Printable<bool> && Printable<int> && Printable<String8>);
static_assert(!Printable<const char*> && !Printable<void*>, "a pointer is no truth value");

} // namespace
} // namespace Vel
