#include <Vel/needString.h>

#include <Vel/RangeException.h>
#include <gtest/gtest.h>
#include <string>

namespace Vel {
namespace {

// What is left of the text, or what was thrown and where the cursor stood then.
std::string after(const char* pattern, const String8& text, int start = 0) {
    String8::IteratorConst it = text.begin() + start;
    try {
        needString(it, text.end(), pattern);
        return "left [" + std::string(it.charPtr(), text.end().charPtr()) + "]";
    } catch (const RangeException& failure) {
        EXPECT_EQ(it.column(), start) << "a reader that throws has not moved its cursor";
        return failure.what();
    }
}

TEST(NeedString, APatternWithoutBlanksMustStandAtTheCursor) {
    EXPECT_EQ(after("Value", "Value('T'"), "left [('T']");
    EXPECT_EQ(after("Value", "Value"), "left []");
    EXPECT_EQ(after("Value", " Value"), "expected \"Value\" at column 0, found \" Value\"");
}

TEST(NeedString, ALeadingBlankSkipsBlanksBeforeTheToken) {
    EXPECT_EQ(after(" Value", "Value("), "left [(]");
    EXPECT_EQ(after(" Value", " \t\r\nValue("), "left [(]");
    EXPECT_EQ(after(" (", "  (  'T'"), "left [  'T']");
}

TEST(NeedString, ATrailingBlankSkipsBlanksAfterTheToken) {
    EXPECT_EQ(after("} ", "}  )"), "left [)]");
    EXPECT_EQ(after("} ", "})"), "left [)]");
    EXPECT_EQ(after(" : ", "  :  7"), "left [7]");
    EXPECT_EQ(after(" : ", ":7"), "left [7]");
}

TEST(NeedString, ABlankAloneSkipsBlanksAndNeverFails) {
    EXPECT_EQ(after(" ", "  x"), "left [x]");
    EXPECT_EQ(after(" ", "x"), "left [x]");
    EXPECT_EQ(after(" ", ""), "left []");
    EXPECT_EQ(after("", "x"), "left [x]");
}

TEST(NeedString, ABlankBetweenWordsStandsForAnyNumberOfBlanks) {
    EXPECT_EQ(after("a b", "a   b"), "left []");
    EXPECT_EQ(after("a b", "ab"), "left []");
    EXPECT_EQ(after("a b", "a c"), "expected \"b\" at column 2, found \"c\"");
}

TEST(NeedString, AFailureNamesTheTokenTheColumnAndWhatStandsThere) {
    EXPECT_EQ(after(" Value", "  12"), "expected \"Value\" at column 2, found \"12\"");
    EXPECT_EQ(after(" Value", "  Val"), "expected \"Value\" at column 2, found \"Val\"");
    EXPECT_EQ(after(", ", "{1 2}", 3), "expected \",\" at column 3, found \"2}\"");
    EXPECT_EQ(after(" 'T'", "('S')", 1), "expected \"'T'\" at column 1, found \"'S')\"");
}

TEST(NeedString, AFailureAtTheEndSaysSo) {
    EXPECT_EQ(after("}", ""), "expected \"}\" at column 0, found end of text");
    EXPECT_EQ(after(" }", "{  ", 1), "expected \"}\" at column 3, found end of text");
}

TEST(NeedString, WhatWasFoundIsCutAndMadePrintable) {
    EXPECT_EQ(after("}", "123456789012345678901234"),
              "expected \"}\" at column 0, found \"123456789012345678901234\"");
    EXPECT_EQ(after("}", "1234567890123456789012345"),
              "expected \"}\" at column 0, found \"123456789012345678901234\"...");
    EXPECT_EQ(after("}", "\"\\\n\x01\xff'"),
              "expected \"}\" at column 0, found \"\\\"\\\\\\n\\x01\\xff'\"");
}

std::string junkAfter(int column, const String8& text) {
    try {
        needEnd(text.begin() + column, text.end(), text);
        return "no junk";
    } catch (const RangeException& failure) {
        return failure.what();
    }
}

TEST(NeedEnd, JunkIsReportedWithItsColumnAndTheWholeText) {
    EXPECT_EQ(junkAfter(4, "Truexyz"), "junk at column 4 deserializing Truexyz");
    EXPECT_EQ(junkAfter(0, " "), "junk at column 0 deserializing  ");
}

TEST(NeedEnd, TheEndIsNoJunk) {
    EXPECT_EQ(junkAfter(0, ""), "no junk");
    EXPECT_EQ(junkAfter(3, "abc"), "no junk");
}

} // namespace
} // namespace Vel
