#include <Vel/Entity.h>

#include <Vel/Builtin.h>
#include <Vel/VelType.h>
#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace Vel {
namespace {

class Node : public Entity {
public:
    using Entity::Entity;

    VelType* fwkType() const override {
        static const Ptr<VelType> type = [] {
            Ptr<VelType> made = new VelType("Node", nullptr, nullptr, VelTypeFlags());
            made->attrIs("slot", Builtin<unsigned>::_fwkType(), nullptr, nullptr,
                         VelAttr::AttrFlags::stored, 131);
            return made;
        }();
        return type.ptr();
    }

    std::vector<const Entity*> parents;

protected:
    void handleParent(const Ptr<Entity>& parent) override { parents.push_back(parent.ptr()); }
};

TEST(Entity, StandsAloneAtFirst) {
    const Ptr<Node> node = new Node("system");
    EXPECT_EQ(node->name(), "system");
    EXPECT_EQ(node->parent(), nullptr);
    EXPECT_EQ(node->fullName(), "system");
    EXPECT_EQ(node->uriPath(), "/system");
    EXPECT_EQ(node->parentAttrId(), 0u);
    EXPECT_EQ(node->parentAttr(), nullptr);
}

TEST(Entity, NamesItselfFromTheRootDown) {
    const Ptr<Node> root = new Node("system");
    const Ptr<Node> card = new Node("card 1/a");
    const Ptr<Node> table = new Node("t%\xff~");
    table->parentIs(card);
    card->parentIs(root);
    EXPECT_EQ(table->fullName(), "system/card 1/a/t%\xff~");
    EXPECT_EQ(table->uriPath(), "/system/card%201%2Fa/t%25%FF~");
    const Entity& constant = *table;
    EXPECT_EQ(constant.parent(), card.ptr());
}

TEST(Entity, TheTreeHoldsNoReferences) {
    const Ptr<Node> root = new Node("system");
    const Ptr<Node> child = new Node("card");
    child->parentIs(root);
    EXPECT_EQ(root->references(), 1u);
    EXPECT_EQ(child->references(), 1u);
}

TEST(Entity, AParentThatDiesLeavesItsChildrenAlone) {
    Ptr<Node> root = new Node("system");
    const Ptr<Node> a = new Node("a");
    const Ptr<Node> b = new Node("b");
    a->parentIs(root);
    b->parentIs(root);
    root = nullptr;
    EXPECT_EQ(a->parent(), nullptr);
    EXPECT_EQ(b->parent(), nullptr);
    EXPECT_EQ(a->fullName(), "a");
}

TEST(Entity, AChildThatDiesLeavesItsParent) {
    const Ptr<Node> root = new Node("system");
    const Ptr<Node> a = new Node("a");
    Ptr<Node> b = new Node("b");
    const Ptr<Node> c = new Node("c");
    for (const Ptr<Node>& child : {a, b, c}) child->parentIs(root);
    b = nullptr;
    EXPECT_EQ(root->child("a"), a.ptr());
    EXPECT_EQ(root->child("b"), nullptr);
    EXPECT_EQ(root->child("c"), c.ptr());
}

// As many as no walk over all siblings for each of them would ever end with.
TEST(Entity, ManySiblingsLeaveInAnyOrder) {
    constexpr std::size_t siblings = 200'000;
    const unsigned seed = 20261122;
    SCOPED_TRACE("seed " + std::to_string(seed));
    const std::vector<std::function<void(std::vector<Ptr<Entity>>&)>> orders = {
        [](auto&) {}, [](auto& all) { std::ranges::reverse(all); },
        [](auto& all) { std::ranges::shuffle(all, std::mt19937(seed)); }};
    for (const auto& order : orders) {
        const Ptr<Entity> root = new Entity("system");
        const Ptr<Entity> other = new Entity("other");
        std::vector<Ptr<Entity>> all(siblings);
        for (Ptr<Entity>& child : all) {
            child = new Entity("card");
            child->parentIs(root);
        }
        EXPECT_EQ(root->auditErrors(9), 0u);
        order(all);
        all.resize(siblings / 2);
        EXPECT_EQ(root->auditErrors(9), 0u);
        for (std::size_t moved = 0; moved < siblings / 4; ++moved) all[moved]->parentIs(other);
        EXPECT_EQ(root->auditErrors(9), 0u);
        EXPECT_EQ(other->auditErrors(9), 0u);
        EXPECT_EQ(all.front()->auditErrors(9), 0u);
        EXPECT_EQ(all.back()->auditErrors(9), 0u);
        all.clear();
        EXPECT_EQ(root->child("card"), nullptr);
        EXPECT_EQ(other->child("card"), nullptr);
        EXPECT_EQ(root->auditErrors(9), 0u);
    }
}

TEST(Entity, HandleParentIsToldOfEachChange) {
    const Ptr<Node> first = new Node("first");
    const Ptr<Node> second = new Node("second");
    const Ptr<Node> child = new Node("child");
    child->parentIs(first);
    child->parentIs(first);
    child->parentIs(second);
    child->parentIs(nullptr);
    EXPECT_EQ(child->parents, (std::vector<const Entity*>{first.ptr(), second.ptr(), nullptr}));
    EXPECT_EQ(first->child("child"), nullptr);
    EXPECT_EQ(second->child("child"), nullptr);
}

TEST(Entity, ParentAttrIsTheAttributeOfTheParentsType) {
    const Ptr<Node> root = new Node("system");
    const Ptr<Node> child = new Node("card");
    child->parentIs(root);
    child->parentAttrIdIs(131);
    EXPECT_EQ(child->parentAttrId(), 131u);
    ASSERT_NE(child->parentAttr(), nullptr);
    EXPECT_EQ(child->parentAttr()->name(), "slot");
    child->parentAttrIdIs(132);
    EXPECT_EQ(child->parentAttr(), nullptr);
}

TEST(Entity, FindsAPath) {
    const Ptr<Node> root = new Node("system");
    const Ptr<Node> card = new Node("a b");
    const Ptr<Node> table = new Node("x/y");
    card->parentIs(root);
    table->parentIs(card);
    for (const Ptr<Node>& node : {root, card, table})
        EXPECT_EQ(root->find(node->uriPath().view()), node.ptr()) << node->uriPath().charPtr();
    for (const char* path : {"", "/", "system", "/syste", "/system2", "/system/", "/system/a b",
                             "/system/a%20b/x/y", "/system/a%20b/x%2Fy/"})
        EXPECT_EQ(root->find(path), nullptr) << path;
}

TEST(Entity, TheRootIsHeld) {
    Ptr<Node> root = new Node("system");
    Entity::rootIs(root);
    EXPECT_EQ(root->references(), 2u);
    EXPECT_EQ(Entity::root(), root.ptr());
    Entity::rootIs(nullptr);
    EXPECT_EQ(root->references(), 1u);
    EXPECT_EQ(Entity::root(), nullptr);
}

TEST(EntityDeathTest, RefusesACycle) {
    const Ptr<Node> root = new Node("system");
    const Ptr<Node> child = new Node("card");
    child->parentIs(root);
    EXPECT_DEATH(root->parentIs(child), "Entity\\.cpp:[0-9]+: assertion failed: ancestor != this ");
    EXPECT_DEATH(root->parentIs(root), "Entity\\.cpp:[0-9]+: assertion failed: ancestor != this ");
}

} // namespace
} // namespace Vel
