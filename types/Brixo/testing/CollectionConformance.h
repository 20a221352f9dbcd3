// CollectionConformance.h - what every keyed collection attribute must do, as a typed test suite.
// Not installed.
//
//     struct ErrorCode {                                  // how the suite reaches the attribute
//         using Owner = DalProcessingStatus;
//         static Vel::Ptr<Owner> owner();
//         static Vel::U64 key(Vel::U32 n);                // the nth key, n below 3000
//         static int value(Vel::U32 n, Vel::U32 variant); // another for each variant
//         static const auto& all(const Owner& owner);     // the KeyedCollection
//         static auto get(const Owner& owner, const auto& key);
//         static auto create(Owner& owner, Vel::U32 n, Vel::U32 variant);
//         static void set(Owner& owner, Vel::U32 n, Vel::U32 variant);
//         static void del(Owner& owner, const auto& key);
//         static void del(Owner& owner, auto& iterator);
//         static void delAll(Owner& owner);
//         static Vel::U32 count(const Owner& owner);
//     };
//     INSTANTIATE_TYPED_TEST_SUITE_P(ErrorCode, CollectionConformance, ErrorCode);
#pragma once

#include <Vel/Integers.h>
#include <Vel/Ptr.h>
#include <Vel/VFPtrInterface.h>
#include <Vel/testing/LiveObjects.h>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>
#include <type_traits>

namespace Brixo::Testing {

template <class Attribute>
class CollectionConformance : public ::testing::Test {
    const Vel::Testing::LiveObjects live;

protected:
    using Owner = typename Attribute::Owner;
    using Collection = std::remove_cvref_t<decltype(Attribute::all(std::declval<Owner&>()))>;
    using Value = typename Collection::Value;

    void TearDown() override { Vel::VFPtrInterface::enableThreadSafePointers = false; }

    Vel::Ptr<Owner> owner = Attribute::owner();
};

TYPED_TEST_SUITE_P(CollectionConformance);

TYPED_TEST_P(CollectionConformance, IsEmptyAtFirst) {
    EXPECT_EQ(TypeParam::count(*this->owner), 0u);
    EXPECT_EQ(TypeParam::all(*this->owner).first(), nullptr);
    EXPECT_EQ(TypeParam::get(*this->owner, TypeParam::key(1)), typename TestFixture::Value());
}

TYPED_TEST_P(CollectionConformance, OverwritingKeepsTheNode) {
    TypeParam::set(*this->owner, 1, 0);
    const auto* const node = TypeParam::all(*this->owner).find(TypeParam::key(1));
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->references(), 1u);
    TypeParam::set(*this->owner, 1, 1);
    EXPECT_EQ(TypeParam::count(*this->owner), 1u);
    EXPECT_EQ(TypeParam::all(*this->owner).find(TypeParam::key(1)), node);
    EXPECT_EQ(node->references(), 1u);
    EXPECT_EQ(TypeParam::get(*this->owner, TypeParam::key(1)), TypeParam::value(1, 1));
    EXPECT_NE(TypeParam::value(1, 0), TypeParam::value(1, 1));
}

TYPED_TEST_P(CollectionConformance, CreatingReturnsTheNode) {
    const auto node = TypeParam::create(*this->owner, 2, 3);
    EXPECT_EQ(node->references(), 2u);
    EXPECT_EQ(TypeParam::all(*this->owner).find(TypeParam::key(2)), node.ptr());
    EXPECT_EQ(node->value(), TypeParam::value(2, 3));
    TypeParam::del(*this->owner, TypeParam::key(2));
    EXPECT_EQ(node->references(), 1u);
    EXPECT_EQ(node->value(), TypeParam::value(2, 3)) << "what others hold lives on";
}

TYPED_TEST_P(CollectionConformance, DeletingAnAbsentKeyChangesNothing) {
    TypeParam::set(*this->owner, 1, 0);
    TypeParam::del(*this->owner, TypeParam::key(2));
    EXPECT_EQ(TypeParam::count(*this->owner), 1u);
    EXPECT_EQ(TypeParam::get(*this->owner, TypeParam::key(2)), typename TestFixture::Value());
}

TYPED_TEST_P(CollectionConformance, DeletesThroughAnIterator) {
    for (Vel::U32 n = 0; n < 100; ++n) TypeParam::set(*this->owner, n, 0);
    auto position = TypeParam::all(*this->owner).begin();
    for (Vel::U32 deleted = 1; position; ++deleted) {
        const auto key = position.key();
        TypeParam::del(*this->owner, position);
        EXPECT_EQ(TypeParam::all(*this->owner).find(key), nullptr);
        ASSERT_EQ(TypeParam::count(*this->owner), 100 - deleted);
    }
    EXPECT_EQ(TypeParam::count(*this->owner), 0u);
}

TYPED_TEST_P(CollectionConformance, DeletesAll) {
    for (Vel::U32 n = 0; n < 1000; ++n) TypeParam::set(*this->owner, n, 0);
    TypeParam::delAll(*this->owner);
    EXPECT_EQ(TypeParam::count(*this->owner), 0u);
    TypeParam::delAll(*this->owner);
    TypeParam::set(*this->owner, 5, 0);
    EXPECT_EQ(TypeParam::count(*this->owner), 1u);
}

TYPED_TEST_P(CollectionConformance, AgreesWithAModelInBothCountingModes) {
    for (const bool isAtomic : {false, true}) {
        Vel::VFPtrInterface::enableThreadSafePointers = isAtomic;
        const unsigned seed = 20261121;
        SCOPED_TRACE("seed " + std::to_string(seed) + (isAtomic ? ", atomic" : ""));
        std::mt19937 random(seed);
        const Vel::Ptr<typename TypeParam::Owner> fresh = TypeParam::owner();
        std::map<Vel::U32, Vel::U32> model; // number to variant
        for (int step = 0; step < 100'000; ++step) {
            const auto n = static_cast<Vel::U32>(random() % 3000);
            const auto variant = static_cast<Vel::U32>(random() % 8);
            if (random() % 8 < (step / 20'000 % 2 == 0 ? 5U : 2U)) {
                TypeParam::set(*fresh, n, variant);
                model[n] = variant;
            } else if (random() % 2 == 0) {
                TypeParam::del(*fresh, TypeParam::key(n));
                model.erase(n);
            } else {
                const auto found = model.find(n);
                const auto expected = found != model.end() ? TypeParam::value(n, found->second)
                                                           : typename TestFixture::Value();
                ASSERT_EQ(TypeParam::get(*fresh, TypeParam::key(n)), expected);
            }
            ASSERT_EQ(TypeParam::count(*fresh), model.size());
        }
        EXPECT_EQ(TypeParam::all(*fresh).auditErrors(9), 0u);
        Vel::U32 walked = 0;
        for (auto at = TypeParam::all(*fresh).begin(); at; ++at) ++walked;
        EXPECT_EQ(walked, model.size());
        for (const auto& [n, variant] : model)
            ASSERT_EQ(TypeParam::get(*fresh, TypeParam::key(n)), TypeParam::value(n, variant));
    }
}

REGISTER_TYPED_TEST_SUITE_P(CollectionConformance, IsEmptyAtFirst, OverwritingKeepsTheNode,
                            CreatingReturnsTheNode, DeletingAnAbsentKeyChangesNothing,
                            DeletesThroughAnIterator, DeletesAll,
                            AgreesWithAModelInBothCountingModes);

} // namespace Brixo::Testing

// An attribute's functions by its name: BRIXO_COLLECTION_FUNCTIONS(errorCode, ErrorCode).
#define BRIXO_COLLECTION_FUNCTIONS(attribute, Attribute)                                           \
    static const auto& all(const Owner& owner) { return owner.attribute(); }                       \
    template <class K>                                                                             \
    static auto get(const Owner& owner, const K& key) {                                            \
        return owner.attribute(key);                                                               \
    }                                                                                              \
    template <class K>                                                                             \
    static void del(Owner& owner, const K& key) {                                                  \
        owner.attribute##Del(key);                                                                 \
    }                                                                                              \
    static void del(Owner& owner, Owner::Attribute::Iterator& position) {                          \
        owner.attribute##Del(position);                                                            \
    }                                                                                              \
    static void delAll(Owner& owner) { owner.attribute##DelAll(); }                                \
    static Vel::U32 count(const Owner& owner) { return owner.attribute##s(); }
