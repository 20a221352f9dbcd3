#include <Ferrolog/detail/SiteTable.h>

#include <Ferrolog/detail/TraceFile.h>
#include <Ferrolog/testing/TestFile.h>

namespace {

using namespace Ferrolog::detail;
using Ferrolog::testing::TestFile;

static_assert(wordsOf("") == 0);
static_assert(wordsOf("iudxIUDX") == 12);
static_assert(wordsOf("IIIIIIIi") == 15);
static_assert(wordsOf("IIIIIIII") > maxArgumentWords);
static_assert(wordsOf("iz") > maxArgumentWords);

class SiteTableTest : public testing::Test {
protected:
    SiteTableTest() { EXPECT_EQ(trace.open(file.path.c_str(), minRingBytes), 0); }

    ~SiteTableTest() override { trace.close(); }

    TestFile file;
    TraceFile trace;
};

TEST_F(SiteTableTest, AFileBeginsWithTheSiteForThoseWithoutRoom) {
    const SiteRecord& record = trace.site(noRoomSiteId);
    EXPECT_EQ(record.valid, 1U);
    EXPECT_EQ(std::string(trace.text(), 8 + 43),
              "Ferrologcall site without room for its text, words:");
    EXPECT_EQ(trace.header().sitesUsed, 2U);
    EXPECT_EQ(trace.header().textUsed, 51U);
}

TEST_F(SiteTableTest, EqualContentGivesTheSameId) {
    const SiteTable table(trace);
    const U32 id = table.enter({"F", "a %i", "i", 10});
    EXPECT_EQ(id, 2U);
    EXPECT_EQ(table.enter({"F", "a %i", "i", 10}), id);
    EXPECT_EQ(table.enter({"G", "a %i", "i", 10}), 3U);
    EXPECT_EQ(table.enter({"F", "b %i", "i", 10}), 4U);
    EXPECT_EQ(table.enter({"F", "a %i", "u", 10}), 5U);
    EXPECT_EQ(table.enter({"F", "a %i", "i", 11}), 6U);
    EXPECT_EQ(table.enter({"Fa", " %i", "i", 10}), 7U);
}

TEST_F(SiteTableTest, ARecordHoldsTheTextsOneAfterAnother) {
    const U32 id = SiteTable(trace).enter({"File", "text %I", "I", 99});
    const SiteRecord& record = trace.site(id);
    EXPECT_EQ(record.line, 99U);
    EXPECT_EQ(record.words, 2U);
    EXPECT_EQ(std::string(trace.text() + record.textOffset, 12), "Filetext %II");
    EXPECT_EQ(record.check, siteCheck({"File", "text %I", "I", 99}));
}

TEST_F(SiteTableTest, AFullTableStaysAsItIs) {
    const SiteTable table(trace);
    for (U32 line = 2; line < 64; ++line) {
        EXPECT_EQ(table.enter({"F", "a", "", line}), line);
    }
    EXPECT_EQ(table.enter({"F", "a", "", 64}), noRoomSiteId);
    EXPECT_EQ(table.enter({"F", "a", "", 65}), noRoomSiteId);
    EXPECT_EQ(trace.header().sitesUsed, 64U);
    EXPECT_EQ(table.enter({"F", "a", "", 63}), 63U);
}

TEST_F(SiteTableTest, ATextThatDoesNotFitTakesNoRoom) {
    const SiteTable table(trace);
    const std::string text(8192 - 51, 'x');
    EXPECT_EQ(table.enter({"", text + "x", "", 1}), noRoomSiteId);
    EXPECT_EQ(table.enter({"", text, "", 1}), 2U);
    EXPECT_EQ(table.enter({"", "y", "", 1}), noRoomSiteId);
    EXPECT_EQ(table.enter({"", "", "", 1}), 3U);
}

TEST_F(SiteTableTest, RecordsThatPointAnywhereAreNotFollowed) {
    const SiteTable table(trace);
    const U32 id = table.enter({"F", "a", "", 1});
    trace.site(id).textOffset = 0xFFFFFFF0;
    EXPECT_EQ(table.enter({"F", "a", "", 1}), id + 1);
    trace.header().textUsed = ~U32{0};
    EXPECT_EQ(table.enter({"F", "b", "", 1}), noRoomSiteId);
}

} // namespace
