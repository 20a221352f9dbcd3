#include <Vel/deserializeAttr.h>

#include <Vel/needString.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

// Types of somebody else's namespace: one read by a function, one by its constructor.
namespace Paint {

enum class Colour { red, green };

Colour sequenceToValue(Vel::String8::IteratorConst& it, const Vel::String8::IteratorConst& end,
                       Colour* value) {
    const Vel::String8 name = Vel::sequenceToValue(it, end, static_cast<Vel::String8*>(nullptr));
    if (name == "broken") throw std::logic_error("broken");
    if (!(name == "green")) Vel::throwRangeException("Colour");
    return *value = Colour::green;
}

struct Dot {
    Dot() = default;

    Dot(Vel::String8::IteratorConst& it, const Vel::String8::IteratorConst& end) {
        Vel::needString(it, end, "(");
        Vel::deserializeAttr(it, end, &x, "x");
        Vel::needString(it, end, ")");
    }

    unsigned x = 1;
};

} // namespace Paint

namespace Vel {
namespace {

template <class T>
std::string failureOf(const String8& text, T* value) {
    String8::IteratorConst it = text.begin();
    try {
        deserializeAttr(it, text.end(), value, "top");
    } catch (const RangeException& failure) {
        return failure.what();
    }
    return "none";
}

TEST(DeserializeAttr, ReadsBuiltinsFunctionsOfOtherNamespacesAndConstructors) {
    bool truth = false;
    EXPECT_EQ(failureOf("true", &truth), "none");
    EXPECT_TRUE(truth);
    Paint::Colour colour = Paint::Colour::red;
    EXPECT_EQ(failureOf("'green'", &colour), "none");
    EXPECT_EQ(colour, Paint::Colour::green);
    Paint::Dot dot;
    EXPECT_EQ(failureOf("(5)", &dot), "none");
    EXPECT_EQ(dot.x, 5U);
}

TEST(DeserializeAttr, AFailureNamesTheAttributeAndStoresNothing) {
    Paint::Colour colour = Paint::Colour::red;
    EXPECT_EQ(failureOf("'blue'", &colour), "in attribute 'top': Colour");
    EXPECT_EQ(colour, Paint::Colour::red);
    Paint::Dot dot;
    EXPECT_EQ(failureOf("(5", &dot),
              "in attribute 'top': expected \")\" at column 2, found end of text");
    EXPECT_EQ(failureOf("(y)", &dot), "in attribute 'top', in attribute 'x': cannot convert \"y)\" "
                                      "at column 1 to unsigned long long");
    EXPECT_EQ(dot.x, 1U);
}

TEST(DeserializeAttr, OtherExceptionsPassUnchanged) {
    Paint::Colour colour = Paint::Colour::red;
    EXPECT_THROW(failureOf("'broken'", &colour), std::logic_error);
}

} // namespace
} // namespace Vel
