#include <Vel/BaseRefCollection.h>

#include <Vel/Entity.h>
#include <gtest/gtest.h>

namespace Vel {
namespace {

using Entities = BaseRefCollection<Entity>;

Entities named(std::initializer_list<const char*> names) {
    Entities collection;
    for (const char* name : names) collection.memberIs(new Entity(name));
    return collection;
}

String8 shown(const Entities& collection) {
    String8 text;
    for (const Ptr<Entity>& member : collection) text += member->name();
    return text;
}

TEST(BaseRefCollection, KeepsTheOrderOfItsMembers) {
    const Entities collection = named({"a", "b", "c"});
    EXPECT_EQ(collection.members(), 3u);
    EXPECT_EQ(shown(collection), "abc");
}

TEST(BaseRefCollection, HoldsOneReferenceAMember) {
    const Ptr<Entity> member = new Entity("a");
    Entities collection;
    collection.memberIs(member);
    collection.memberIs(member);
    EXPECT_EQ(member->references(), 3u);
    const Entities copy = collection;
    EXPECT_EQ(member->references(), 5u);
    collection.del(collection.iterator());
    EXPECT_EQ(member->references(), 4u);
    collection.deleteAll();
    EXPECT_EQ(member->references(), 3u);
    EXPECT_EQ(collection.members(), 0u);
}

TEST(BaseRefCollection, AnIteratorStandsOnWhatComesBehindADeletedMember) {
    Entities collection = named({"a", "b", "c"});
    Entities::Iterator it = collection.iterator();
    ++it;
    collection.del(it);
    EXPECT_EQ(it->name(), "c");
    collection.del(it);
    EXPECT_FALSE(it);
    EXPECT_EQ(shown(collection), "a");
}

TEST(BaseRefCollection, ItsTextIsTheListOfItsMembers) {
    EXPECT_EQ(valueToStrep(Entities()), "[]");
    Entities collection = named({"a", "b c"});
    collection.memberIs(nullptr);
    EXPECT_EQ(valueToStrep(collection),
              "[Ptr('Vel::Entity', '/a'), Ptr('Vel::Entity', '/b%20c'), None]");
}

} // namespace
} // namespace Vel
