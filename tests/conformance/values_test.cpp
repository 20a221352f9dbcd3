// What holds for every value type and every enumeration of the modules' lists: nothing here names
// one. Values of a type are what its log's reader makes of patterns of bytes.
#include <Brixo/testing/EveryType.h>
#include <Vel/GenericIf.h>
#include <Vel/MemoryConnection.h>
#include <Vel/NboAttrLog.h>
#include <Vel/StreamBogon.h>
#include <Vel/testing/ValueTesting.h>
#include <Vel/value/EnumFunctions.h>
#include <algorithm>
#include <concepts>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace Brixo {
namespace {

using Bytes = std::vector<Vel::U8>;

// As many bytes as a default value has in the log, of each pattern.
std::vector<Bytes> patterns(std::size_t size) {
    std::vector<Bytes> all;
    for (const Vel::U8 byte : Bytes{0x00, 0x01, 0x02, 0x7f, 0x80, 0xff}) {
        all.emplace_back(size, byte);
        Bytes lastAlone(size);
        if (size != 0) lastAlone.back() = byte;
        all.push_back(lastAlone);
        Bytes firstAlone(size);
        if (size != 0) firstAlone.front() = byte;
        all.push_back(firstAlone);
    }
    return all;
}

template <class T>
Bytes bytesOf(const T& value) {
    if constexpr (std::is_enum_v<T>) {
        const auto number = static_cast<Vel::U32>(value);
        return {static_cast<Vel::U8>(number >> 24), static_cast<Vel::U8>(number >> 16),
                static_cast<Vel::U8>(number >> 8), static_cast<Vel::U8>(number)};
    } else {
        return Vel::Testing::logged(value);
    }
}

template <class T>
T valueOf(const Bytes& bytes) {
    if constexpr (std::is_enum_v<T>)
        return static_cast<T>(Vel::U32{bytes[0]} << 24 | Vel::U32{bytes[1]} << 16 |
                              Vel::U32{bytes[2]} << 8 | bytes[3]);
    else
        return Vel::Testing::fromLog<T>(bytes);
}

// Each with its bytes in the log, the default value first, none twice.
template <class T>
std::vector<std::pair<T, Bytes>> samples() {
    std::vector<std::pair<T, Bytes>> all = {{T(), bytesOf(T())}};
    for (const Bytes& bytes : patterns(bytesOf(T()).size())) {
        const bool isNew = std::none_of(all.begin(), all.end(),
                                        [&bytes](const auto& one) { return one.second == bytes; });
        try {
            if (isNew) all.emplace_back(valueOf<T>(bytes), bytes);
        } catch (const Vel::Exception&) { // no such value: a truth value of 2
        }
    }
    return all;
}

// A value with a collection inside has a hash() that does not compile, unless its schema says a
// rule.
template <class T>
constexpr bool isHashed() {
    bool isNamed = false;
    if constexpr (!std::is_enum_v<T>) {
        if constexpr (Vel::schemaOf<T>.form == Vel::Form::scalar) return requires(const T& value) {
                value.hash();
            };
        Vel::forEachAttribute<T>(
            [&isNamed](const auto& attribute) { isNamed = isNamed || attribute.name == "hash"; });
    }
    return isNamed;
}

template <class T>
class EveryValue : public testing::Test {
protected:
    const std::vector<std::pair<T, Bytes>> values = samples<T>();
};

struct NameOfType {
    template <class T>
    static std::string GetName(int) {
        return std::string(Vel::qualifiedNameOf<T>());
    }
};

TYPED_TEST_SUITE(EveryValue, Testing::EveryValue::As<testing::Types>, NameOfType);

TYPED_TEST(EveryValue, HasSeveralValues) { EXPECT_GE(this->values.size(), 2u); }

TYPED_TEST(EveryValue, IsWrittenToTheLogAsItWasRead) {
    for (const auto& [value, bytes] : this->values) EXPECT_EQ(bytesOf(value), bytes);
}

TYPED_TEST(EveryValue, IsEqualToItsCopyAndToNoOther) {
    for (const auto& [a, bytesOfA] : this->values)
        for (const auto& [b, bytesOfB] : this->values) {
            const TypeParam copy = a;
            EXPECT_EQ(copy == b, bytesOfA == bytesOfB);
            EXPECT_EQ(copy != b, bytesOfA != bytesOfB);
        }
}

TYPED_TEST(EveryValue, HasATotalOrderIfAny) {
    if constexpr (std::totally_ordered<TypeParam>)
        for (const auto& [a, bytesOfA] : this->values)
            for (const auto& [b, bytesOfB] : this->values) {
                EXPECT_TRUE(Vel::Testing::comparesAs(a, b, a < b, bytesOfA == bytesOfB));
                EXPECT_EQ((a < b) + (b < a) + (a == b), 1);
                for (const auto& [c, bytesOfC] : this->values)
                    if (a < b && b < c) {
                        EXPECT_LT(a, c);
                    }
            }
}

TYPED_TEST(EveryValue, EqualValuesHashAlike) {
    if constexpr (isHashed<TypeParam>())
        for (const auto& [value, bytes] : this->values) {
            const TypeParam copy = valueOf<TypeParam>(bytes);
            EXPECT_EQ(copy.hash(), value.hash());
            EXPECT_EQ(std::hash<TypeParam>()(copy), value.hash());
        }
}

TYPED_TEST(EveryValue, PrintsWhatReflectionPrintsAndReads) {
    Vel::VelType& type = *Vel::typeOf<TypeParam>();
    for (const auto& [value, bytes] : this->values) {
        const std::string text(valueToStrep(value).view());
        const Vel::Ptr<Vel::GenericIf> adapter = type.genericIf(&value, true);
        ASSERT_TRUE(adapter);
        EXPECT_EQ(adapter->type(), &type);
        EXPECT_EQ(adapter->strRep().view(), text);
        // A collection prints as None, and an undeclared number as 'Command(9)'; neither is read.
        const bool isReadBack =
            text.find("None") == std::string::npos && text.find(")'") == std::string::npos;
        if (!isReadBack) continue;
        const Vel::Ptr<Vel::GenericIf> read = type.genericIf(Vel::String8(text), true);
        EXPECT_EQ(*static_cast<const TypeParam*>(read->voidPtr(&type)), value) << text;
    }
}

} // namespace
} // namespace Brixo
