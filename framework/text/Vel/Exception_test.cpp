#include <Vel/Exception.h>

#include <Vel/Expect.h>
#include <gtest/gtest.h>

namespace Vel {
namespace {

using Id = Exception::Id;

TEST(Exception, SaysTheSameWordsBothWays) {
    const Exception error("no such port: 7", Id::range);
    EXPECT_STREQ(error.what(), "no such port: 7");
    EXPECT_EQ(error.text(), "no such port: 7");
    const std::exception& base = error;
    EXPECT_STREQ(base.what(), "no such port: 7");
}

TEST(Exception, KeepsASetOfIdsThroughCopies) {
    Exception::IdBitArray ids(Id::type);
    ids.add(Id::attribute);
    const Exception error("", ids);
    const Exception copy(error);
    for (const Exception* e : {&error, &copy}) {
        EXPECT_TRUE(e->ids().has(Id::type));
        EXPECT_TRUE(e->ids().has(Id::attribute));
        EXPECT_FALSE(e->ids().has(Id::range));
    }
    EXPECT_EQ(copy.ids(), ids);
    EXPECT_FALSE(ids.hasAnyOf(Id::range));
}

TEST(Exception, KnowsWhetherItWasExpectedWhenItWasMade) {
    const Exception before("", Id::range);
    const Expect expect(Id::range);
    const Exception within("", Id::range);
    const Exception other("", Id::type);
    EXPECT_FALSE(before.expected());
    EXPECT_TRUE(within.expected());
    EXPECT_FALSE(other.expected());
}

} // namespace
} // namespace Vel
