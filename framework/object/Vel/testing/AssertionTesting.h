// AssertionTesting.h - for death tests: the whole of what a failed assertion prints. Not installed.
//
//     EXPECT_DEATH(table.slot(40), assertionFailed("Table.cpp", "offset < size(); offset = 4008",
//                                                  "unsigned char* Net::Table::slot(int)"));
#pragma once

#include <gmock/gmock.h>
#include <string>
#include <string_view>

namespace Vel::Testing {

// The regular expression of a text that stands for itself.
inline std::string literally(std::string_view text) {
    std::string expression;
    for (const char c : text) {
        if (std::string_view(".[]{}()*+?^$|\\").find(c) != std::string_view::npos)
            expression += '\\';
        expression += c;
    }
    return expression;
}

// One line from any place in `file`, and nothing else. `text` is the assertion with its named
// values; `function` is as both compilers spell it.
inline testing::Matcher<const std::string&> assertionFailed(std::string_view file,
                                                            std::string_view text,
                                                            std::string_view function) {
    return testing::MatchesRegex(literally(file) + ":[0-9]+: assertion failed: " + literally(text) +
                                 " \\(in " + literally(function) + "\\)\n");
}

} // namespace Vel::Testing
