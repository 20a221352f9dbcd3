#include <Vel/format.h>

#include <Vel/RangeException.h>
#include <gtest/gtest.h>
#include <string>

namespace Vel {
namespace {

TEST(Format, WritesWhatPrintfWrites) {
    EXPECT_STREQ(format("CacheTable-%u-%u-%u", 3u, 1u, 77u).charPtr(), "CacheTable-3-1-77");
    EXPECT_STREQ(format("%08x %-4s|%5.2f %llu %c%%", 0xbeefu, "ab", 2.5, ~0ull, 'z').charPtr(),
                 "0000beef ab  | 2.50 18446744073709551615 z%");
}

TEST(Format, OfNothingIsTheSharedEmptyString) {
    const String8 text = format("%s", "");
    EXPECT_EQ(text.length(), 0u);
    EXPECT_EQ(text.charPtr(), String8().charPtr());
}

TEST(Format, KeepsNulCharacters) {
    const String8 text = format("a%cb", 0);
    EXPECT_EQ(text.view(), std::string_view("a\0b", 3));
}

TEST(Format, WritesTextsOfAnyLength) {
    for (const int length : {1, 254, 255, 256, 257, 100000}) {
        const std::string expected(static_cast<std::size_t>(length), 'x');
        const String8 text = format("%s", expected.c_str());
        EXPECT_EQ(text.view(), expected);
        EXPECT_EQ(text.charPtr()[length], '\0');
    }
}

TEST(Format, SaysWhatItCannotWrite) {
    const wchar_t notACharacter[] = {static_cast<wchar_t>(0x7fffffff), 0};
    try {
        format("value %ls", notACharacter);
        FAIL() << "no exception";
    } catch (const RangeException& e) {
        EXPECT_STREQ(e.what(), "cannot format \"value %ls\": "
                               "Invalid or incomplete multibyte or wide character");
    }
}

TEST(Format, RefusesTextsLongerThanAnInt) {
    // Through a pointer that the compiler does not look behind: it knows that this is too wide.
    String8 (*volatile unchecked)(const char*, ...) = format;
    try {
        unchecked("%2147483648d", 1);
        FAIL() << "no exception";
    } catch (const RangeException& e) {
        EXPECT_STREQ(e.what(),
                     "cannot format \"%2147483648d\": Value too large for defined data type");
    }
}

} // namespace
} // namespace Vel
