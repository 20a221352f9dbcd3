// EnumConformance.h - what holds for every enumeration, checked against the names written in its
// test. Not installed.
#pragma once

#include <Vel/RangeException.h>
#include <Vel/String8.h>
#include <Vel/value/EnumFunctions.h>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

namespace Brixo::Testing {

template <class Call>
std::string rangeError(Call call) {
    try {
        call();
        return "";
    } catch (const Vel::RangeException& error) {
        return error.what();
    }
}

// `ofNumber` and `ofName` are the two forms of the enumeration's Instance function.
template <class E>
void expectEnum(const std::string& shortName, const std::vector<std::string>& names,
                E (*ofNumber)(unsigned), E (*ofName)(Vel::String8)) {
    static_assert(sizeof(E) == 4);
    const auto count = static_cast<unsigned>(names.size());
    EXPECT_EQ(E(), ofNumber(0));
    for (unsigned n = 0; n < count; ++n) {
        const E value = static_cast<E>(n);
        EXPECT_EQ(ofNumber(n), value);
        EXPECT_EQ(ofName(names[n].c_str()), value);
        EXPECT_EQ(stringValue(value).view(), names[n]);
        EXPECT_EQ(valueToStrep(value).view(), "'" + names[n] + "'");
        std::ostringstream out;
        out << value;
        EXPECT_EQ(out.str(), names[n]);
        E read = static_cast<E>(-1);
        Vel::strepToValue(Vel::String8("\"" + names[n] + "\""), &read);
        EXPECT_EQ(read, value);
    }
    for (const unsigned n : {count, 9u, 0x7fffffffu, 0x80000000u, 0xffffffffu}) {
        const std::string pattern = shortName + "(" + std::to_string(static_cast<int>(n)) + ")";
        EXPECT_EQ(stringValue(static_cast<E>(n)).view(), pattern);
        EXPECT_EQ(valueToStrep(static_cast<E>(n)).view(), "'" + pattern + "'");
        EXPECT_EQ(rangeError([&] { ofNumber(n); }), shortName);
    }
    for (std::string wrong : {names[0] + "x", names[0].substr(1), std::string(), std::string("0")})
        EXPECT_EQ(rangeError([&] { ofName(wrong.c_str()); }), shortName) << wrong;
    std::string otherCase = names[0];
    otherCase[0] = static_cast<char>(otherCase[0] - 'a' + 'A');
    EXPECT_EQ(rangeError([&] { ofName(otherCase.c_str()); }), shortName);
    E untouched = static_cast<E>(1);
    const std::string withJunk = "'" + names[0] + "'xyz";
    EXPECT_EQ(rangeError([&] { Vel::strepToValue(Vel::String8(withJunk), &untouched); }),
              "junk at column " + std::to_string(names[0].size() + 2) + " deserializing " +
                  withJunk);
    EXPECT_EQ(
        rangeError([&] { Vel::strepToValue(Vel::String8("'" + otherCase + "'"), &untouched); }),
        shortName);
    EXPECT_EQ(untouched, static_cast<E>(1));
}

} // namespace Brixo::Testing
