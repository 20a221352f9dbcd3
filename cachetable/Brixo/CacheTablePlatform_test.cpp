// A table on a platform whose pinbuf can make and map regions and nothing more:
// testing/twoCalls.cpp, in the place of ours.
#include <Brixo/CacheTable.h>

#include <Brixo/detail/OptionalPinbuf.h>
#include <Brixo/testing/Child.h>
#include <Brixo/testing/Tables.h>
#include <Vel/TraceCapture.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

using namespace Testing;

TEST(CacheTablePlatform, ATableNeedsTwoCallsOfPinbuf) {
    ASSERT_EQ(&pinbuf_hold, nullptr) << "the platform's pinbuf has more than it should";
    ASSERT_EQ(&pinbuf_find, nullptr) << "the platform's pinbuf has more than it should";
    Vel::TraceCapture lines;
    Vel::TraceHandle::settingsAre("*/1");
    {
        const Vel::Ptr<CacheTable> table = openTable(3, 8);
        write(*table, 5, "12345678");
    }
    const Vel::Ptr<CacheTable> table = openTable(3, 8);
    EXPECT_EQ(entry(*table, 5), "12345678");
    const char* const bytes = static_cast<const char*>(pinbuf_map(regionName.c_str(), 1, 0, 0));
    EXPECT_EQ(
        std::string(bytes, 44),
        formattedRegion({{5, "12345678"}, {0xffffffff, filled(8, 0)}, {0xffffffff, filled(8, 0)}}));
    EXPECT_EQ(lines.take(), "");
    openTable(2, 4);
    EXPECT_EQ(lines.take(), "BrixoCacheTable/1 Region " + regionName +
                                " is in use already, by another table of this process\n")
        << "and nobody knows for which sizes it was made";
    EXPECT_EQ(lastWordsOf([] { openTable(1000, 8); }),
              "CacheTable.cpp:#: assertion failed: pa (in openRegion)\n");
}

} // namespace
} // namespace Brixo
