#include <Vel/LinkedQueue.h>

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace Vel {
namespace {

int alive = 0;

class Item : public PtrInterface {
public:
    explicit Item(int itsNumber) : number(itsNumber) { ++alive; }

    ~Item() override { --alive; }

    int number;
};

using Queue = LinkedQueue<LinkedQueueEntry<Item>, Item>;

std::string shown(const Queue& queue) {
    std::string text;
    for (const Ptr<Item>& item : queue) text += std::to_string(item->number) + " ";
    return text;
}

Queue counted(int last) {
    Queue queue;
    for (int number = 1; number <= last; ++number) queue.push(new Item(number));
    return queue;
}

class LinkedQueueTest : public testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(alive, 0); }
};

TEST_F(LinkedQueueTest, KeepsTheOrderOfItsMembers) {
    const Queue queue = counted(4);
    EXPECT_EQ(shown(queue), "1 2 3 4 ");
    EXPECT_EQ(queue.members(), 4u);
    EXPECT_FALSE(queue.empty());
    EXPECT_TRUE(Queue().empty());
    EXPECT_EQ(queue.iterator()->number, 1);
}

TEST_F(LinkedQueueTest, HoldsOneReferenceAMember) {
    const Ptr<Item> item = new Item(7);
    Queue queue;
    queue.push(item);
    queue.push(item);
    EXPECT_EQ(item->references(), 3u);
    Queue copy = queue;
    EXPECT_EQ(item->references(), 5u);
    queue.deleteAll();
    EXPECT_EQ(item->references(), 3u);
    copy = queue;
    EXPECT_EQ(item->references(), 1u);
}

TEST_F(LinkedQueueTest, CopiesAndAssigns) {
    Queue queue = counted(3);
    const Queue copy = queue;
    queue.push(new Item(4));
    EXPECT_EQ(shown(copy), "1 2 3 ");
    Queue other = counted(1);
    other = queue;
    EXPECT_EQ(shown(other), "1 2 3 4 ");
    const Queue& alias = other;
    other = alias;
    EXPECT_EQ(shown(other), "1 2 3 4 ");
    other.push(new Item(5));
    EXPECT_EQ(shown(other), "1 2 3 4 5 ");
    EXPECT_EQ(shown(queue), "1 2 3 4 ");
}

TEST_F(LinkedQueueTest, AnIteratorGoesOnFromADeletedMember) {
    Queue queue = counted(6);
    Queue::Iterator it = queue.iterator();
    ++it;
    Queue::Iterator doomed = it;
    for (int count = 0; count < 3; ++count) {
        Queue::Iterator following = doomed;
        ++following;
        queue.del(doomed);
        doomed = following;
    }
    EXPECT_EQ(shown(queue), "1 5 6 ");
    EXPECT_EQ(it->number, 2) << "the iterator keeps what it stands on";
    ++it;
    EXPECT_EQ(it->number, 5);
}

TEST_F(LinkedQueueTest, DeletingTwiceChangesNothing) {
    Queue queue = counted(2);
    const Queue::Iterator it = queue.iterator();
    queue.del(it);
    queue.del(it);
    queue.del(Queue::Iterator());
    EXPECT_EQ(shown(queue), "2 ");
    EXPECT_EQ(queue.members(), 1u);
}

TEST_F(LinkedQueueTest, IteratorsSurviveTheQueue) {
    Queue::Iterator it;
    {
        const Queue queue = counted(3);
        it = queue.iterator();
    }
    EXPECT_EQ(it->number, 1);
    EXPECT_EQ(alive, 3) << "the entry keeps those behind it";
    ++it;
    EXPECT_FALSE(it);
    EXPECT_EQ(alive, 0);
}

TEST_F(LinkedQueueTest, AppendsAreVisited) {
    Queue queue = counted(1);
    std::string seen;
    for (Queue::Iterator it = queue.iterator(); it; ++it) {
        seen += std::to_string(it->number) + " ";
        if (it->number < 4) queue.push(new Item(it->number + 1));
    }
    EXPECT_EQ(seen, "1 2 3 4 ");
}

TEST_F(LinkedQueueTest, ALongQueueNeedsNoDeepStack) {
    Queue::Iterator it;
    {
        const Queue queue = counted(300000);
        it = queue.iterator();
    }
    it = Queue::Iterator();
    EXPECT_EQ(alive, 0);
}

} // namespace
} // namespace Vel
