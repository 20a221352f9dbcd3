#include <Brixo/PhysicalResourceIdCol.h>

#include <Brixo/testing/CollectionConformance.h>
#include <Vel/testing/Registered.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

struct ResourceIds {
    using Owner = PhysicalResourceIdCol;

    static Vel::Ptr<Owner> owner() { return new PhysicalResourceIdCol; }

    static Vel::U64 key(Vel::U32 n) { return Vel::U64{n} << 32 | n % 7; }

    static PhysicalResourceId value(Vel::U32 n, Vel::U32 variant) {
        return PhysicalResourceId(static_cast<ResourceType>(variant + 1), key(n));
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
INSTANTIATE_TYPED_TEST_SUITE_P(PhysicalResourceIdCol, CollectionConformance, ResourceIds);
} // namespace Testing

namespace {

TEST(PhysicalResourceIdCol, AResourceOfTheSameIdReplacesTheStoredOne) {
    const Vel::Ptr<PhysicalResourceIdCol> col = new PhysicalResourceIdCol;
    EXPECT_EQ(col->references(), 1u);
    col->resourceIdIs(PhysicalResourceId(ResourceType::tableResource, 7));
    col->resourceIdIs(PhysicalResourceId(ResourceType::registerResource, 7));
    col->resourceIdNotify(7);
    EXPECT_EQ(col->resourceIds(), 1u);
    EXPECT_EQ(col->resourceId(7), PhysicalResourceId(ResourceType::registerResource, 7));
    EXPECT_EQ(col->resourceId(8), PhysicalResourceId());
}

TEST(PhysicalResourceIdCol, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Brixo::PhysicalResourceIdCol"),
              "entity\n"
              "130 resourceId[id: U64]: Brixo::PhysicalResourceId\n");
}

} // namespace
} // namespace Brixo
