#include <Ferrolog/detail/Layout.h>

#include <gtest/gtest.h>

namespace {

using namespace Ferrolog::detail;

TEST(Layout, OfTheSmallestRing) {
    const Layout l = layoutOf(minRingBytes);
    EXPECT_EQ(l.chunkBytes, 256U);
    EXPECT_EQ(l.chunks, 64U);
    EXPECT_EQ(l.lanes, 16U);
    EXPECT_EQ(l.siteCapacity, 64U);
    EXPECT_EQ(l.lives, 64U);
    EXPECT_EQ(l.livesAt, 512U);
    EXPECT_EQ(l.sitesAt, 512U + 64 * 128);
    EXPECT_EQ(l.textAt, 8704U + 64 * 32);
    EXPECT_EQ(l.countersAt, 10752U + 64 * 128);
    EXPECT_EQ(l.ringAt, 28672U);
    EXPECT_EQ(l.fileBytes, 45056U);
}

TEST(Layout, OfTheDefaultRing) {
    const Layout l = layoutOf(defaultRingBytes);
    EXPECT_EQ(l.chunkBytes, 4096U);
    EXPECT_EQ(l.chunks, 256U);
    EXPECT_EQ(l.lanes, 32U);
    EXPECT_EQ(l.siteCapacity, 1024U);
    EXPECT_EQ(l.lives, 256U);
    EXPECT_EQ(l.ringAt, 462848U);
}

TEST(Layout, PartsFollowOneAnotherAndKeepTheirAlignment) {
    for (U32 ring = minRingBytes; ring <= maxRingBytes; ring *= 2) {
        SCOPED_TRACE(ring);
        const Layout l = layoutOf(ring);
        EXPECT_EQ(l.chunks * l.chunkBytes, ring);
        EXPECT_LE(2 * l.lanes, l.chunks);
        EXPECT_LE(l.siteCapacity, 1024U); // ids have ten bits
        EXPECT_EQ(l.lifeAt(l.lives) + sizeof(LifeRecord), l.sitesAt);
        EXPECT_EQ(l.lifeAt(l.lives + 1), l.livesAt);
        EXPECT_EQ(l.siteAt(l.siteCapacity), l.textAt);
        EXPECT_EQ(l.textAt + l.textBytes, l.countersAt);
        EXPECT_EQ(l.countersAt % 8, 0U);
        EXPECT_LE(l.counterAt(l.lanes, 0), l.ringAt);
        EXPECT_EQ(l.ringAt % 4096, 0U);
        EXPECT_EQ(l.chunkAt(l.chunks), l.fileBytes);
        // The longest message with its owner record fits into an empty chunk.
        EXPECT_GE(l.chunkWords(), 2 * messageHeadWords + 2 * ownerArgumentWords + maxArgumentWords +
                                      messageHeadWords);
    }
}

TEST(Layout, RingSizesArePowersOfTwoInRange) {
    EXPECT_FALSE(isRingSize(0));
    EXPECT_FALSE(isRingSize(minRingBytes / 2));
    EXPECT_FALSE(isRingSize(minRingBytes + 4));
    EXPECT_TRUE(isRingSize(minRingBytes));
    EXPECT_TRUE(isRingSize(maxRingBytes));
    EXPECT_FALSE(isRingSize(maxRingBytes * 2));
}

TEST(Layout, TagKeepsSiteWordsAndState) {
    const U32 tag = messageTag(1023, 15);
    EXPECT_EQ(tag, 0xFFFCU);
    EXPECT_EQ(tagSite(0xABCD0000 | tag | stateCommitted), 1023U);
    EXPECT_EQ(tagWords(0xABCD0000 | tag | stateCommitted), 15U);
    EXPECT_EQ(tagState(0xABCD0000 | tag | stateCommitted), stateCommitted);
}

TEST(Layout, CheckIsFnv1a) {
    Check check;
    check.add("foobar", 6);
    EXPECT_EQ(check.value(), 0xBF9CF968U);
    Check byWord;
    byWord.add(0x6F6F66U);
    Check byBytes;
    byBytes.add("foo\0", 4);
    EXPECT_EQ(byWord.value(), byBytes.value());
}

} // namespace
