#include <Vel/ListRaw.h>

#include <Vel/PtrInterface.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace Vel {
namespace {

class Item : public PtrInterface {
public:
    explicit Item(int itsNumber) : number(itsNumber) {}

    int number;
};

using List = ListRaw<Item>;

class ListRawTest : public testing::Test {
protected:
    ListRawTest() {
        for (int number = 0; number < 4; ++number) items.push_back(new Item(number));
    }

    void pushAll() {
        for (const Ptr<Item>& item : items) list.push(item.ptr());
    }

    std::string shown() const {
        std::string text;
        for (List::ConstIterator it = list.iterator(); it; ++it) text += std::to_string(it->number);
        return text;
    }

    static std::string shown(const List::Pass& pass) {
        std::string text;
        for (const Item* item : pass) text += item != nullptr ? std::to_string(item->number) : "-";
        EXPECT_EQ(pass.size(), text.size());
        return text;
    }

    std::vector<Ptr<Item>> items;
    List list;
};

TEST_F(ListRawTest, KeepsTheOrderAndCountsNobody) {
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(shown(), "");
    pushAll();
    EXPECT_EQ(list.size(), 4u);
    EXPECT_EQ(shown(), "0123");
    EXPECT_TRUE(list.has(items[2].ptr()));
    for (const Ptr<Item>& item : items) EXPECT_EQ(item->references(), 1u);
}

TEST_F(ListRawTest, RemovesWhoIsThere) {
    list.del(items[0].ptr());
    pushAll();
    list.del(items[1].ptr());
    list.del(items[1].ptr());
    EXPECT_EQ(shown(), "023");
    EXPECT_FALSE(list.has(items[1].ptr()));
    list.deleteAll();
    EXPECT_EQ(shown(), "");
    EXPECT_TRUE(list.empty());
    list.deleteAll();
}

TEST_F(ListRawTest, AnIteratorRemovesWhatItStandsOn) {
    pushAll();
    List::Iterator it = list.iterator();
    ++it;
    it.del();
    EXPECT_EQ(it->number, 2);
    it.del();
    it.del();
    EXPECT_FALSE(it);
    EXPECT_EQ(it.ptr(), nullptr);
    EXPECT_EQ(shown(), "0");
}

TEST_F(ListRawTest, APassSeesTheListAsItStood) {
    pushAll();
    EXPECT_FALSE(list.isInPass());
    {
        const List::Pass pass(list);
        EXPECT_TRUE(list.isInPass());
        list.del(items[0].ptr());
        list.push(items[0].ptr());
        EXPECT_EQ(shown(pass), "0123");
        EXPECT_EQ(shown(), "1230");
    }
    EXPECT_FALSE(list.isInPass());
    EXPECT_EQ(shown(), "1230");
}

TEST_F(ListRawTest, TheOutermostPassKeepsWhoIsRemoved) {
    pushAll();
    {
        const List::Pass outer(list);
        {
            const List::Pass inner(list);
            list.del(items[3].ptr());
            EXPECT_EQ(items[3]->references(), 2u);
            EXPECT_EQ(shown(inner), "0123");
        }
        EXPECT_EQ(items[3]->references(), 2u);
        EXPECT_EQ(shown(outer), "0123");
    }
    EXPECT_EQ(items[3]->references(), 1u);
}

TEST_F(ListRawTest, NoPassVisitsWhoIsForgotten) {
    pushAll();
    const List::Pass outer(list);
    list.push(items[0].ptr());
    list.del(items[3].ptr());
    const List::Pass inner(list);
    list.forget(items[1].ptr());
    EXPECT_EQ(shown(outer), "0-23");
    EXPECT_EQ(shown(inner), "0-20");
    EXPECT_EQ(shown(), "020");
}

TEST(ListRawDeathTest, DoesNotDieDuringAPass) {
    Item item(1);
    auto list = std::make_unique<List>();
    list->push(&item);
    const List::Pass pass(*list);
    EXPECT_DEATH(list.reset(), "ListRaw\\.h:[0-9]+: assertion failed: pass_ == nullptr ");
}

} // namespace
} // namespace Vel
