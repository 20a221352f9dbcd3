#include <Brixo/TargetMask.h>

#include <Vel/Any.h>
#include <Vel/ReflectionException.h>
#include <Vel/testing/AssertionTesting.h>
#include <Vel/testing/Registered.h>
#include <Vel/testing/ValueTesting.h>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

namespace Brixo {
namespace {

using namespace Vel::Testing;
using Vel::U64;
using Vel::U8;

constexpr TargetId nullTarget(TargetId::null());
constexpr TargetId anyTarget(TargetId::anyTarget());
constexpr TargetId allTargets(TargetId::allTargets());

const auto readOutOfRange =
    assertionFailed("TargetMask.cpp", "target.value() < TargetId::max()",
                    "bool Brixo::TargetMask::targetId(Brixo::TargetId) const");
const auto setOutOfRange =
    assertionFailed("TargetMask.cpp", "target.value() < TargetId::max()",
                    "void Brixo::TargetMask::targetIdIs(Brixo::TargetId, bool)");
const auto aliasNotAlone = assertionFailed(
    "TargetMask.cpp", "!target.alias() || (val && (targets() == 0)) || (!val && (targets() == 1))",
    "void Brixo::TargetMask::targetIdIs(Brixo::TargetId, bool)");
const auto aliasNotOnly = assertionFailed("TargetMask.cpp", "!target.alias() || (targets() == 1)",
                                          "bool Brixo::TargetMask::targetIdDel(Brixo::TargetId)");

TEST(TargetMask, IsEmptyByDefault) {
    EXPECT_EQ(TargetMask().value(), 0u);
    EXPECT_EQ(TargetMask().targets(), 0u);
    EXPECT_EQ(TargetMask().nextTargetId(nullTarget), nullTarget);
}

TEST(TargetMask, AddsAndRemovesTargets) {
    TargetMask mask;
    mask.targetIdIs(TargetId(0), true);
    mask.targetIdIs(TargetId(61), true);
    EXPECT_EQ(mask.value(), 0x2000000000000001u);
    EXPECT_EQ(mask.targets(), 2u);
    EXPECT_TRUE(mask.targetId(TargetId(61)));
    EXPECT_FALSE(mask.targetId(TargetId(60)));
    EXPECT_FALSE(mask.targetId(anyTarget)) << "reading asks for no alias";
    EXPECT_TRUE(mask.targetIdDel(TargetId(61)));
    EXPECT_FALSE(mask.targetIdDel(TargetId(61)));
    EXPECT_EQ(mask.value(), 1u);
}

TEST(TargetMask, SettingATargetToFalseLeavesItSet) {
    TargetMask mask;
    mask.targetIdIs(TargetId(5), false);
    EXPECT_EQ(mask.value(), 0x20u);
    mask.targetIdIs(TargetId(5), false);
    EXPECT_EQ(mask.value(), 0x20u);
}

TEST(TargetMask, AnAliasIsSetInAnEmptyMaskAlone) {
    TargetMask mask;
    mask.targetIdIs(anyTarget, true);
    EXPECT_EQ(mask.value(), 0x4000000000000000u);
    mask.targetIdIs(TargetId(3), true);
    EXPECT_EQ(mask.value(), 0x4000000000000008u) << "an ordinary target is not looked at";
    EXPECT_DEATH(mask.targetIdIs(allTargets, true), aliasNotAlone);
    TargetMask one(1);
    EXPECT_DEATH(one.targetIdIs(anyTarget, true), aliasNotAlone);
}

TEST(TargetMask, AnAliasIsSetToFalseInAMaskOfOne) {
    TargetMask mask(0x20);
    mask.targetIdIs(anyTarget, false);
    EXPECT_EQ(mask.value(), 0x4000000000000020u);
    EXPECT_DEATH(mask.targetIdIs(anyTarget, false), aliasNotAlone);
    TargetMask empty;
    EXPECT_DEATH(empty.targetIdIs(allTargets, false), aliasNotAlone);
    TargetMask alias(0x8000000000000000u);
    alias.targetIdIs(allTargets, false);
    EXPECT_EQ(alias.value(), 0x8000000000000000u);
}

TEST(TargetMask, AnAliasIsRemovedFromAMaskOfOne) {
    TargetMask alias(0x8000000000000000u);
    EXPECT_TRUE(alias.targetIdDel(allTargets));
    EXPECT_EQ(alias.value(), 0u);
    TargetMask other(0x20);
    EXPECT_FALSE(other.targetIdDel(allTargets)) << "whatever the one is";
    EXPECT_EQ(other.value(), 0x20u);
    TargetMask two(0x8000000000000020u);
    EXPECT_DEATH(two.targetIdDel(allTargets), aliasNotOnly);
    EXPECT_DEATH(TargetMask().targetIdDel(anyTarget), aliasNotOnly);
}

TEST(TargetMask, RangesAreAssertedFirst) {
    TargetMask mask(3);
    for (const U8 number : {U8{64}, U8{126}, U8{255}}) {
        EXPECT_DEATH((void)mask.targetId(TargetId(number)), readOutOfRange);
        EXPECT_DEATH(mask.targetIdIs(TargetId(number), true), setOutOfRange);
        EXPECT_DEATH(mask.targetIdIs(TargetId(number), false), setOutOfRange);
    }
    EXPECT_TRUE(mask.targetIdDel(TargetId(64))) << "no range here: 64 is 0";
    EXPECT_EQ(mask.value(), 2u);
}

TEST(TargetMask, FindsTheNextTarget) {
    const TargetMask mask(0x8000000000000102u);
    EXPECT_EQ(mask.nextTargetId(nullTarget), TargetId(1));
    EXPECT_EQ(mask.nextTargetId(TargetId(0)), TargetId(1));
    EXPECT_EQ(mask.nextTargetId(TargetId(1)), TargetId(8));
    EXPECT_EQ(mask.nextTargetId(TargetId(8)), TargetId(63));
    EXPECT_EQ(mask.nextTargetId(TargetId(63)), nullTarget);
    EXPECT_EQ(mask.nextTargetId(TargetId(65)), TargetId(8)) << "as 1";
    EXPECT_EQ(mask.nextTargetId(TargetId(254)), TargetId(63)) << "as 62";
}

TEST(TargetMask, IsMadeFromADeviceId) {
    const TargetMask mask = TargetMask::maskFromDevId(DeviceId(7));
    EXPECT_EQ(mask.value(), 0x80u);
    EXPECT_EQ(mask.targets(), 1u);
    EXPECT_EQ(TargetMask::maskFromDevId(DeviceId(62)).value(), 0x4000000000000000u);
    EXPECT_EQ(TargetMask::maskFromDevId(DeviceId(63)).value(), 0x8000000000000000u);
    for (const unsigned number : {64U, 255U, 256U, 263U, 0xffffU})
        EXPECT_DEATH((void)TargetMask::maskFromDevId(DeviceId(static_cast<Vel::U16>(number))),
                     setOutOfRange)
            << number;
}

TEST(TargetMask, TheBitsOfItsBaseKnowNoAliases) {
    TargetMask mask(3);
    mask.bitIdIs(Orn::BitId(62), true);
    EXPECT_EQ(mask.targets(), 3u);
    EXPECT_TRUE(mask.bitIdDel(Orn::BitId(62)));
    EXPECT_EQ(mask.value(), 3u);
}

TEST(TargetMask, ComparesAndHashesByItsValue) {
    EXPECT_TRUE(comparesAs(TargetMask(1), TargetMask(0x100000000u), true, false));
    EXPECT_TRUE(comparesAs(TargetMask(9), TargetMask(9), false, true));
    EXPECT_EQ(TargetMask(0x0000000f000000f0u).hash(), 0xffu);
    EXPECT_EQ(std::hash<TargetMask>()(TargetMask(0x500000005u)), 0u);
    EXPECT_EQ((std::set<TargetMask>{TargetMask(2), TargetMask(1), TargetMask(2)}).size(), 2u);
    EXPECT_EQ((std::unordered_set<TargetMask>{TargetMask(2), TargetMask(1), TargetMask(2)}).size(),
              2u);
}

TEST(TargetMask, PrintsReadsAndLogsItsValue) {
    const U64 largest = 0xffffffffffffffffu;
    EXPECT_EQ(text(TargetMask(largest)), "18446744073709551615");
    EXPECT_EQ(parsed<TargetMask>("18446744073709551615"), TargetMask(largest));
    EXPECT_EQ(parseError<TargetMask>("x"),
              "in attribute 'value': cannot convert \"x\" at column 0 to unsigned long long");
    EXPECT_EQ(logged(TargetMask(0x0102030405060708u)), (std::vector<U8>{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(fromLog<TargetMask>({1, 2, 3, 4, 5, 6, 7, 8}), TargetMask(0x0102030405060708u));
}

TEST(TargetMask, ItsTypeHasNoBase) {
    EXPECT_EQ(TargetMask::_fwkType()->qualifiedName(), "Brixo::TargetMask");
    EXPECT_EQ(TargetMask::_fwkType()->base(), nullptr);
}

TEST(TargetMask, ReflectionFindsWhatItInheritsByName) {
    Vel::Any any = Vel::Any::parse("Brixo::TargetMask", "17");
    const Vel::Ptr<Vel::GenericIf> mask = any.adapter();
    EXPECT_EQ(mask->attributeId("value"), 2u);
    EXPECT_EQ(mask->attributeId("bits"), 3u);
    EXPECT_EQ(mask->attributeId("bitId"), 4u);
    EXPECT_EQ(mask->attributeId("nextBitId"), 5u);
    EXPECT_EQ(mask->attributeId("targets"), 131u);
    EXPECT_EQ(any.get("bits").text(), "2");
    EXPECT_EQ(any.get("value").text(), "17");
    EXPECT_EQ(any.get("bitId", 4).text(), "True");
    EXPECT_EQ(any.call("nextBitId", {0})->text(), "4");
    any.set("bitId", 1, true);
    EXPECT_EQ(any.text(), "19");
    std::string names;
    any.forEachAttribute(
        [&](const Vel::VelAttr& attr) { names += std::string(attr.name()) + " "; });
    EXPECT_EQ(names, "value bits bitId nextBitId maskFromDevId targets targetId nextTargetId ");
    EXPECT_THROW((void)mask->attributeId("bit"), Vel::ReflectionException);
}

TEST(TargetMask, AgreesWithASetOfNumbers) {
    const unsigned seed = 20261121;
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    TargetMask mask;
    std::set<unsigned> model;
    for (int step = 0; step < 100'000; ++step) {
        const unsigned number = static_cast<unsigned>(random()) % 62;
        const TargetId target(static_cast<U8>(number));
        switch (random() % 4) {
        case 0: ASSERT_EQ(mask.targetIdDel(target), model.erase(number) != 0); break;
        case 1:
            mask.targetIdIs(target, random() % 2 != 0);
            model.insert(number);
            break;
        case 2: ASSERT_EQ(mask.targetId(target), model.contains(number)); break;
        default:
            const auto next = model.upper_bound(number);
            ASSERT_EQ(mask.nextTargetId(target).value(), next != model.end() ? *next : 255U);
        }
        ASSERT_EQ(mask.targets(), model.size());
    }
}

TEST(TargetMask, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Brixo::TargetMask"),
              "value(value: U64)\n"
              "130 maskFromDevId(devId: Brixo::DeviceId): Brixo::TargetMask\n"
              "131 targets: U32; procedural\n"
              "132 targetId[Brixo::TargetId]: bool\n"
              "133 nextTargetId(targetId: Brixo::TargetId): Brixo::TargetId\n");
}

} // namespace
} // namespace Brixo
