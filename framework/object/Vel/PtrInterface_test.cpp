#include <Vel/PtrInterface.h>

#include <Vel/Ptr.h>
#include <cstring>
#include <gtest/gtest.h>

namespace Vel {
namespace {

int alive = 0;

class Thing : public PtrInterface {
public:
    Thing() { ++alive; }

    Thing(const Thing& other) : PtrInterface(other) { ++alive; }

    Thing& operator=(const Thing&) = default;

    ~Thing() override { --alive; }
};

// Takes a new reference to itself when it is told that it has none.
class Survivor : public Thing {
public:
    Ptr<Survivor>* rescuer = nullptr;
    int told = 0;

    void zeroReferencesIs(bool zero) override {
        told += zero ? 1 : 0;
        if (rescuer != nullptr) *rescuer = this;
    }
};

class LastThing final : public Thing {};

class LastSurvivor final : public Survivor {};

// Nobody may call its hook but through PtrInterface.
class Reserved final : public Thing {
public:
    static inline int ended = 0;

private:
    void handleZeroRef() override {
        ++ended;
        PtrInterface::handleZeroRef();
    }
};

U32 wordOf(const PtrInterface& object) {
    U32 word;
    std::memcpy(&word, reinterpret_cast<const char*>(&object) + sizeof(void*), sizeof(word));
    return word;
}

class BothModes : public testing::TestWithParam<bool> {
protected:
    void SetUp() override { VFPtrInterface::enableThreadSafePointers = GetParam(); }

    void TearDown() override { VFPtrInterface::enableThreadSafePointers = false; }
};

INSTANTIATE_TEST_SUITE_P(PtrInterface, BothModes, testing::Bool());

TEST_P(BothModes, TheWordBehindTheVirtualTableHoldsCountAndFlags) {
    const Ptr<Thing> thing = new Thing;
    EXPECT_EQ(wordOf(*thing), 1u);
    thing->hasNotificationActiveIs(true);
    EXPECT_EQ(wordOf(*thing), 0x20000001u);
    thing->velMarkedForDeletionIs(true);
    EXPECT_EQ(wordOf(*thing), 0xa0000001u);
    EXPECT_EQ(thing->references(), 1u);
    thing->hasNotificationActiveIs(false);
    EXPECT_EQ(wordOf(*thing), 0x80000001u);
    EXPECT_TRUE(thing->velMarkedForDeletion());
    thing->velMarkedForDeletionIs(false);
    EXPECT_EQ(wordOf(*thing), 1u);
}

TEST_P(BothModes, FlagsDoNotKeepAnObjectAlive) {
    Ptr<Thing> thing = new Thing;
    thing->hasNotificationActiveIs(true);
    thing->velMarkedForDeletionIs(true);
    EXPECT_EQ(alive, 1);
    thing = nullptr;
    EXPECT_EQ(alive, 0);
}

TEST_P(BothModes, ACopyIsBornWithoutReferencesAndFlags) {
    const Ptr<Thing> thing = new Thing;
    thing->hasNotificationActiveIs(true);
    const Ptr<Thing> copy = new Thing(*thing);
    EXPECT_EQ(wordOf(*copy), 1u);
    *copy = *thing;
    EXPECT_EQ(wordOf(*copy), 1u);
}

TEST_P(BothModes, AnObjectThatIsTakenUpAgainLivesOn) {
    Ptr<Survivor> rescuer;
    Ptr<Survivor> first = new Survivor;
    first->rescuer = &rescuer;
    first = nullptr;
    ASSERT_EQ(alive, 1);
    EXPECT_EQ(rescuer->told, 1);
    rescuer->rescuer = nullptr;
    rescuer = nullptr;
    EXPECT_EQ(alive, 0);
}

TEST_P(BothModes, ClassesThatNobodyDerivesFromEndAsOthersDo) {
    static_assert(detail::EndsPlainly<LastThing> && !detail::EndsPlainly<Thing>);
    {
        const Ptr<LastThing> thing = new LastThing;
        const Ptr<const LastThing> copy = thing;
        EXPECT_EQ(alive, 1);
    }
    EXPECT_EQ(alive, 0);

    static_assert(!detail::EndsPlainly<LastSurvivor>);
    Ptr<Survivor> rescuer;
    auto* const survivor = new LastSurvivor;
    survivor->rescuer = &rescuer;
    Ptr<LastSurvivor>{survivor} = nullptr;
    EXPECT_EQ(survivor->told, 1);
    EXPECT_EQ(survivor->references(), 1u);
    survivor->rescuer = nullptr;
    rescuer = nullptr;
    EXPECT_EQ(alive, 0);

    static_assert(!detail::EndsPlainly<Reserved>);
    const int ended = Reserved::ended;
    Ptr<Reserved>{new Reserved} = nullptr;
    EXPECT_EQ(Reserved::ended, ended + 1);
    EXPECT_EQ(alive, 0);
}

TEST(PtrInterface, AuditsNothingByItself) {
    const Ptr<Thing> thing = new Thing;
    EXPECT_EQ(thing->auditErrors(9), 0u);
    EXPECT_EQ(thing->velAuditErrors(9), 0u);
}

TEST(PtrInterface, KnowsItsType) {
    const Ptr<Thing> thing = new Thing;
    EXPECT_EQ(thing->fwkType(), PtrInterface::_fwkType());
}

} // namespace
} // namespace Vel
