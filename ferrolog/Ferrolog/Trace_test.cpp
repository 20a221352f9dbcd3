#include <Ferrolog/Trace.h>

#include <Ferrolog/testing/TestFile.h>

#include <string_view>

namespace {

using Ferrolog::Reader;
using namespace Ferrolog::testing;
using namespace std::string_view_literals;

enum class Colour : std::uint8_t { red = 3 };
enum class Offset : std::int64_t { back = -7 };

static_assert(Ferrolog::detail::letterOf<std::uint32_t>() == 'i');
static_assert(Ferrolog::detail::letterOf<std::uint16_t>() == 'i');
static_assert(Ferrolog::detail::letterOf<bool>() == 'i');
static_assert(Ferrolog::detail::letterOf<int>() == 'd');
static_assert(Ferrolog::detail::letterOf<std::uint64_t>() == 'I');
static_assert(Ferrolog::detail::letterOf<std::int64_t>() == 'D');
static_assert(Ferrolog::detail::letterOf<Colour>() == 'i');
static_assert(Ferrolog::detail::letterOf<Offset>() == 'D');
static_assert(Ferrolog::detail::letterOf<Ferrolog::hex<std::uint8_t>>() == 'x');
static_assert(Ferrolog::detail::letterOf<Ferrolog::hex<std::uint64_t>>() == 'X');
static_assert(Ferrolog::detail::letterOf<int*>() == (sizeof(int*) == 8 ? 'X' : 'x'));

TEST(Trace, BuildsOriginLineFormatAndLettersOfTheCallSite) {
    TestFile file;
    ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
    const std::uint32_t index = 5;
    const std::uint32_t key = 77;
    const std::uint32_t line = __LINE__ + 1;
    FERROLOG("BrixoCacheTable", "Recovered entry, index: ", index, " key: ", key);

    const Reader reader(file.path);
    ASSERT_EQ(reader.messages().size(), 1U);
    const auto& site = reader.callSites()[reader.messages()[0].site];
    EXPECT_EQ(site.file, "BrixoCacheTable");
    EXPECT_EQ(site.line, line);
    EXPECT_EQ(site.format, "Recovered entry, index: %i key: %i");
    EXPECT_EQ(site.letters, "ii");
    EXPECT_EQ(reader.text(reader.messages()[0]), "Recovered entry, index: 5 key: 77");
    EXPECT_EQ(reader.origin(site), "BrixoCacheTable:" + std::to_string(line));
}

TEST(Trace, PiecesSideBySideAreOneText) {
    TestFile file;
    ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
    FERROLOG("BrixoCacheTable", "CacheTable::"
                                "doRestart");
    FERROLOG("BrixoCacheTable",
             "a "
             "b ",
             1U,
             " c"
             " d");
    EXPECT_EQ(texts(Reader(file.path)),
              (std::vector<std::string>{"CacheTable::doRestart", "a b 1 c d"}));
}

TEST(Trace, PrintsEveryKindOfArgument) {
    TestFile file;
    ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
    FERROLOG("T", "", 0xFFFFFFFEU);
    FERROLOG("T", "", -2);
    FERROLOG("T", "", static_cast<std::uint8_t>(255), " ", static_cast<std::int16_t>(-1));
    FERROLOG("T", "", ~std::uint64_t{0}, " ", std::int64_t{-1});
    FERROLOG("T", "", std::int64_t{-9223372036854775807} - 1);
    FERROLOG("T", "", true, " ", Colour::red, " ", Offset::back);
    FERROLOG("T", "", Ferrolog::hex(0xABCU), " ", Ferrolog::hex(std::uint64_t{1} << 60));
    FERROLOG("T", "", reinterpret_cast<void*>(std::uintptr_t{0x1000}));
    EXPECT_EQ(texts(Reader(file.path)),
              (std::vector<std::string>{"4294967294", "-2", "255 -1", "18446744073709551615 -1",
                                        "-9223372036854775808", "1 3 -7",
                                        "0xabc 0x1000000000000000", "0x1000"}));
}

TEST(Trace, PiecesMayHoldAnyCharacters) {
    TestFile file;
    ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
    FERROLOG("T", "100% of %i, \"quoted\": ", 7U, "%");
    FERROLOG("T", "tab\tend");
    EXPECT_EQ(texts(Reader(file.path)),
              (std::vector<std::string>{"100% of %i, \"quoted\": 7%", "tab\\x09end"}));
}

TEST(Trace, TakesEightArgumentsAndFifteenWords) {
    TestFile file;
    ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
    const std::uint64_t wide = std::uint64_t{1} << 32;
    FERROLOG("T", "", 1U, ",", 2U, ",", 3U, ",", 4U, ",", 5U, ",", 6U, ",", 7U, ",", 8U, ".");
    FERROLOG("T", "", wide, ",", wide, ",", wide, ",", wide, ",", wide, ",", wide, ",", wide, ",",
             8U);
    EXPECT_EQ(texts(Reader(file.path)),
              (std::vector<std::string>{"1,2,3,4,5,6,7,8.",
                                        "4294967296,4294967296,4294967296,4294967296,4294967296,"
                                        "4294967296,4294967296,8"}));
}

TEST(Trace, EvaluatesArgumentsOnceAndOnlyWhileOn) {
    TestFile file;
    unsigned calls = 0;
    const auto trace = [&] { FERROLOG("T", "calls ", ++calls); };
    trace();
    EXPECT_EQ(calls, 0U);
    ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
    trace();
    EXPECT_EQ(calls, 1U);
    ferrolog_close();
    trace();
    EXPECT_EQ(calls, 1U);
    EXPECT_EQ(texts(Reader(file.path)), std::vector<std::string>{"calls 1"});
}

} // namespace
