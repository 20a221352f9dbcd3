// What a table says while it works: trace lines with their levels, and messages in the ring.
#include <Brixo/CacheTable.h>

#include <Brixo/testing/Child.h>
#include <Brixo/testing/RegionFolder.h>
#include <Brixo/testing/Tables.h>
#include <Ferrolog/Ferrolog.h>
#include <Ferrolog/Reader.h>
#include <Vel/TraceCapture.h>
#include <gtest/gtest.h>
#include <set>

namespace Brixo {
namespace {

using namespace Testing;

constexpr U32 unused = 0xffffffff;

class CacheTableTrace : public testing::Test {
protected:
    RegionFolder regions;
    Vel::TraceCapture lines;

    CacheTableTrace() { Vel::TraceHandle::settingsAre("*/all"); }

    ~CacheTableTrace() override { Vel::TraceHandle::settingsAre("*/none"); }
};

TEST_F(CacheTableTrace, NamesTheStepsOfAFreshTable) {
    openTable(2, 4);
    EXPECT_EQ(lines.take(), "BrixoCacheTable/8 CacheTable::handleInitialized\n"
                            "BrixoCacheTable/9 DMA memory physical address for cache table " +
                                regionName +
                                " 0x40000000\n"
                                "BrixoCacheTable/8 CacheTable::doRestart\n");
}

TEST_F(CacheTableTrace, NamesEverySlotThatIsTakenUpAndEveryDuplicate) {
    regions.put(
        regionName,
        formattedRegion(
            {{3, "a"}, {unused, "b"}, {3, "c"}, {0xfffffffe, "d"}, {3, "e"}, {0xfffffffe, "f"}}));
    const Vel::Ptr<CacheTable> table = openTable(6, 1);
    lines.take();
    table->doRestart();
    EXPECT_EQ(lines.take(), "BrixoCacheTable/8 CacheTable::doRestart\n"
                            "BrixoCacheTable/9 Recovered entry, index: 0 key: 3\n"
                            "BrixoCacheTable/9 Recovered entry, index: 3 key: 4294967294\n")
        << "the second pass finds no duplicates";

    regions.clear();
    regions.put(
        regionName,
        formattedRegion(
            {{3, "a"}, {unused, "b"}, {3, "c"}, {0xfffffffe, "d"}, {3, "e"}, {0xfffffffe, "f"}}));
    openTable(6, 1);
    EXPECT_EQ(lines.take(),
              "BrixoCacheTable/8 CacheTable::handleInitialized\n"
              "BrixoCacheTable/9 DMA memory physical address for cache table " +
                  regionName +
                  " 0x40000000\n"
                  "BrixoCacheTable/8 CacheTable::doRestart\n"
                  "BrixoCacheTable/9 Recovered entry, index: 0 key: 3\n"
                  "BrixoCacheTable/9 Recovered entry, index: 2 key: 3\n"
                  "BrixoCacheTable/1 Discovered duplicate keys, old index: 0 new index: 2\n"
                  "BrixoCacheTable/9 Recovered entry, index: 3 key: 4294967294\n"
                  "BrixoCacheTable/9 Recovered entry, index: 4 key: 3\n"
                  "BrixoCacheTable/1 Discovered duplicate keys, old index: 0 new index: 4\n"
                  "BrixoCacheTable/9 Recovered entry, index: 5 key: 4294967294\n"
                  "BrixoCacheTable/1 Discovered duplicate keys, old index: 3 new index: 5\n");
}

TEST_F(CacheTableTrace, SaysNothingWhenEntriesAreReadWrittenAndDeleted) {
    const Vel::Ptr<CacheTable> table = openTable(2, 8);
    lines.take();
    table->entryIs_py(key(1), 5);
    table->entry_py(key(1));
    table->entryDel(key(1));
    EXPECT_EQ(lines.take(), "");
}

TEST_F(CacheTableTrace, ReportsDuplicatesAloneUnlessAskedForMore) {
    // In a process of its own: there no setting has named the handle yet.
    regions.put(regionName, formattedRegion({{3, "a"}, {3, "b"}}));
    EXPECT_EQ(inChild([this] {
                  Vel::TraceHandle::settingsAre("*/1");
                  openTable(2, 1);
                  return lines.take() == "BrixoCacheTable/1 Discovered duplicate keys, "
                                         "old index: 0 new index: 1\n"
                             ? 0
                             : 1;
              }),
              0);
}

TEST_F(CacheTableTrace, PrintsThePhysicalAddressOfTheRegion) {
    cacheTableFactory(AgentId(9), tableId, 2000, 4);
    lines.take();
    openTable(2, 4);
    EXPECT_NE(lines.take().find(regionName + " 0x40004000\n"), std::string::npos);
}

// The ring's messages while `body` runs: site's origin without its line, the text, and the words.
template <class Body>
std::vector<std::string> messagesOf(const RegionFolder& regions, Body body) {
    const std::string path = regions.beside("trace");
    EXPECT_EQ(ferrolog_open(path.c_str(), 0), 0) << ferrolog_error();
    body();
    ferrolog_close();
    const Ferrolog::Reader reader(path);
    EXPECT_EQ(reader.error(), "");
    EXPECT_EQ(reader.lost(), 0u);
    std::vector<std::string> messages;
    for (const Ferrolog::Message& message : reader.messages()) {
        std::string line =
            reader.callSites()[message.site].file + " '" + reader.text(message) + "'";
        for (const U32 argument : reader.words(message)) line += " " + std::to_string(argument);
        messages.push_back(line);
    }
    return messages;
}

TEST_F(CacheTableTrace, WritesItsMessagesIntoTheRing) {
    regions.put(regionName,
                formattedRegion({{3, "a"}, {unused, "b"}, {0xfffffffe, "c"}, {3, "d"}}));
    EXPECT_EQ(
        messagesOf(regions, [] { openTable(4, 1); }),
        std::vector<std::string>(
            {"BrixoCacheTable 'CacheTable::handleInitialized'",
             "BrixoCacheTable 'DMA memory size 28' 28", "BrixoCacheTable 'CacheTable::doRestart'",
             "BrixoCacheTable 'Recovered entry, index: 0 key: 3' 0 3",
             "BrixoCacheTable 'Recovered entry, index: 2 key: 4294967294' 2 4294967294",
             "BrixoCacheTable 'Recovered entry, index: 3 key: 3' 3 3",
             "BrixoCacheTable 'Discovered duplicate keys, old index: 0 new index: 3' 0 3"}));
}

TEST_F(CacheTableTrace, RegistersEachCallSiteOnceWithOneLetterForEachArgument) {
    regions.put(regionName, formattedRegion({{3, "a"}, {3, "b"}}));
    messagesOf(regions, [] {
        const Vel::Ptr<CacheTable> table = openTable(2, 1);
        table->doRestart();
        openTable(2, 1);
    });
    const Ferrolog::Reader reader(regions.beside("trace"));
    std::multiset<std::string> sites;
    std::set<U32> siteLines;
    for (const Ferrolog::CallSite& site : reader.callSites()) {
        if (site.file != "BrixoCacheTable") continue; // the ring's own
        sites.insert(site.file + " '" + site.format + "' " + site.letters);
        siteLines.insert(site.line);
    }
    EXPECT_EQ(
        sites,
        std::multiset<std::string>(
            {"BrixoCacheTable 'CacheTable::handleInitialized' ",
             "BrixoCacheTable 'DMA memory size %i' i", "BrixoCacheTable 'CacheTable::doRestart' ",
             "BrixoCacheTable 'Recovered entry, index: %i key: %i' ii",
             "BrixoCacheTable 'Discovered duplicate keys, old index: %i new index: %i' ii"}));
    EXPECT_EQ(siteLines.size(), 5u);
}

// The table's life, not the compiler's order of evaluation, decides what stands before a death.
TEST_F(CacheTableTrace, HasSaidTheSizeBeforeItDiesOfARegionThatIsShorter) {
    regions.put(regionName, filled(5, 0));
    const std::string path = regions.beside("trace");
    EXPECT_EQ(deathOf([&] {
                  if (ferrolog_open(path.c_str(), 0) == 0) openTable(2, 4);
              }).status,
              -SIGABRT);
    const Ferrolog::Reader reader(path);
    ASSERT_EQ(reader.messages().size(), 2u);
    EXPECT_EQ(reader.text(reader.messages()[1]), "DMA memory size 24");
}

} // namespace
} // namespace Brixo
