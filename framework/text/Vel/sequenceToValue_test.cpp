#include <Vel/sequenceToValue.h>

#include <Vel/RangeException.h>
#include <Vel/valueToStrep.h>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace Vel {
namespace {

// The value in its text form and what was left, or what was thrown.
template <class T>
std::string read(const String8& text) {
    String8::IteratorConst it = text.begin();
    T value{};
    try {
        const T returned = sequenceToValue(it, text.end(), &value);
        EXPECT_EQ(returned, value);
        return valueToStrep(value).charPtr() + std::string(" left [") +
               std::string(it.charPtr(), text.end().charPtr()) + "]";
    } catch (const RangeException& failure) {
        EXPECT_EQ(it.column(), 0) << "a reader that throws has not moved its cursor";
        EXPECT_EQ(value, T{}) << "nor stored anything";
        return failure.what();
    }
}

TEST(SequenceToValue, ReadersSkipBlanksBeforeTheValueOnly) {
    EXPECT_EQ(read<unsigned long long>(" \t\r\n7 "), "7 left [ ]");
    EXPECT_EQ(read<long long>("  -7 x"), "-7 left [ x]");
    EXPECT_EQ(read<bool>(" True "), "True left [ ]");
    EXPECT_EQ(read<String8>(" 'a' "), "'a' left [ ]");
}

TEST(SequenceToValue, ANullPointerOnlySaysWhichTypeToRead) {
    const String8 text("0x10");
    String8::IteratorConst it = text.begin();
    EXPECT_EQ(sequenceToValue(it, text.end(), static_cast<long long*>(nullptr)), 16);
    EXPECT_EQ(it, text.end());
    it = text.begin();
    EXPECT_EQ(sequenceToValue(it, text.end(), static_cast<unsigned char*>(nullptr)), 16);
}

TEST(SequenceToValue, TheSignedReaderTakesTheWholeSignedRange) {
    EXPECT_EQ(read<long long>("-9223372036854775808"), "-9223372036854775808 left []");
    EXPECT_EQ(read<long long>("9223372036854775807"), "9223372036854775807 left []");
    EXPECT_EQ(read<long long>(" 9223372036854775808"),
              "number \"9223372036854775808\" at column 1 is out of range for long long");
    EXPECT_EQ(read<long long>("18446744073709551615"),
              "number \"18446744073709551615\" at column 0 is out of range for long long");
}

TEST(SequenceToValue, TheUnsignedReaderTakesTheWholeUnsignedRangeAndNoMinus) {
    EXPECT_EQ(read<unsigned long long>("18446744073709551615"), "18446744073709551615 left []");
    EXPECT_EQ(read<unsigned long long>("18446744073709551616, 1"),
              "number \"18446744073709551616\" at column 0 is out of range for unsigned long long");
    EXPECT_EQ(read<unsigned long long>("-1"),
              "cannot convert \"-1\" at column 0 to unsigned long long");
}

TEST(SequenceToValue, NarrowReadersRefuseWhatTheirTypeCannotHold) {
    EXPECT_EQ(read<unsigned char>("255"), "255 left []");
    EXPECT_EQ(read<unsigned char>("256"),
              "number \"256\" at column 0 is out of range for unsigned char");
    EXPECT_EQ(read<int>("-2147483648"), "-2147483648 left []");
    EXPECT_EQ(read<int>("-2147483649"),
              "number \"-2147483649\" at column 0 is out of range for int");
    EXPECT_EQ(read<unsigned>("4294967295"), "4294967295 left []");
    EXPECT_EQ(read<unsigned>("4294967296"),
              "number \"4294967296\" at column 0 is out of range for unsigned int");
    EXPECT_EQ(read<short>(" 0x8000}"), "number \"0x8000\" at column 1 is out of range for short");
}

TEST(SequenceToValue, WhatIsNoNumberCannotBeConverted) {
    EXPECT_EQ(read<long long>(""), "cannot convert end of text at column 0 to long long");
    EXPECT_EQ(read<long long>("  "), "cannot convert end of text at column 2 to long long");
    EXPECT_EQ(read<long long>(" abc"), "cannot convert \"abc\" at column 1 to long long");
    EXPECT_EQ(read<long long>("0x"), "cannot convert \"0x\" at column 0 to long long");
    EXPECT_EQ(read<unsigned short>("'1'"),
              "cannot convert \"'1'\" at column 0 to unsigned long long");
}

TEST(SequenceToValue, NumbersRoundTrip) {
    for (const unsigned long long value :
         {0ULL, 1ULL, 9ULL, 10ULL, 4294967295ULL, 4294967296ULL, ~0ULL}) {
        EXPECT_EQ(read<unsigned long long>(valueToStrep(value)),
                  std::to_string(value) + " left []");
        const auto asSigned = static_cast<long long>(value);
        EXPECT_EQ(read<long long>(valueToStrep(asSigned)), std::to_string(asSigned) + " left []");
    }
}

TEST(SequenceToValue, TruthValuesAreReadInTwoSpellings) {
    EXPECT_EQ(read<bool>("True"), "True left []");
    EXPECT_EQ(read<bool>("true,"), "True left [,]");
    EXPECT_EQ(read<bool>("False"), "False left []");
    EXPECT_EQ(read<bool>("false"), "False left []");
    EXPECT_EQ(read<bool>("TRUE"), "cannot convert \"TRUE\" at column 0 to bool");
    EXPECT_EQ(read<bool>("Truely"), "cannot convert \"Truely\" at column 0 to bool");
    EXPECT_EQ(read<bool>("1"), "cannot convert \"1\" at column 0 to bool");
}

TEST(SequenceToValue, StringsStandInEitherQuotes) {
    EXPECT_EQ(read<String8>("'id': 7"), "'id' left [: 7]");
    EXPECT_EQ(read<String8>("\"it's\""), "'it\\'s' left []");
    EXPECT_EQ(read<String8>("''"), "'' left []");
    EXPECT_EQ(read<String8>("'a' 'b'"), "'a' left [ 'b']");
    EXPECT_EQ(read<String8>("'line\nend'"), "'line\\nend' left []");
}

TEST(SequenceToValue, EscapesStandForOneByteEach) {
    EXPECT_EQ(read<String8>(R"('\\\'\"')"), R"('\\\'"' left [])");
    EXPECT_EQ(read<String8>(R"('\a\b\f\n\r\t\v')"), R"('\x07\x08\x0c\n\r\t\x0b' left [])");
    EXPECT_EQ(read<String8>(R"('\x41\xfF\x00z')"), R"('A\xff\x00z' left [])");
    EXPECT_EQ(read<String8>(R"('\0\12\101\377\1018')"), R"('\x00\nA\xffA8' left [])");
    EXPECT_EQ(read<String8>(R"("\"")"), R"('"' left [])");
    EXPECT_EQ(read<String8>(R"('\18')"), R"('\x018' left [])");
}

TEST(SequenceToValue, MalformedStringsSayWhereTheyFail) {
    EXPECT_EQ(read<String8>("id"), "cannot convert \"id\" at column 0 to String8");
    EXPECT_EQ(read<String8>(""), "cannot convert end of text at column 0 to String8");
    EXPECT_EQ(read<String8>(" 'id"), "string without end at column 1");
    EXPECT_EQ(read<String8>("'id\""), "string without end at column 0");
    EXPECT_EQ(read<String8>("'"), "string without end at column 0");
    EXPECT_EQ(read<String8>("'\\"), "string without end at column 0");
    EXPECT_EQ(read<String8>("'\\'"), "string without end at column 0");
    EXPECT_EQ(read<String8>("'a\\q'"), "unknown escape in string at column 2");
    EXPECT_EQ(read<String8>("'\\x4'"), "unknown escape in string at column 1");
    EXPECT_EQ(read<String8>("'\\x4g'"), "unknown escape in string at column 1");
    EXPECT_EQ(read<String8>("'\\xg4'"), "unknown escape in string at column 1");
    EXPECT_EQ(read<String8>("'\\x4"), "unknown escape in string at column 1");
    EXPECT_EQ(read<String8>("'\\400'"), "unknown escape in string at column 1");
    EXPECT_EQ(read<String8>("'\\8'"), "unknown escape in string at column 1");
    EXPECT_EQ(read<String8>("'\\\n'"), "unknown escape in string at column 1");
}

TEST(SequenceToValue, EveryByteRoundTripsBesideEveryOther) {
    for (int first = 0; first < 256; ++first)
        for (int second = 0; second < 256; ++second) {
            const char bytes[] = {static_cast<char>(first), static_cast<char>(second)};
            const String8 text(std::string_view(bytes, 2));
            const String8 strep = valueToStrep(text);
            String8::IteratorConst it = strep.begin();
            ASSERT_EQ(sequenceToValue(it, strep.end(), static_cast<String8*>(nullptr)), text)
                << strep;
            ASSERT_EQ(it, strep.end()) << strep;
        }
}

TEST(SequenceToValue, ReadsNothingBehindTheEndItWasGiven) {
    const String8 text("'a\\x41b' 12345 True");
    for (std::ptrdiff_t length = 0; length < 8; ++length) {
        String8::IteratorConst it = text.begin();
        EXPECT_THROW(sequenceToValue(it, text.begin() + length, static_cast<String8*>(nullptr)),
                     RangeException);
    }
    String8::IteratorConst it = text.begin() + 9;
    EXPECT_EQ(sequenceToValue(it, text.begin() + 12, static_cast<long long*>(nullptr)), 123);
    EXPECT_EQ(it.column(), 12);
    it = text.begin() + 15;
    EXPECT_THROW(sequenceToValue(it, text.begin() + 18, static_cast<bool*>(nullptr)),
                 RangeException);
}

} // namespace
} // namespace Vel
