#include <Vel/MemoryConnection.h>

#include <Vel/Ptr.h>
#include <array>
#include <gtest/gtest.h>

namespace Vel {
namespace {

TEST(MemoryConnection, KeepsWhatIsWrittenAndGivesItOnce) {
    const Ptr<MemoryConnection::Out> out = new MemoryConnection::Out;
    const std::array<U8, 5> bytes = {1, 2, 3, 4, 5};
    out->write({bytes.data(), 2});
    out->write({bytes.data() + 2, 3});
    EXPECT_TRUE(std::ranges::equal(out->bytes(), bytes));
    const Ptr<MemoryConnection::In> in = new MemoryConnection::In(out->bytes());
    std::array<U8, 4> room{};
    EXPECT_EQ(in->read(room), 4u);
    EXPECT_EQ(room[3], 4u);
    EXPECT_EQ(in->read(room), 1u);
    EXPECT_EQ(room[0], 5u);
    EXPECT_EQ(in->read(room), 0u);
}

} // namespace
} // namespace Vel
