#include <Brixo/ResourceIdToDataMaskMap.h>

#include <Brixo/testing/CollectionConformance.h>
#include <Vel/testing/Registered.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

struct DataMasks {
    using Owner = ResourceIdToDataMaskMap;

    static Vel::Ptr<Owner> owner() { return resourceIdToDataMaskMapFactory(); }

    static PhysicalResourceId key(Vel::U32 n) {
        return PhysicalResourceId(static_cast<ResourceType>(n % 3), Vel::U64{n} << 20);
    }

    static RequesterDataMask value(Vel::U32 n, Vel::U32 variant) {
        RequesterDataMask mask(true);
        mask.maskIs(static_cast<Vel::U16>(n), static_cast<Vel::U8>(variant));
        return mask;
    }

    static auto create(Owner& owner, Vel::U32 n, Vel::U32 variant) {
        return owner.newDataMask(key(n), value(n, variant));
    }

    static void set(Owner& owner, Vel::U32 n, Vel::U32 variant) {
        owner.dataMaskIs(key(n), value(n, variant));
    }

    BRIXO_COLLECTION_FUNCTIONS(dataMask, DataMask)
};

} // namespace

namespace Testing {
INSTANTIATE_TYPED_TEST_SUITE_P(ResourceIdToDataMaskMap, CollectionConformance, DataMasks);
} // namespace Testing

namespace {

TEST(ResourceIdToDataMaskMap, AMaskReplacesTheEarlierOne) {
    const auto map = resourceIdToDataMaskMapFactory();
    EXPECT_EQ(map->references(), 1u);
    const PhysicalResourceId id(ResourceType::tableResource, 7);
    RequesterDataMask first(false);
    first.setBitRange(0, 20);
    RequesterDataMask second(true);
    second.setBitRange(4, 5);
    map->dataMaskIs(id, first);
    map->dataMaskIs(id, second);
    map->dataMaskNotify(id);
    EXPECT_EQ(map->dataMasks(), 1u);
    EXPECT_EQ(map->dataMask(id), second);
    EXPECT_EQ(map->dataMask(PhysicalResourceId(ResourceType::registerResource, 7)),
              RequesterDataMask());
}

TEST(ResourceIdToDataMaskMap, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Brixo::ResourceIdToDataMaskMap"),
              "entity\n"
              "130 dataMask[Brixo::PhysicalResourceId]: Brixo::RequesterDataMask; stored\n");
}

} // namespace
} // namespace Brixo
