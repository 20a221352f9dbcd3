#include <Vel/textErrors.h>

#include <Vel/Expect.h>
#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace Vel {
namespace {

struct Colour {};

template <class Thrower>
RangeException thrownBy(Thrower&& thrower) {
    try {
        std::forward<Thrower>(thrower)();
    } catch (const RangeException& failure) {
        return failure;
    }
    return RangeException("nothing was thrown");
}

TEST(CannotConvert, NamesTheTypeThePlaceAndWhatStandsThere) {
    const String8 text("id: red");
    EXPECT_STREQ(
        thrownBy([&] { cannotConvert(text.begin() + 4, text.end(), typeid(unsigned)); }).what(),
        "cannot convert \"red\" at column 4 to unsigned int");
    EXPECT_STREQ(
        thrownBy([&] { cannotConvert(text.begin() + 3, text.end(), typeid(unsigned)); }).what(),
        "cannot convert \"red\" at column 4 to unsigned int");
    EXPECT_STREQ(thrownBy([&] { cannotConvert(text.end(), text.end(), typeid(String8)); }).what(),
                 "cannot convert end of text at column 7 to String8");
    EXPECT_STREQ(thrownBy([&] { cannotConvert(text.begin(), text.end(), typeid(Colour)); }).what(),
                 "cannot convert \"id: red\" at column 0 to Vel::(anonymous namespace)::Colour");
}

TEST(CannotConvert, IsOfTheRangeKind) {
    const RangeException failure =
        thrownBy([] { cannotConvert(String8().begin(), String8().end(), typeid(int)); });
    EXPECT_EQ(failure.ids(), Exception::IdBitArray(Exception::Id::range));
}

TEST(NumberOutOfRange, ShowsTheNumberAlone) {
    const String8 text("[300]");
    EXPECT_STREQ(thrownBy([&] {
                     numberOutOfRange(text.begin() + 1, text.begin() + 4, typeid(unsigned char));
                 }).what(),
                 "number \"300\" at column 1 is out of range for unsigned char");
}

TEST(RethrowFromDeserializeAttr, PutsTheAttributesNameBeforeTheText) {
    EXPECT_STREQ(
        thrownBy([] { rethrowFromDeserializeAttr(RangeException("Command"), "cmd"); }).what(),
        "in attribute 'cmd': Command");
}

TEST(RethrowFromDeserializeAttr, NamesNestedAttributesFromTheOutermostInwards) {
    const RangeException inner = thrownBy(
        [] { rethrowFromDeserializeAttr(RangeException("expected \",\" at column 9"), "id"); });
    const RangeException outer = thrownBy([&] { rethrowFromDeserializeAttr(inner, "resourceId"); });
    EXPECT_STREQ(outer.what(),
                 "in attribute 'resourceId', in attribute 'id': expected \",\" at column 9");
}

TEST(RethrowFromDeserializeAttr, KeepsTheIdsAndWhetherTheFailureWasExpected) {
    Exception::IdBitArray ids(Exception::Id::type);
    const auto expectedFailure = [&] {
        const Expect expect(Exception::Id::type);
        return RangeException("odd", ids);
    }();
    const RangeException marked =
        thrownBy([&] { rethrowFromDeserializeAttr(expectedFailure, "a"); });
    ids.add(Exception::Id::range);
    EXPECT_EQ(marked.ids(), ids);
    EXPECT_TRUE(marked.expected());
    EXPECT_FALSE(
        thrownBy([] { rethrowFromDeserializeAttr(RangeException("odd"), "a"); }).expected());
}

} // namespace
} // namespace Vel
