#include <Brixo/CacheTableIndex.h>

#include <Vel/testing/Registered.h>
#include <Vel/testing/ValueTesting.h>
#include <gtest/gtest.h>
#include <unordered_set>

namespace Brixo {
namespace {

using namespace Vel::Testing;

CacheTableIndex index(Vel::U16 device, ResourceType type, Vel::U64 id) {
    return CacheTableIndex(DeviceId(device), PhysicalResourceId(type, id));
}

const std::string open = "Value('Brixo::CacheTableIndex', ** {";
const std::string resource =
    "Value('Brixo::PhysicalResourceId', ** {'type': 'tableResource', 'id': 3})";

TEST(CacheTableIndex, IsADeviceAndAResource) {
    EXPECT_EQ(CacheTableIndex().devId(), DeviceId(0));
    EXPECT_EQ(CacheTableIndex().resourceId(), PhysicalResourceId());
    CacheTableIndex value = index(7, ResourceType::tableResource, 3);
    EXPECT_EQ(value.devId(), DeviceId(7));
    EXPECT_EQ(value.resourceId(), PhysicalResourceId(ResourceType::tableResource, 3));
    value.devIdIs(DeviceId(8));
    value.resourceIdIs(PhysicalResourceId(ResourceType::registerResource, 4));
    EXPECT_EQ(value, index(8, ResourceType::registerResource, 4));
}

// 1512465672 is the resource's own mix.
TEST(CacheTableIndex, AddsTheDeviceAboveTheResourcesHashModulo2To32) {
    EXPECT_EQ(CacheTableIndex().hash(), 0u);
    EXPECT_EQ(index(0, ResourceType::tableResource, 3).hash(), 1512465672u);
    EXPECT_EQ(index(1, ResourceType::tableResource, 3).hash(), 1512465672u + 65536u);
    EXPECT_EQ(index(2, ResourceType::tableResource, 3).hash(), 1512465672u + 131072u);
    EXPECT_EQ(index(65535, ResourceType::tableResource, 3).hash(), 1512465672u - 65536u);
    EXPECT_EQ(index(65535, ResourceType::invalidResource, 0).hash(), 0xffff0000u);
    EXPECT_EQ(std::hash<CacheTableIndex>()(index(1, ResourceType::tableResource, 3)),
              1512465672u + 65536u);
}

TEST(CacheTableIndex, OrdersByDeviceAndThenByResource) {
    const std::vector<CacheTableIndex> ascending = {
        index(0, ResourceType::invalidResource, 0),
        index(0, ResourceType::tableResource, 9),
        index(0, ResourceType::registerResource, 1),
        index(1, ResourceType::tableResource, 3),
        index(1, ResourceType::tableResource, ~Vel::U64{0}),
        index(2, ResourceType::invalidResource, 0),
        index(65535, ResourceType::invalidResource, 0)};
    std::unordered_set<CacheTableIndex> distinct;
    for (std::size_t i = 0; i < ascending.size(); ++i) {
        EXPECT_TRUE(distinct.insert(ascending[i]).second);
        for (std::size_t j = 0; j < ascending.size(); ++j)
            EXPECT_TRUE(comparesAs(ascending[i], ascending[j], i < j, i == j)) << i << ' ' << j;
    }
}

TEST(CacheTableIndex, PrintsAndReadsItsText) {
    const CacheTableIndex value = index(7, ResourceType::tableResource, 3);
    EXPECT_EQ(text(value), open + "'devId': 7, 'resourceId': " + resource + "})");
    EXPECT_EQ(text(CacheTableIndex()),
              open + "'devId': 0, 'resourceId': Value('Brixo::PhysicalResourceId', ** "
                     "{'type': 'invalidResource', 'id': 0})})");
    EXPECT_EQ(parsed<CacheTableIndex>(text(value)), value);
    EXPECT_EQ(parsed<CacheTableIndex>("  Value ( 'Brixo::CacheTableIndex' , ** { 'resourceId' : " +
                                      resource + " , 'devId' : 7 } ) "),
              value);
    EXPECT_EQ(parsed<CacheTableIndex>(open + "'devId': 9})"),
              index(9, ResourceType::invalidResource, 0));
    EXPECT_EQ(parsed<CacheTableIndex>(open + "})"), CacheTableIndex());
    EXPECT_EQ(parsed<CacheTableIndex>(open + "'devId': 65537})").devId(), DeviceId(1)) << "16 bits";
}

TEST(CacheTableIndex, SaysWhatIsWrongWithAText) {
    for (const char* name : {"hash", "devid", "device", "value"})
        EXPECT_EQ(parseError<CacheTableIndex>(open + "'" + name + "': 1})"),
                  std::string("CacheTableIndex has no such attribute: ") + name);
    for (const std::string& cut :
         {open, open + "'devId': 7", open + "'devId': 7, 'resourceId': " + resource})
        EXPECT_EQ(parseError<CacheTableIndex>(cut), "premature end of value type CacheTableIndex");
    EXPECT_EQ(parseError<CacheTableIndex>(open +
                                          "'resourceId': Value('Brixo::PhysicalResourceId', ** "
                                          "{'kind': 1})})"),
              "in attribute 'resourceId': PhysicalResourceId has no such attribute: kind");
    EXPECT_NE(parseError<CacheTableIndex>(resource), "");
}

TEST(CacheTableIndex, LogsItsDeviceAndThenItsResource) {
    const std::vector<Vel::U8> bytes = {1, 2, 0, 0, 0, 2, 1, 2, 3, 4, 5, 6, 7, 8};
    const CacheTableIndex value = index(0x0102, ResourceType::registerResource, 0x0102030405060708);
    EXPECT_EQ(logged(value), bytes);
    EXPECT_EQ(fromLog<CacheTableIndex>(bytes), value);
}

TEST(CacheTableIndex, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Brixo::CacheTableIndex"),
              "value\n"
              "2 devId: Brixo::DeviceId; stored\n"
              "3 resourceId: Brixo::PhysicalResourceId; stored\n"
              "4 hash: U32; procedural\n");
}

} // namespace
} // namespace Brixo
