#include <Brixo/RequesterDataMask.h>

#include <Vel/testing/Registered.h>
#include <Vel/testing/ValueTesting.h>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <vector>

namespace Brixo {
namespace {

using namespace Vel::Testing;
using Vel::U16;
using Vel::U8;
using Bytes = std::map<U16, U8>;

Bytes bytesOf(const RequesterDataMask& mask) {
    Bytes bytes;
    for (const auto& [index, byte] : mask.mask()) bytes[index] = byte;
    return bytes;
}

TEST(RequesterDataMask, IsInvalidAndEmptyByDefault) {
    const RequesterDataMask mask;
    EXPECT_FALSE(mask.valid());
    EXPECT_EQ(mask.masks(), 0u);
    EXPECT_EQ(mask.mask(5), 0u);
}

TEST(RequesterDataMask, SetsRangesOfBits) {
    RequesterDataMask mask;
    mask.setBitRange(3, 10);
    EXPECT_EQ(bytesOf(mask), (Bytes{{0, 0xf8}, {1, 0x07}}));
    mask.setBitRange(10, 3);
    EXPECT_EQ(bytesOf(mask), (Bytes{{0, 0xf8}, {1, 0x07}}));
    mask.setBitRange(65534, 65534);
    EXPECT_EQ(bytesOf(mask), (Bytes{{0, 0xf8}, {1, 0x07}, {8191, 0x40}}));
}

TEST(RequesterDataMask, SetsRangesByLength) {
    RequesterDataMask mask;
    mask.setBitOffsetAndLength(8, 8);
    EXPECT_EQ(bytesOf(mask), (Bytes{{1, 0xff}}));
    mask.setBitOffsetAndLength(16, 0);
    mask.setBitOffsetAndLength(0, 0);
    mask.setBitOffsetAndLength(65535, 2);
    mask.setBitOffsetAndLength(65000, 1000);
    EXPECT_EQ(bytesOf(mask), (Bytes{{1, 0xff}}));
}

TEST(RequesterDataMask, FillsABufferAndNothingBehindIt) {
    RequesterDataMask mask;
    mask.setBitRange(3, 10);
    mask.maskIs(4, 0xaa);
    U8 buffer[5] = {9, 9, 9, 9, 9};
    mask.fillMaskToBuf(buffer, 0);
    EXPECT_EQ(buffer[0], 9u);
    mask.fillMaskToBuf(buffer, 1); // fewer bytes than entries
    EXPECT_EQ(std::vector<U8>(buffer, buffer + 5), (std::vector<U8>{0xf8, 9, 9, 9, 9}));
    mask.fillMaskToBuf(buffer, 3);
    EXPECT_EQ(std::vector<U8>(buffer, buffer + 5), (std::vector<U8>{0xf8, 0x07, 0x00, 9, 9}));
    mask.fillMaskToBuf(buffer, 4);
    EXPECT_EQ(std::vector<U8>(buffer, buffer + 5), (std::vector<U8>{0xf8, 0x07, 0x00, 0x00, 9}));
}

TEST(RequesterDataMask, OverwritesInPlace) {
    RequesterDataMask mask;
    const auto entry = mask.newMask(7, 1);
    mask.maskIs(7, 2);
    EXPECT_EQ(entry->value(), 2u);
    EXPECT_EQ(mask.masks(), 1u);
    mask.maskDelAll();
    EXPECT_EQ(mask.masks(), 0u);
    EXPECT_EQ(entry->references(), 1u);
}

TEST(RequesterDataMask, EqualsByValidAndEntriesInWhateverOrder) {
    RequesterDataMask a(true);
    RequesterDataMask b(true);
    a.maskIs(1, 1);
    a.maskIs(9, 2);
    b.maskIs(9, 2);
    b.maskIs(1, 1);
    EXPECT_TRUE(a == b);
    b.maskIs(5, 0);
    EXPECT_FALSE(a == b);
    b = a;
    b.validIs(false);
    EXPECT_TRUE(b < a);
    EXPECT_FALSE(a == b);
}

TEST(RequesterDataMask, OrdersTotally) {
    std::vector<RequesterDataMask> masks(6);
    masks[1].maskIs(2, 1);
    masks[2].maskIs(1, 1);
    masks[3].maskIs(1, 2);
    masks[4].maskIs(1, 1);
    masks[4].maskIs(2, 1);
    masks[5].validIs(true);
    for (const auto& a : masks) {
        for (const auto& b : masks) {
            EXPECT_TRUE(comparesAs(a, b, a < b, &a == &b));
            for (const auto& c : masks) EXPECT_TRUE(!(a < b && b < c) || a < c);
        }
    }
}

TEST(RequesterDataMask, CopiesItsBytes) {
    RequesterDataMask a(true);
    a.maskIs(3, 3);
    RequesterDataMask b(a);
    b.maskIs(3, 4);
    EXPECT_EQ(a.mask(3), 3u);
    a = b;
    EXPECT_EQ(a.mask(3), 4u);
}

TEST(RequesterDataMask, PrintsNoneForItsBytes) {
    RequesterDataMask mask(true);
    EXPECT_EQ(text(mask), "Value('Brixo::RequesterDataMask', ** {'valid': True, 'mask': None})");
    mask.maskIs(1, 1);
    EXPECT_EQ(text(mask), "Value('Brixo::RequesterDataMask', ** {'valid': True, 'mask': None})");
    EXPECT_EQ(text(RequesterDataMask()),
              "Value('Brixo::RequesterDataMask', ** {'valid': False, 'mask': None})");
}

TEST(RequesterDataMask, ReadsATextWithoutTheBytes) {
    EXPECT_EQ(parsed<RequesterDataMask>("Value('Brixo::RequesterDataMask', ** {'valid': true})"),
              RequesterDataMask(true));
    EXPECT_EQ(parsed<RequesterDataMask>("Value('Brixo::RequesterDataMask', ** {})"),
              RequesterDataMask());
    EXPECT_EQ(parseError<RequesterDataMask>("Value('Brixo::RequesterDataMask', ** {'x': 1})"),
              "RequesterDataMask has no such attribute: x");
    EXPECT_EQ(parseError<RequesterDataMask>("Value('Brixo::RequesterDataMask', ** {'valid': True"),
              "premature end of value type RequesterDataMask");
}

TEST(RequesterDataMaskDeathTest, CannotReadTheBytes) {
    const std::string printed = text(RequesterDataMask(true));
    EXPECT_DEATH(parsed<RequesterDataMask>(printed),
                 "assertion failed: String\\(\"This should not be used and doesn't work\"\\) == "
                 "String\\(\"\"\\)");
}

TEST(RequesterDataMask, LogsEntriesInTheMapsOrderAndAnEndMark) {
    RequesterDataMask mask(true);
    mask.maskIs(1, 0x11); // bit reversed: 0x80000000
    mask.maskIs(2, 0x22); // bit reversed: 0x40000000
    mask.maskIs(0, 0x00);
    const std::vector<U8> bytes = {1, 0, 0, 0, 0, 2, 0x22, 0, 1, 0x11, 0, 0, 0, 0};
    EXPECT_EQ(logged(mask), bytes);
    EXPECT_EQ(fromLog<RequesterDataMask>(bytes), mask);
    EXPECT_EQ(logged(RequesterDataMask()), (std::vector<U8>{0, 0, 0, 0, 0}));
}

TEST(RequesterDataMask, RefusesALogThatIsNoMask) {
    for (const std::vector<U8>& bytes :
         {std::vector<U8>{1, 0, 0, 0}, {1, 0, 0, 0, 0, 0}, {1, 0, 1, 1, 0, 0, 0, 1}, {}})
        EXPECT_THROW(fromLog<RequesterDataMask>(bytes), Vel::Exception);
}

TEST(RequesterDataMask, AgreesWithAMapOfBytes) {
    std::mt19937 random(5);
    RequesterDataMask mask;
    Bytes model;
    for (int i = 0; i < 100'000; ++i) {
        const auto index = static_cast<U16>(random() % 300 * 7);
        const auto byte = static_cast<U8>(random());
        switch (random() % 4) {
        case 0:
            mask.maskIs(index, byte);
            model[index] = byte;
            break;
        case 1:
            mask.setBitRange(index, static_cast<U16>(index + byte % 20));
            for (unsigned bit = index; bit <= index + byte % 20u; ++bit)
                model[static_cast<U16>(bit / 8)] |= static_cast<U8>(1u << bit % 8);
            break;
        case 2: ASSERT_EQ(mask.mask(index), model.contains(index) ? model[index] : 0); break;
        default:
            ASSERT_EQ(mask.masks(), model.size());
            if (random() % 5000 == 0) {
                ASSERT_EQ(bytesOf(mask), model);
                mask.maskDelAll();
                model.clear();
            }
        }
    }
    EXPECT_EQ(bytesOf(mask), model);
}

TEST(RequesterDataMask, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Brixo::RequesterDataMask"),
              "value(valid: bool)\n"
              "2 valid: bool; stored\n"
              "3 mask[U16]: U8; stored\n"
              "4 setBitRange(start: U16, end: U16)\n"
              "5 setBitOffsetAndLength(start: U16, len: U16)\n"
              "6 fillMaskToBuf(buf: Vel::BytePtr, size: U16)\n");
}

} // namespace
} // namespace Brixo
