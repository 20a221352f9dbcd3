#include <Vel/textReading.h>

#include <gtest/gtest.h>
#include <string>
#include <string_view>

namespace Vel::Text {
namespace {

// What a reader made of the start of a text, as one line: the result, the value, what was left.
template <class Value>
std::string numberIn(std::string_view text) {
    const char* pos = text.data();
    const char* const end = pos + text.size();
    Value value = 77; // stays when nothing is read
    const Number result = readNumber(pos, end, value);
    const std::string rest(pos, end);
    if (result == Number::absent)
        return "absent, left " + rest + ", still " + std::to_string(value);
    if (result == Number::outOfRange) return "out of range, left " + rest;
    return std::to_string(value) + ", left " + rest;
}

TEST(TextReading, UnsignedNumbersAreDigitsAfterAnOptionalPlus) {
    EXPECT_EQ(numberIn<U64>("0"), "0, left ");
    EXPECT_EQ(numberIn<U64>("12, 13"), "12, left , 13");
    EXPECT_EQ(numberIn<U64>("+12"), "12, left ");
    EXPECT_EQ(numberIn<U64>("007"), "7, left ");
    EXPECT_EQ(numberIn<U64>("12abc"), "12, left abc");
    EXPECT_EQ(numberIn<U64>("1_000"), "1, left _000");
    EXPECT_EQ(numberIn<U64>("1.5"), "1, left .5");
    EXPECT_EQ(numberIn<U64>("1e3"), "1, left e3");
}

TEST(TextReading, WhatIsNoNumberLeavesEverything) {
    for (const char* text : {"", "+", "-", "abc", " 1", "++1", "+-1", "0x", "0xg", "+0X", "x10"})
        EXPECT_EQ(numberIn<U64>(text), "absent, left " + std::string(text) + ", still 77");
    for (const char* text : {"", "+", "-", "--1", "+-1", "-+1", "- 1", "-0x", "-0xg", "-abc"})
        EXPECT_EQ(numberIn<S64>(text), "absent, left " + std::string(text) + ", still 77");
}

TEST(TextReading, UnsignedNumbersHaveNoMinus) {
    EXPECT_EQ(numberIn<U64>("-1"), "absent, left -1, still 77");
    EXPECT_EQ(numberIn<U64>("-0"), "absent, left -0, still 77");
}

TEST(TextReading, HexadecimalDigitsFollowTheirPrefixInEitherCase) {
    EXPECT_EQ(numberIn<U64>("0x0"), "0, left ");
    EXPECT_EQ(numberIn<U64>("0xdeadBEEF}"), "3735928559, left }");
    EXPECT_EQ(numberIn<U64>("+0X10"), "16, left ");
    EXPECT_EQ(numberIn<S64>("-0x10"), "-16, left ");
    EXPECT_EQ(numberIn<U64>("0x00000000000000000000001"), "1, left ");
}

TEST(TextReading, UnsignedNumbersReachToTheirLastValueAndNotBeyond) {
    EXPECT_EQ(numberIn<U64>("999999999"), "999999999, left ");
    EXPECT_EQ(numberIn<U64>("1000000000"), "1000000000, left ");
    EXPECT_EQ(numberIn<U64>("4294967295"), "4294967295, left ");
    EXPECT_EQ(numberIn<U64>("4294967296"), "4294967296, left ");
    EXPECT_EQ(numberIn<U64>("18446744073709551614"), "18446744073709551614, left ");
    EXPECT_EQ(numberIn<U64>("18446744073709551615"), "18446744073709551615, left ");
    EXPECT_EQ(numberIn<U64>("18446744073709551616,"), "out of range, left ,");
    EXPECT_EQ(numberIn<U64>("18446744073709551620"), "out of range, left ");
    EXPECT_EQ(numberIn<U64>("100000000000000000000000"), "out of range, left ");
    EXPECT_EQ(numberIn<U64>("0xffffffffffffffff"), "18446744073709551615, left ");
    EXPECT_EQ(numberIn<U64>("0x10000000000000000"), "out of range, left ");
    EXPECT_EQ(numberIn<U64>("000000000000000000000000000001"), "1, left ");
}

TEST(TextReading, SignedNumbersReachToTheirLastValuesAndNotBeyond) {
    EXPECT_EQ(numberIn<S64>("9223372036854775807"), "9223372036854775807, left ");
    EXPECT_EQ(numberIn<S64>("9223372036854775808"), "out of range, left ");
    EXPECT_EQ(numberIn<S64>("-9223372036854775808"), "-9223372036854775808, left ");
    EXPECT_EQ(numberIn<S64>("-9223372036854775809"), "out of range, left ");
    EXPECT_EQ(numberIn<S64>("18446744073709551615"), "out of range, left ");
    EXPECT_EQ(numberIn<S64>("-18446744073709551616"), "out of range, left ");
    EXPECT_EQ(numberIn<S64>("0x7fffffffffffffff"), "9223372036854775807, left ");
    EXPECT_EQ(numberIn<S64>("0x8000000000000000"), "out of range, left ");
    EXPECT_EQ(numberIn<S64>("-0x8000000000000000"), "-9223372036854775808, left ");
    EXPECT_EQ(numberIn<S64>("-0"), "0, left ");
}

TEST(TextReading, LooksAtNothingBehindTheEnd) {
    const std::string_view text = "12345678901234567890";
    for (std::size_t length = 1; length <= text.size(); ++length)
        EXPECT_EQ(numberIn<U64>(text.substr(0, length)),
                  std::string(text.substr(0, length)) + ", left ");
    EXPECT_EQ(numberIn<U64>(std::string_view("0x12").substr(0, 2)), "absent, left 0x, still 77");
    EXPECT_EQ(numberIn<U64>(std::string_view("0x12").substr(0, 1)), "0, left ");
}

TEST(TextReading, BlanksAreTheBlankTheTabAndTheLineEnds) {
    const std::string_view text = " \t\r\n\v";
    EXPECT_EQ(skipBlanks(text.data(), text.data() + 5) - text.data(), 4);
    EXPECT_EQ(skipBlanks(text.data(), text.data() + 2) - text.data(), 2);
    for (int c = 0; c < 256; ++c)
        EXPECT_EQ(isBlank(static_cast<char>(c)), c == 32 || c == 9 || c == 10 || c == 13) << c;
}

std::string truthIn(std::string_view text) {
    const char* pos = text.data();
    const char* const end = pos + text.size();
    bool value = false;
    if (!readTruth(pos, end, value)) return "absent, left " + std::string(pos, end);
    return (value ? "true, left " : "false, left ") + std::string(pos, end);
}

TEST(TextReading, TruthValuesAreWholeWordsOfTwoSpellings) {
    EXPECT_EQ(truthIn("True"), "true, left ");
    EXPECT_EQ(truthIn("true, 1"), "true, left , 1");
    EXPECT_EQ(truthIn("False}"), "false, left }");
    EXPECT_EQ(truthIn("false"), "false, left ");
    for (const char* text : {"", "T", "TRUE", "tRue", "Truex", "True1", "true_", "Falsey", "0", "1",
                             " True", "'True'", "None"})
        EXPECT_EQ(truthIn(text), "absent, left " + std::string(text));
}

std::string quotedIn(std::string_view text) {
    const char* pos = text.data();
    const char* const end = pos + text.size();
    std::string_view value = "unread";
    const bool read = readPlainQuoted(pos, end, value);
    return (read ? "read " : "absent ") + std::string(value) + ", left " + std::string(pos, end);
}

TEST(TextReading, PlainStringsStandInEitherQuotes) {
    EXPECT_EQ(quotedIn("'id': 7"), "read id, left : 7");
    EXPECT_EQ(quotedIn("\"id\""), "read id, left ");
    EXPECT_EQ(quotedIn("'say \"yes\"'"), "read say \"yes\", left ");
    EXPECT_EQ(quotedIn("''"), "read , left ");
}

TEST(TextReading, StringsWithEscapesOrWithoutEndAreNotPlain) {
    for (const char* text : {"", "'", "'id", "'id\"", "'it\\'s'", "id", " 'id'"})
        EXPECT_EQ(quotedIn(text), "absent unread, left " + std::string(text));
}

} // namespace
} // namespace Vel::Text
