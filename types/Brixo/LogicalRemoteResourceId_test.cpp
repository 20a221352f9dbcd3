#include <Brixo/LogicalRemoteResourceId.h>

#include <Vel/testing/Registered.h>
#include <Vel/testing/ValueTesting.h>
#include <gtest/gtest.h>
#include <vector>

namespace Brixo {
namespace {

using namespace Vel::Testing;
using Vel::U8;

const LogicalResourceId table(ResourceType::tableResource, 7);

RequesterDataMask maskOf(Vel::U16 index, U8 byte) {
    RequesterDataMask mask(true);
    mask.maskIs(index, byte);
    return mask;
}

TEST(LogicalRemoteResourceId, HoldsAnIdAndItsOwnMask) {
    RequesterDataMask mask = maskOf(1, 2);
    const LogicalRemoteResourceId id(table, mask);
    mask.maskIs(1, 3);
    EXPECT_EQ(id.id(), table);
    EXPECT_EQ(id.mask(), maskOf(1, 2));
    EXPECT_EQ(LogicalRemoteResourceId(),
              LogicalRemoteResourceId(LogicalResourceId(), RequesterDataMask()));
}

TEST(LogicalRemoteResourceId, DiffersByMaskButHashesByIdAlone) {
    const LogicalRemoteResourceId a(table, maskOf(1, 1));
    const LogicalRemoteResourceId b(table, maskOf(1, 2));
    const LogicalRemoteResourceId c(LogicalResourceId(ResourceType::tableResource, 8), {});
    EXPECT_EQ(a.hash(), table.hash());
    EXPECT_EQ(b.hash(), table.hash());
    EXPECT_TRUE(comparesAs(a, b, true, false));
    EXPECT_TRUE(comparesAs(b, a, false, false));
    EXPECT_TRUE(comparesAs(b, c, true, false));
    EXPECT_TRUE(comparesAs(a, a, false, true));
}

TEST(LogicalRemoteResourceId, PrintsBothParts) {
    EXPECT_EQ(
        text(LogicalRemoteResourceId(table, maskOf(1, 1))),
        "Value('Brixo::LogicalRemoteResourceId', ** {'id': Value('Brixo::LogicalResourceId', "
        "** {'type': 'tableResource', 'id': 7}), 'mask': Value('Brixo::RequesterDataMask', ** "
        "{'valid': True, 'mask': None})})");
}

TEST(LogicalRemoteResourceId, ReadsWhatNamesNoBytes) {
    EXPECT_EQ(parsed<LogicalRemoteResourceId>(
                  "Value('Brixo::LogicalRemoteResourceId', ** {'mask': "
                  "Value('Brixo::RequesterDataMask', ** {'valid': True}), 'id': "
                  "Value('Brixo::LogicalResourceId', ** {'id': 7, 'type': 'tableResource'})})"),
              LogicalRemoteResourceId(table, RequesterDataMask(true)));
    EXPECT_EQ(parseError<LogicalRemoteResourceId>("Value('Brixo::LogicalRemoteResourceId', ** {"),
              "premature end of value type LogicalRemoteResourceId");
    EXPECT_EQ(parseError<LogicalRemoteResourceId>(
                  "Value('Brixo::LogicalRemoteResourceId', ** {'type': 1})"),
              "LogicalRemoteResourceId has no such attribute: type");
    EXPECT_EQ(
        parseError<LogicalRemoteResourceId>("Value('Brixo::LogicalRemoteResourceId', ** {'id': "
                                            "Value('Brixo::LogicalResourceId', ** {'id': x})})"),
        "in attribute 'id', in attribute 'id': cannot convert \"x})})\" at column 94 to "
        "unsigned long long");
}

TEST(LogicalRemoteResourceId, LogsItsIdAndThenItsMask) {
    const LogicalRemoteResourceId id(table, maskOf(0x102, 0x33));
    const std::vector<U8> bytes = {0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 7, 1, 1, 2, 0x33, 0, 0, 0, 0};
    EXPECT_EQ(logged(id), bytes);
    EXPECT_EQ(fromLog<LogicalRemoteResourceId>(bytes), id);
}

TEST(LogicalRemoteResourceId, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Brixo::LogicalRemoteResourceId"),
              "value(id: Brixo::LogicalResourceId, mask: Brixo::RequesterDataMask)\n"
              "2 id: Brixo::LogicalResourceId; stored\n"
              "3 mask: Brixo::RequesterDataMask; stored\n"
              "4 hash: U32; procedural\n");
}

} // namespace
} // namespace Brixo
