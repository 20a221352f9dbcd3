#include <Vel/textWriting.h>

#include <gtest/gtest.h>
#include <string>

namespace Vel::Text {
namespace {

template <class Value>
std::string number(Value value) {
    char buffer[numberMax];
    return std::string(buffer, writeNumber(buffer, value));
}

std::string inQuotes(std::string_view text) {
    std::string buffer(quotedMax(text.size()), '#');
    buffer.resize(static_cast<std::size_t>(writeQuoted(buffer.data(), text) - buffer.data()));
    return buffer;
}

TEST(TextWriting, NumbersAreBareDecimalDigits) {
    EXPECT_EQ(number(U64{0}), "0");
    EXPECT_EQ(number(U64{12}), "12");
    EXPECT_EQ(number(U64{4294967295}), "4294967295");
    EXPECT_EQ(number(U64{4294967296}), "4294967296");
    EXPECT_EQ(number(U64{18446744073709551615U}), "18446744073709551615");
    EXPECT_EQ(number(U32{4294967295}), "4294967295");
}

TEST(TextWriting, NegativeNumbersHaveAMinus) {
    EXPECT_EQ(number(S64{0}), "0");
    EXPECT_EQ(number(S64{-1}), "-1");
    EXPECT_EQ(number(S64{9223372036854775807}), "9223372036854775807");
    EXPECT_EQ(number(S64{-9223372036854775807 - 1}), "-9223372036854775808");
}

TEST(TextWriting, NumberMaxIsTheLongestNumber) {
    EXPECT_EQ(number(U64{18446744073709551615U}).size(), numberMax);
    EXPECT_EQ(number(S64{-9223372036854775807 - 1}).size(), numberMax);
}

TEST(TextWriting, PowersOfTenAndTheirNeighboursHaveTheirDigits) {
    U64 power = 10;
    for (std::size_t digits = 2; digits <= 20; ++digits, power *= 10) {
        EXPECT_EQ(number(power), "1" + std::string(digits - 1, '0'));
        EXPECT_EQ(number(power - 1), std::string(digits - 1, '9'));
    }
}

TEST(TextWriting, NumbersOfEveryWidthHaveTheirDigits) {
    EXPECT_EQ(number(U32{0}), "0");
    for (unsigned bits = 0; bits < 64; ++bits) {
        const U64 power = U64{1} << bits;
        // Ones and zeros in the groups of digits that are written at once.
        for (const U64 value : {power - 1, power, power + 1, power / 100000000 * 100000000,
                                power / 10000 * 10000, ~power}) {
            EXPECT_EQ(number(value), std::to_string(value));
            EXPECT_EQ(number(static_cast<U32>(value)), std::to_string(static_cast<U32>(value)));
            EXPECT_EQ(number(static_cast<S64>(value)), std::to_string(static_cast<S64>(value)));
        }
    }
    for (U32 value = 0; value < 20000; ++value) EXPECT_EQ(number(value), std::to_string(value));
}

TEST(TextWriting, TruthValuesAreWordsOfPython) {
    char buffer[truthMax];
    EXPECT_EQ(std::string(buffer, writeTruth(buffer, true)), "True");
    EXPECT_EQ(std::string(buffer, writeTruth(buffer, false)), "False");
}

TEST(TextWriting, StringsStandBetweenSingleQuotes) {
    EXPECT_EQ(inQuotes(""), "''");
    EXPECT_EQ(inQuotes("tableResource"), "'tableResource'");
    EXPECT_EQ(inQuotes("say \"yes\""), "'say \"yes\"'");
    EXPECT_EQ(inQuotes("it's"), "'it\\'s'");
    EXPECT_EQ(inQuotes("a\\b"), "'a\\\\b'");
    EXPECT_EQ(inQuotes("1\n2\r3\t4"), "'1\\n2\\r3\\t4'");
    EXPECT_EQ(inQuotes(std::string_view("\0\x1f\x7f\x80\xff", 5)), "'\\x00\\x1f\\x7f\\x80\\xff'");
    EXPECT_EQ(inQuotes(" ~"), "' ~'");
}

TEST(TextWriting, QuotedMaxIsReachedByBytesThatNeedAnEscape) {
    EXPECT_EQ(inQuotes(std::string(3, '\x01')).size(), quotedMax(3));
}

TEST(TextWriting, WritersFollowEachOtherInOneBuffer) {
    char buffer[numberMax + 2 + truthMax];
    char* out = writeNumber(buffer, U64{7});
    out = writePlain(out, ", ");
    out = writePlain(out, "");
    out = writeTruth(out, true);
    EXPECT_EQ(std::string(buffer, out), "7, True");
}

} // namespace
} // namespace Vel::Text
