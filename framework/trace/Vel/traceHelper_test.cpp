#include <Vel/traceHelper.h>

#include <Vel/TraceCapture.h>
#include <gtest/gtest.h>
#include <locale>
#include <stdexcept>

namespace Vel {
namespace {

class TraceHelper : public testing::Test {
protected:
    TraceHandle handle_{"Widget", false};
    TraceCapture capture_;
};

struct Unprintable {
    friend std::ostream& operator<<(std::ostream&, const Unprintable&) {
        throw std::runtime_error("unprintable");
    }
};

TEST_F(TraceHelper, BuildsALineOfItsParts) {
    handle_.levelIs(9, true);
    VEL_TRACE(handle_, 9, "Recovered entry, index: " << 7 << " key: " << String8("k"));
    traceHelper(handle_, 9, "Recovered entry, index: ", 7, " key: ", String8("k"));
    EXPECT_EQ(capture_.take(), "Widget/9 Recovered entry, index: 7 key: k\n"
                               "Widget/9 Recovered entry, index: 7 key: k\n");
}

TEST_F(TraceHelper, EvaluatesNothingWhenTheLevelIsOff) {
    handle_.levelIs(8, true);
    int evaluated = 0;
    VEL_TRACE(handle_, 9, ++evaluated);
    traceHelper(handle_, 9, Unprintable());
    EXPECT_EQ(evaluated, 0);
    VEL_TRACE(handle_, 8, ++evaluated);
    EXPECT_EQ(evaluated, 1);
    EXPECT_EQ(capture_.take(), "Widget/8 1\n");
}

TEST_F(TraceHelper, IsOneStatement) {
    handle_.levelIs(1, true);
    if (handle_.isOn(2))
        VEL_TRACE(handle_, 2, "two");
    else
        VEL_TRACE(handle_, 1, "one");
    EXPECT_EQ(capture_.take(), "Widget/1 one\n");
}

TEST_F(TraceHelper, TakesTextsOfAnyLength) {
    handle_.levelIs(1, true);
    for (const std::size_t length : {0u, 239u, 240u, 241u, 480u, 481u, 100000u}) {
        const std::string text(length, 'x');
        VEL_TRACE(handle_, 1, text);
        EXPECT_EQ(capture_.take(), "Widget/1 " + text + "\n");
        traceHelper(handle_, 1, text, '|', text);
        EXPECT_EQ(capture_.take(), "Widget/1 " + text + "|" + text + "\n");
    }
}

TEST_F(TraceHelper, PassesOnWhatAPartThrowsAndWritesNothing) {
    handle_.levelIs(1, true);
    EXPECT_THROW(VEL_TRACE(handle_, 1, "a" << Unprintable()), std::runtime_error);
    EXPECT_EQ(capture_.take(), "");
}

TEST_F(TraceHelper, WritesNumbersAlikeInEveryLocale) {
    struct Grouped : std::numpunct<char> {
        char do_thousands_sep() const override { return '.'; }

        std::string do_grouping() const override { return "\3"; }
    };

    handle_.levelIs(1, true);
    const std::locale before =
        std::locale::global(std::locale(std::locale::classic(), new Grouped));
    VEL_TRACE(handle_, 1, 1234567);
    std::locale::global(before);
    EXPECT_EQ(capture_.take(), "Widget/1 1234567\n");
}

} // namespace
} // namespace Vel
