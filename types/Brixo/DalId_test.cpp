#include <Brixo/DalId.h>

#include <Brixo/testing/ScalarConformance.h>
#include <Vel/testing/Registered.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(DalId, IsAnByteCalledId) {
    Testing::expectScalar(&DalId::id, "id");
    Testing::expectOrdered<DalId, Vel::U8>();
}

TEST(DalId, TheInvalidOneIsNotTheDefault) {
    EXPECT_EQ(DalId::invalidId(), 255u);
    EXPECT_EQ(DalId(), DalId(0));
    EXPECT_NE(DalId(), DalId(DalId::invalidId()));
}

// The one-at-a-time mix of one byte, written out.
Vel::U32 mixOfByte(Vel::U8 byte) {
    Vel::U32 h = byte;
    h += h << 10;
    h ^= h >> 6;
    h += h << 3;
    h ^= h >> 11;
    h += h << 15;
    return h;
}

TEST(DalId, HashesByTheByteMix) {
    EXPECT_EQ(DalId(0).hash(), 0u);
    for (unsigned v = 0; v < 256; ++v)
        EXPECT_EQ(DalId(static_cast<Vel::U8>(v)).hash(), mixOfByte(static_cast<Vel::U8>(v)));
}

TEST(DalId, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Brixo::DalId"), "value(id: U8)\n"
                                                        "2 id: U8; stored\n"
                                                        "3 invalidId: U8\n"
                                                        "4 hash: U32; procedural\n");
}

} // namespace
} // namespace Brixo
