#include <Brixo/LogicalRemoteResourceIdCol.h>

#include <Brixo/testing/CollectionConformance.h>
#include <Vel/testing/Registered.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

struct ResourceIds {
    using Owner = LogicalRemoteResourceIdCol;

    static Vel::Ptr<Owner> owner() { return logicalRemoteResourceIdColFactory(); }

    static LogicalResourceId key(Vel::U32 n) {
        return LogicalResourceId(static_cast<ResourceType>(n % 3), n / 3);
    }

    static LogicalRemoteResourceId value(Vel::U32 n, Vel::U32 variant) {
        RequesterDataMask mask(variant % 2 != 0);
        mask.maskIs(static_cast<Vel::U16>(variant), 1);
        return LogicalRemoteResourceId(key(n), mask);
    }

    static auto create(Owner& owner, Vel::U32 n, Vel::U32 variant) {
        return owner.newResourceId(value(n, variant));
    }

    static void set(Owner& owner, Vel::U32 n, Vel::U32 variant) {
        owner.resourceIdIs(value(n, variant));
    }

    BRIXO_COLLECTION_FUNCTIONS(resourceId, ResourceId)
};

} // namespace

namespace Testing {
INSTANTIATE_TYPED_TEST_SUITE_P(LogicalRemoteResourceIdCol, CollectionConformance, ResourceIds);
} // namespace Testing

namespace {

RequesterDataMask maskOf(Vel::U16 start, Vel::U16 length) {
    RequesterDataMask mask(true);
    mask.setBitOffsetAndLength(start, length);
    return mask;
}

TEST(LogicalRemoteResourceIdCol, AddsTablesAndRegisters) {
    const auto col = logicalRemoteResourceIdColFactory();
    EXPECT_EQ(col->references(), 1u);
    col->tableIdIs(LogicalTableId(7));
    col->registerIdIs(LogicalRegisterId(7));
    col->tableIdWithMaskIs(LogicalTableId(8), maskOf(0, 9));
    col->registerIdWithMaskIs(LogicalRegisterId(8), maskOf(3, 1));
    EXPECT_EQ(col->resourceIds(), 4u);
    EXPECT_EQ(col->resourceId(LogicalTableId(7)),
              LogicalRemoteResourceId(LogicalResourceId(ResourceType::tableResource, 7),
                                      RequesterDataMask()));
    EXPECT_EQ(col->resourceId(LogicalRegisterId(7)).mask(), RequesterDataMask());
    EXPECT_EQ(col->resourceId(LogicalTableId(8)).mask(), maskOf(0, 9));
    EXPECT_EQ(col->resourceId(LogicalRegisterId(8)),
              LogicalRemoteResourceId(LogicalResourceId(ResourceType::registerResource, 8),
                                      maskOf(3, 1)));
}

TEST(LogicalRemoteResourceIdCol, AMaskReplacesTheEarlierOne) {
    const auto col = logicalRemoteResourceIdColFactory();
    col->tableIdIs(LogicalTableId(7));
    col->tableIdWithMaskIs(LogicalTableId(7), maskOf(0, 17));
    EXPECT_EQ(col->resourceIds(), 1u);
    EXPECT_EQ(col->resourceId(LogicalTableId(7)).mask(), maskOf(0, 17));
    col->tableIdIs(LogicalTableId(7));
    col->resourceIdNotify(LogicalTableId(7));
    EXPECT_EQ(col->resourceIds(), 1u);
    EXPECT_EQ(col->resourceId(LogicalTableId(7)).mask(), RequesterDataMask());
}

TEST(LogicalRemoteResourceIdCol, IsRegistered) {
    EXPECT_EQ(
        Vel::Testing::registered("Brixo::LogicalRemoteResourceIdCol"),
        "entity\n"
        "130 tableIdIs(tid: Brixo::LogicalTableId)\n"
        "131 tableIdWithMaskIs(tid: Brixo::LogicalTableId, mask: Brixo::RequesterDataMask)\n"
        "132 registerIdIs(rid: Brixo::LogicalRegisterId)\n"
        "133 registerIdWithMaskIs(rid: Brixo::LogicalRegisterId, mask: Brixo::RequesterDataMask)\n"
        "134 resourceId[id: Brixo::LogicalResourceId]: Brixo::LogicalRemoteResourceId\n");
}

} // namespace
} // namespace Brixo
