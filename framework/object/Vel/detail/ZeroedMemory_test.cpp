#include <Vel/detail/ZeroedMemory.h>

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>

namespace Vel::detail {
namespace {

bool isZero(const void* memory, std::size_t from, std::size_t to) {
    const auto* const bytes = static_cast<const unsigned char*>(memory);
    return std::all_of(bytes + from, bytes + to, [](unsigned char byte) { return byte == 0; });
}

TEST(ZeroedMemory, IsZeroWhateverLayThereBefore) {
    for (const std::size_t bytes : {64UL, 4096UL, 65535UL, 65536UL, 1UL << 20}) {
        void* memory = zeroedMemory(bytes);
        ASSERT_NE(memory, nullptr);
        EXPECT_TRUE(isZero(memory, 0, bytes));
        std::memset(memory, 0xff, bytes);
        zeroedMemoryDel(memory, bytes);
        memory = zeroedMemory(bytes);
        EXPECT_TRUE(isZero(memory, 0, bytes)) << bytes;
        zeroedMemoryDel(memory, bytes);
    }
    zeroedMemoryDel(nullptr, 0);
}

TEST(ZeroedMemory, GrowsWithItsContents) {
    for (const std::size_t bytes : {64UL, 32768UL, 40960UL, 65536UL, 1UL << 20}) {
        void* memory = zeroedMemory(bytes);
        ASSERT_NE(memory, nullptr);
        std::memset(memory, 0x5a, bytes);
        memory = zeroedMemoryGrown(memory, bytes, 2 * bytes);
        ASSERT_NE(memory, nullptr);
        EXPECT_EQ(static_cast<unsigned char*>(memory)[0], 0x5a);
        EXPECT_EQ(static_cast<unsigned char*>(memory)[bytes - 1], 0x5a);
        EXPECT_TRUE(isZero(memory, bytes, 2 * bytes)) << bytes;
        zeroedMemoryDel(memory, 2 * bytes);
    }
}

TEST(ZeroedMemory, SaysWhenThereIsNone) {
    constexpr std::size_t tooMuch = ~std::size_t{0} - 0xffff;
    EXPECT_EQ(zeroedMemory(tooMuch), nullptr);
    for (const std::size_t bytes : {64UL, 65536UL}) {
        void* memory = zeroedMemory(bytes);
        EXPECT_EQ(zeroedMemoryGrown(memory, bytes, tooMuch), nullptr) << "it is as it was";
        std::memset(memory, 1, bytes);
        zeroedMemoryDel(memory, bytes);
    }
}

} // namespace
} // namespace Vel::detail
