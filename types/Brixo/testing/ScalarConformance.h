// ScalarConformance.h - what holds for every id of one unsigned integer. Not installed.
#pragma once

#include <Vel/testing/ValueTesting.h>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

namespace Brixo::Testing {

// All values of a narrow field; the edges and the neighbours of powers of two of a wide one.
template <class Field>
std::vector<Field> samples() {
    std::vector<Field> values;
    if constexpr (sizeof(Field) <= 2) {
        for (unsigned v = 0; v <= std::numeric_limits<Field>::max(); ++v)
            values.push_back(static_cast<Field>(v));
    } else {
        for (unsigned bit = 0; bit < 32; ++bit)
            for (const unsigned near : {0U, 1U, 2U})
                values.push_back(static_cast<Field>((Field{1} << bit) - 1 + near));
        values.push_back(0);
        values.push_back(std::numeric_limits<Field>::max());
    }
    return values;
}

// `get` reads the field, `name` is the attribute's name.
template <class Id, class Field>
void expectScalar(Field (Id::*get)() const noexcept, const char* name) {
    using namespace Vel::Testing;
    static_assert(sizeof(Id) == sizeof(Field));
    EXPECT_EQ((Id().*get)(), 0u);
    for (const Field value : samples<Field>()) {
        const Id id(value);
        ASSERT_EQ((id.*get)(), value);
        ASSERT_EQ(text(id), std::to_string(value));
        ASSERT_EQ(parsed<Id>(std::to_string(value)), id);
        std::vector<Vel::U8> bytes;
        for (std::size_t i = sizeof(Field); i-- > 0;)
            bytes.push_back(static_cast<Vel::U8>(value >> (8 * i)));
        ASSERT_EQ(logged(id), bytes);
        ASSERT_EQ(fromLog<Id>(bytes), id);
    }
    // The low bits of whatever 64-bit number stands there.
    EXPECT_EQ(parsed<Id>("-1"), Id(std::numeric_limits<Field>::max()));
    EXPECT_EQ(parsed<Id>(" 0x7fffffffffffff05"), Id(static_cast<Field>(0xffffff05)));
    EXPECT_EQ(parseError<Id>("x"), "in attribute '" + std::string(name) +
                                       "': cannot convert \"x\" at column 0 to long long");
    EXPECT_EQ(parseError<Id>("7 "), "junk at column 1 deserializing 7 ");
}

// The six operators order by the field as an unsigned number.
template <class Id, class Field>
void expectOrdered() {
    const Field values[] = {0,
                            1,
                            2,
                            127,
                            128,
                            std::numeric_limits<Field>::max() - 1,
                            std::numeric_limits<Field>::max()};
    for (const Field a : values)
        for (const Field b : values)
            EXPECT_TRUE(Vel::Testing::comparesAs(Id(a), Id(b), a < b, a == b)) << +a << " " << +b;
}

} // namespace Brixo::Testing
