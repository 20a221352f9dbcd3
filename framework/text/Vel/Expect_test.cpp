#include <Vel/Expect.h>

#include <gtest/gtest.h>
#include <thread>

namespace Vel {
namespace {

using Id = Exception::Id;

TEST(Expect, AddsToWhatOuterScopesExpectAndEndsWithItsScope) {
    EXPECT_FALSE(Expect::isExpected(Id::range));
    {
        const Expect outer(Id::range);
        {
            const Expect inner(Id::type);
            EXPECT_TRUE(Expect::isExpected(Id::range));
            EXPECT_TRUE(Expect::isExpected(Id::type));
        }
        EXPECT_TRUE(Expect::isExpected(Id::range));
        EXPECT_FALSE(Expect::isExpected(Id::type));
    }
    EXPECT_FALSE(Expect::isExpected(Id::range));
}

TEST(Expect, SpeaksForItsThreadAlone) {
    const Expect here(Id::range);
    bool there = true;
    std::thread([&] { there = Expect::isExpected(Id::range); }).join();
    EXPECT_FALSE(there);
}

} // namespace
} // namespace Vel
