#include <Vel/value/EnumNames.h>

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <utility>

namespace Net {
namespace {

VEL_ENUM(Net, Length, a, bc, cde, defg, efghi, fghijklm, ghijklmno, hijklmnopqrstuvw,
         ijklmnopqrstuvwxy, jklmnopqrstuvwxyzabcdefghijklmnopq, xx, cdf);

} // namespace
} // namespace Net

namespace Vel {
namespace {

constexpr std::string_view letters = "abcdefghijkl";

template <std::size_t... length>
void expectEternalTexts(std::index_sequence<length...>) {
    const auto expect = []<std::size_t size>() {
        static constexpr EternalText<size> text(letters.substr(0, size));
        const String8 string = String8::ofEternal(text.data());
        EXPECT_EQ(string.view(), letters.substr(0, size));
        EXPECT_EQ(std::strlen(string.charPtr()), size);
        EXPECT_EQ(string.references(), 0u);
        EXPECT_EQ(string.capacity(), 0u);
    };
    (expect.template operator()<length>(), ...);
}

TEST(EnumNames, EternalTextsAreStringsThatNobodyCounts) {
    expectEternalTexts(std::make_index_sequence<12>());
}

TEST(EnumNames, StandInNumericOrder) {
    static constexpr EnumNames<Net::Length> names = enumNames<Net::Length>();
    for (std::size_t i = 0; i < names.size(); ++i)
        EXPECT_EQ(String8::ofEternal(names[i]).view(), enumSchema<Net::Length>.names()[i]);
}

TEST(EnumNames, FindsANumberByTheExactNameAlone) {
    const auto& names = enumSchema<Net::Length>.names();
    for (std::size_t i = 0; i < names.size(); ++i) {
        std::string name(names[i]);
        EXPECT_EQ(enumNumber<Net::Length>(name), static_cast<S32>(i));
        EXPECT_EQ(enumNumber<Net::Length>(name + "_"), -1);
        EXPECT_EQ(enumNumber<Net::Length>("_" + name), -1);
        for (char& c : name) {
            const char right = std::exchange(c, '_');
            EXPECT_EQ(enumNumber<Net::Length>(name), -1) << name;
            c = right;
        }
    }
    EXPECT_EQ(enumNumber<Net::Length>(""), -1);
}

} // namespace
} // namespace Vel
