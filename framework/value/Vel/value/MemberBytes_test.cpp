#include <Vel/value/MemberBytes.h>

#include <Vel/Integers.h>
#include <gtest/gtest.h>
#include <string>

namespace Vel::detail {
namespace {

class Word {
public:
    constexpr Word() noexcept = default;

    constexpr explicit Word(U16 word) noexcept : word_(word) {}

    constexpr U16 word() const noexcept { return word_; }

private:
    U16 word_ = 0;
};

struct Plain {
    U32 number = 0;
    U32 other = 0;
};

// A byte lies between the word and the number.
struct Gap {
    Word word;
    bool flag = false;
    U32 number = 0;
};

struct NoGap : Gap {
    U64 more = 0;
};

struct Empty {};

struct Text {
    U32 number = 0;
    std::string text;
};

static_assert(memberBytes<bool> == 1 && memberBytes<U64> == 8 &&
              memberBytes<void*> == sizeof(void*));
static_assert(memberBytes<Word> == 2 && memberBytes<Plain> == 8);
static_assert(sizeof(Gap) == 8 && memberBytes<Gap> == 7);
static_assert(sizeof(NoGap) == 16 && memberBytes<NoGap> == 15);
static_assert(memberBytes<std::string> == 0, "the compiler makes no constant of it");

static_assert(bytesBeside<Plain, U32, U32>() == 0);
static_assert(bytesBeside<Plain, U32>() == 4);
static_assert(bytesBeside<Plain, void, U32, void>() == 4, "void counts for nothing");
static_assert(bytesBeside<Gap, Word, bool, U32>() == 0);
static_assert(bytesBeside<Gap, Word, U32>() == 1,
              "what would fit into a gap is missed all the same");
static_assert(bytesBeside<NoGap, Gap, U64>() == 0, "a member has gaps of its own");
static_assert(bytesBeside<NoGap, Gap>() == 8);
static_assert(bytesBeside<Empty>() == 0);
static_assert(bytesBeside<Text, U32, std::string>() == 0);
static_assert(bytesBeside<Text, std::string>() == sizeof(Text) - sizeof(std::string));

// Where nothing but sizes is known, a field may need space beside it.
struct TextBesideFlag {
    bool flag = false;
    std::string text;
    bool other = false;
};

static_assert(bytesBeside<TextBesideFlag, bool, std::string, bool>() == 0);
static_assert(bytesBeside<TextBesideFlag, bool, std::string>() == alignof(TextBesideFlag));

TEST(MemberBytes, AreCountedByTheCompiler) { EXPECT_EQ(memberBytes<Gap>, 7u); }

} // namespace
} // namespace Vel::detail
