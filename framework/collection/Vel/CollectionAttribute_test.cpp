#include <Vel/CollectionAttribute.h>

#include <Vel/testing/LiveObjects.h>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>

namespace Vel {
namespace {

struct Endpoint {
    U64 id = 0;
    U32 load = 0;

    U64 number() const noexcept { return id; }

    bool operator==(const Endpoint&) const = default;
};

class Table {
public:
    VEL_COLLECTION(, weight, Weight, U16, U32);
    VEL_COLLECTION(, label, Label, U64, std::string);
    VEL_COLLECTION_BY(, peer, Peer, U64, Endpoint, number);

private:
    Weight weight_;
    Label label_;
    Peer peer_;
};

TEST(CollectionAttribute, SmallPlainArgumentsArePassedAsTheyAreAndOthersByReference) {
    static_assert(std::is_same_v<Argument<bool>, bool>);
    static_assert(std::is_same_v<Argument<U32>, U32>);
    static_assert(std::is_same_v<Argument<U64>, const U64&>);
    static_assert(std::is_same_v<Argument<std::string>, const std::string&>);
    static_assert(std::is_same_v<decltype(&Table::weightIs), void (Table::*)(U16, U32)>);
    static_assert(
        std::is_same_v<decltype(&Table::labelIs), void (Table::*)(const U64&, const std::string&)>);
    static_assert(std::is_same_v<decltype(&Table::peerIs), void (Table::*)(const Endpoint&)>);
}

TEST(CollectionAttribute, OverwritesAMemberOrMakesOne) {
    const Testing::LiveObjects live;
    Table table;
    EXPECT_EQ(table.weight(7), 0u);
    const Ptr<Table::VelWeight> made = table.newWeight(7, 70);
    EXPECT_EQ(table.weight(7), 70u);
    table.weightIs(7, 71);
    table.weightIs(8, 80);
    EXPECT_EQ(made->value(), 71u);
    EXPECT_EQ(table.weights(), 2u);
    std::string walked;
    for (const auto& [key, value] : table.weight())
        walked += std::to_string(key) + "=" + std::to_string(value) + " ";
    EXPECT_EQ(walked, "8=80 7=71 ") << "in the map's order";
}

TEST(CollectionAttribute, RemovesByKeyByPositionAndAltogether) {
    Table table;
    for (U16 key = 1; key <= 4; ++key) table.weightIs(key, key);
    table.weightDel(9);
    EXPECT_EQ(table.weights(), 4u);
    table.weightDel(3);
    EXPECT_EQ(table.weight(3), 0u);
    Table::Weight::Iterator first = table.weight().begin();
    const U16 removed = first.key();
    table.weightDel(first);
    EXPECT_EQ(table.weight(removed), 0u);
    EXPECT_EQ(table.weights(), 2u);
    EXPECT_EQ(first.key(), table.weight().begin().key()) << "it went on";
    table.weightNotify(1);
    EXPECT_EQ(table.weights(), 2u);
    table.weightDelAll();
    EXPECT_EQ(table.weights(), 0u);
}

TEST(CollectionAttribute, TakesTheKeyFromAValueThatHasIt) {
    Table table;
    const auto made = table.newPeer({.id = 5, .load = 1});
    table.peerIs({.id = 5, .load = 2});
    table.peerIs({.id = 6, .load = 3});
    EXPECT_EQ(table.peers(), 2u);
    EXPECT_EQ(made->value(), table.peer(5));
    EXPECT_EQ(table.peer(5).load, 2u);
    EXPECT_EQ(table.peer(7), Endpoint());
    table.peerDel(5);
    EXPECT_EQ(table.peers(), 1u);
}

} // namespace
} // namespace Vel
