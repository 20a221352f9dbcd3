#include <Vel/GenericIf.h>

#include <Vel/Builtin.h>
#include <Vel/DefineModule.h>
#include <Vel/GenericIfList.h>
#include <Vel/RangeException.h>
#include <Vel/ReflectionException.h>
#include <Vel/testing/NetTypes.h>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>

VEL_MODULE(netModule, Net::Types)

namespace Vel {
namespace {

using Op = AttributeOp;

Ptr<GenericIf> port(U16 number, bool isConst = false) {
    return new ValueGenericIf<Net::Port>(Net::Port(number), isConst);
}

Ptr<GenericIf> table(bool isConst = false) {
    return new ObjectGenericIf<Net::Table>(new Net::Table(8), isConst);
}

Ptr<GenericIf::List> listOf(std::initializer_list<Ptr<GenericIf>> members) {
    Ptr<GenericIf::List> list = new GenericIf::List;
    for (const Ptr<GenericIf>& member : members) list->push(member);
    return list;
}

Ptr<GenericIf> u16(U16 value) { return Builtin<U16>::genericIf(value); }

Ptr<GenericIf> u32(U32 value) { return Builtin<U32>::genericIf(value); }

// What an operation answers as text, or what it throws behind "! ".
std::string run(const Ptr<GenericIf>& adapter, AttributeId id, Op::Operation operation,
                const Ptr<GenericIf>& result, const Ptr<GenericIf>& index = nullptr,
                const Ptr<GenericIf>& argument = nullptr) {
    try {
        adapter->attributeOp({id, operation, argument.ptr()}, index, result);
        return result ? result->strRep().charPtr() : "";
    } catch (const ReflectionException& refused) {
        return std::string("! ") + refused.what();
    }
}

template <class T>
std::string read(const Ptr<GenericIf>& adapter, AttributeId id,
                 const Ptr<GenericIf>& index = nullptr, const Ptr<GenericIf>& argument = nullptr) {
    return run(adapter, id, Op::read, typeOf<T>()->newGenericIf(), index, argument);
}

std::string modify(const Ptr<GenericIf>& adapter, AttributeId id, Op::Operation operation,
                   const Ptr<GenericIf>& argument, const Ptr<GenericIf>& index = nullptr) {
    return run(adapter, id, operation, nullptr, index, argument);
}

TEST(GenericIf, DoesWhatItsHeaderShows) {
    Vel::Ptr<Vel::GenericIf> port = Vel::VelType::typeNode("Net::Port")->genericIf("7", false);
    Vel::Ptr<Vel::GenericIf> number = Vel::Builtin<Vel::U16>::_fwkType()->newGenericIf();
    port->attributeOp({port->attributeId("value"), Vel::AttributeOp::read}, nullptr, number);
    EXPECT_EQ(number->strRep(), "7");
}

TEST(GenericIf, ALiteralIsATextForEveryKindOfType) {
    EXPECT_EQ(Net::Port::_fwkType()->genericIf("443", true)->strRep(), "443");
    EXPECT_EQ(Net::Port::_Type::instance()->genericIf("443", true)->strRep(), "443");
    EXPECT_EQ(Net::_fwkType_Protocol()->genericIf("'udp'", false)->strRep(), "'udp'");
    EXPECT_EQ(Net::Route::_fwkType()->genericIf("None", false)->strRep(), "None");
    EXPECT_THROW((void)Net::Port::_fwkType()->genericIf("443!", false), RangeException);
}

TEST(GenericIf, ReadsEachAttributeOfAValue) {
    EXPECT_EQ(read<U16>(port(443), 2), "443");
    EXPECT_EQ(read<U16>(port(443), 3), "443");
    EXPECT_EQ(read<U16>(port(443), 4), "65535");
}

TEST(GenericIf, AConstAdapterReadsAndRefusesToModifyBeforeItLooksAtAnythingElse) {
    EXPECT_EQ(read<U16>(port(443, true), 2), "443");
    for (const AttributeId id : {0U, 2U, 3U, 77U})
        for (const Op::Operation operation : {128U, 129U, 255U})
            EXPECT_EQ(modify(port(443, true), id, operation, nullptr, port(1)),
                      "! attempting to modify a const instance");
}

TEST(GenericIf, APlainAttributeTakesNoIndexAndNoOtherOperation) {
    EXPECT_EQ(read<U16>(port(443), 2, u16(0)), "! attribute value takes no index");
    EXPECT_EQ(read<U16>(port(443), 3, u16(0)), "! attribute hash takes no index");
    EXPECT_EQ(run(port(443), 2, 1, u16(0)), "! attribute value does not support operation 1");
    EXPECT_EQ(modify(port(443), 2, Op::set, u16(3)),
              "! attribute value does not support operation 128");
    EXPECT_EQ(modify(port(443), 3, Op::del, nullptr),
              "! attribute hash does not support operation 129");
}

TEST(GenericIf, AnUnknownAttributeIsRefusedByTheBase) {
    EXPECT_EQ(read<U16>(port(443), 77), "! Net::Port has no attribute 77");
    EXPECT_EQ(read<U16>(port(443), 0), "! Net::Port has no attribute 0");
    EXPECT_EQ(read<U16>(port(443), 4000000000U), "! Net::Port has no attribute 4000000000");
    EXPECT_EQ(run(port(443), 2, Op::compare, u16(0)),
              "! attribute value does not support operation 100");
}

TEST(GenericIf, TheAnswerNeedsAnAdapterOfItsType) {
    EXPECT_EQ(read<U32>(port(443), 2), "! argument U32 is missing or of another type");
    EXPECT_EQ(run(port(443), 2, Op::read, port(0)),
              "! argument Port is missing or of another type");
    EXPECT_THROW(port(443)->attributeOp({2, Op::read}, nullptr, nullptr), ReflectionException);
}

// Holds a number, and does not say where.
class Discreet final : public GenericIf {
public:
    explicit Discreet(U16 number) : GenericIf(false), number_(number) {}

    U16 number() const { return number_; }

    VelType* type() const override { return typeOf<U16>(); }

    Ptr<GenericIf> clone() override { return new Discreet(number_); }

    Ptr<const GenericIf> clone() const override { return new Discreet(number_); }

    String8 strRep() const override { return "discreet"; }

    const void* voidPtr(const VelType* type) const override {
        return type == typeOf<U16>() ? &number_ : nullptr;
    }

    void voidPtrIs(const void* value, const VelType* type) override {
        ASSERT_EQ(type, typeOf<U16>());
        number_ = *static_cast<const U16*>(value);
    }

private:
    U16 number_;
};

TEST(GenericIf, AnAdapterNeedNotSayWhereItsValueIs) {
    for (int i = 0; i < 2; ++i) { // the first time, types are looked up
        const Ptr<Discreet> result = new Discreet(1);
        port(443)->attributeOp({2, Op::read}, nullptr, result);
        EXPECT_EQ(result->number(), 443u);
        EXPECT_FALSE(result->holds(typeOf<U16>()));
        EXPECT_FALSE(result->holds(nullptr));
    }
    const Ptr<GenericIf> adapter = table();
    const Ptr<GenericIf> number = u16(7);
    EXPECT_TRUE(number->holds(typeOf<U16>()));
    EXPECT_FALSE(number->holds(typeOf<U32>()));
    EXPECT_FALSE(number->holds(nullptr));
    EXPECT_FALSE(adapter->holds(adapter->type())) << "objects are not held by value";
    const Ptr<GenericIf> copy = number->clone();
    EXPECT_NE(copy->held(), number->held());
    EXPECT_EQ(*static_cast<const U16*>(copy->held()), 7u);
}

TEST(GenericIf, ComparesWithAnAdapterOfTheSameType) {
    const auto compare = [](const Ptr<GenericIf>& a, const Ptr<GenericIf>& b) {
        return run(a, 0, Op::compare, Builtin<bool>::genericIf(false), nullptr, b);
    };
    EXPECT_EQ(compare(port(443), port(443)), "True");
    EXPECT_EQ(compare(port(443, true), port(444)), "False");
    const std::string refusal = "! argument velOpArg is missing or of another type";
    EXPECT_EQ(compare(port(443), u16(443)), refusal);
    EXPECT_EQ(compare(port(443), nullptr), refusal);
    EXPECT_EQ(compare(port(1), new ValueGenericIf<Net::LowPort>(Net::LowPort(1), false)), refusal);
    EXPECT_EQ(compare(u16(3), u16(3)), "True");
    EXPECT_EQ(compare(table(), table()), "False");
    EXPECT_EQ(compare(table(), port(1)), refusal);
    const Ptr<GenericIf> one = table();
    EXPECT_EQ(compare(one, one->clone()), "True");
}

TEST(GenericIf, FindsAttributeIdsByName) {
    EXPECT_EQ(port(1)->attributeId("value"), 2u);
    EXPECT_EQ(port(1)->attributeId("null"), 4u);
    EXPECT_EQ(table()->attributeId("route"), 133u);
    const Ptr<GenericIf> low = new ValueGenericIf<Net::LowPort>(Net::LowPort(80), false);
    EXPECT_EQ(low->attributeId("privileged"), 130u);
    EXPECT_EQ(low->attributeId("value"), 2u) << "inherited";
    try {
        (void)port(1)->attributeId("port");
        FAIL() << "an unknown name has an id";
    } catch (const ReflectionException& refused) {
        EXPECT_STREQ(refused.what(), "Net::Port has no attribute port");
        EXPECT_TRUE(refused.ids().has(Exception::Id::attribute));
    }
}

TEST(GenericIf, ARefinementShowsInheritedAttributesAndStandsForItsBase) {
    const Ptr<GenericIf> low = new ValueGenericIf<Net::LowPort>(Net::LowPort(80), false);
    EXPECT_EQ(read<U16>(low, 2), "80");
    EXPECT_EQ(read<bool>(low, 130), "True");
    const Ptr<GenericIf> asPort = Net::Port::_fwkType()->genericIf(low.ptr(), true);
    ASSERT_TRUE(asPort);
    EXPECT_EQ(asPort->type(), Net::Port::_fwkType());
    EXPECT_EQ(asPort->strRep(), "80");
    EXPECT_TRUE(asPort->isConst());
    EXPECT_FALSE(Net::LowPort::_fwkType()->genericIf(port(80).ptr(), false));
}

TEST(GenericIf, WritesThroughTheWriter) {
    const Ptr<GenericIf> endpoint = Net::Endpoint::_fwkType()->newGenericIf();
    const Ptr<GenericIf> udp = Net::_fwkType_Protocol()->genericIf(String8("'udp'"), true);
    EXPECT_EQ(modify(endpoint, 2, Op::set, udp), "");
    EXPECT_EQ(read<Net::Protocol>(endpoint, 2), "'udp'");
    EXPECT_EQ(modify(endpoint, 2, Op::set, nullptr),
              "! argument protocol is missing or of another type");
    EXPECT_EQ(modify(endpoint, 2, Op::set, port(1)),
              "! argument protocol is missing or of another type");
    EXPECT_EQ(modify(endpoint, 2, Op::set, udp, u16(1)), "! attribute protocol takes no index");
    EXPECT_EQ(modify(endpoint, 3, Op::set, port(1)),
              "! attribute port does not support operation 128");
}

TEST(GenericIf, AnEnumerationReadsItsEnumerators) {
    const Ptr<GenericIf> protocol = Net::_fwkType_Protocol()->newGenericIf();
    EXPECT_EQ(protocol->strRep(), "'tcp'");
    EXPECT_EQ(read<Net::Protocol>(protocol, 0), "'tcp'");
    EXPECT_EQ(read<Net::Protocol>(protocol, 1), "'udp'");
    EXPECT_EQ(read<Net::Protocol>(protocol, 2), "! Net::Protocol has no attribute 2");
    EXPECT_EQ(read<Net::Protocol>(protocol, 1, u16(0)), "! attribute udp takes no index");
    EXPECT_EQ(modify(protocol, 1, Op::set, nullptr),
              "! attribute udp does not support operation 128");
    EXPECT_EQ(protocol->attributeId("udp"), 1u);
}

TEST(GenericIf, CallsAFunctionWithItsArgumentsInOrder) {
    const Ptr<GenericIf> endpoint = Net::Endpoint::_fwkType()->genericIfListConstructor(
        listOf({Net::_fwkType_Protocol()->newGenericIf(), port(80)}).ptr());
    EXPECT_EQ(read<Net::Endpoint>(endpoint, 5, nullptr, listOf({u16(3)})),
              "Value('Net::Endpoint', ** {'protocol': 'tcp', 'port': 83})");
    EXPECT_EQ(modify(endpoint, 4, Op::set, listOf({u16(5), Builtin<bool>::genericIf(true)})), "");
    EXPECT_EQ(read<Net::Port>(endpoint, 3), "85");
    EXPECT_EQ(modify(endpoint, 4, Op::set, listOf({u16(15), Builtin<bool>::genericIf(false)})), "");
    EXPECT_EQ(read<Net::Port>(endpoint, 3), "70");
}

TEST(GenericIf, RefusesEachWrongArgumentOfAFunctionByName) {
    const Ptr<GenericIf> endpoint = Net::Endpoint::_fwkType()->newGenericIf();
    const auto move = [&endpoint](const Ptr<GenericIf>& arguments) {
        return modify(endpoint, 4, Op::set, arguments);
    };
    const Ptr<GenericIf> up = Builtin<bool>::genericIf(true);
    EXPECT_EQ(move(nullptr), "! argument List is missing or of another type");
    EXPECT_EQ(move(u16(1)), "! argument Vel::GenericIf::List_ is missing or of another type");
    EXPECT_EQ(move(listOf({})), "! argument by is missing or of another type");
    EXPECT_EQ(move(listOf({nullptr, up})), "! argument by is missing or of another type");
    EXPECT_EQ(move(listOf({u32(1), up})), "! argument by is missing or of another type");
    EXPECT_EQ(move(listOf({u16(1)})), "! argument up is missing or of another type");
    EXPECT_EQ(move(listOf({u16(1), u16(1)})), "! argument up is missing or of another type");
    EXPECT_EQ(move(listOf({u16(1), up, up})), "! move takes no more arguments");
    EXPECT_EQ(read<Net::Port>(endpoint, 3), "0") << "nothing was called";
    EXPECT_EQ(run(endpoint, 4, Op::read, port(0), nullptr, listOf({u16(1), up})),
              "! attribute move does not support operation 0");
    EXPECT_EQ(modify(endpoint, 5, Op::set, listOf({u16(1)})),
              "! attribute moved does not support operation 128");
    EXPECT_EQ(read<Net::Endpoint>(endpoint, 5, u16(1), listOf({u16(1)})),
              "! attribute moved takes no index");
}

TEST(GenericIf, AProcedureNeedsNoListAndTakesNoArgument) {
    const Ptr<GenericIf> adapter = table();
    ASSERT_EQ(modify(adapter, 131, Op::set, u32(5), u16(1)), "");
    EXPECT_EQ(modify(adapter, 135, Op::set, nullptr), "");
    EXPECT_EQ(run(adapter, 131, Op::count, u32(0)), "0");
    EXPECT_EQ(modify(adapter, 135, Op::set, listOf({})), "");
    EXPECT_EQ(modify(adapter, 135, Op::set, listOf({u16(1)})), "! clear takes no more arguments");
    EXPECT_EQ(modify(adapter, 135, Op::set, u16(1)),
              "! argument Vel::GenericIf::List_ is missing or of another type");
}

TEST(GenericIf, AMapOfValuesIsReadWrittenCountedAndCleared) {
    const Ptr<GenericIf> adapter = table();
    const auto truth = [] { return Builtin<bool>::genericIf(false); };
    EXPECT_EQ(modify(adapter, 131, Op::set, u32(5), u16(1)), "");
    EXPECT_EQ(modify(adapter, 131, Op::set, listOf({u16(2), u32(7)})), "");
    EXPECT_EQ(modify(adapter, 131, Op::set, u32(6), u16(1)), "");
    EXPECT_EQ(read<U32>(adapter, 131, u16(1)), "6");
    EXPECT_EQ(read<U32>(adapter, 131, u16(2)), "7");
    EXPECT_EQ(read<U32>(adapter, 131, u16(3)), "0");
    EXPECT_EQ(run(adapter, 131, Op::has, truth(), u16(2)), "True");
    EXPECT_EQ(run(adapter, 131, Op::has, truth(), u16(3)), "False");
    EXPECT_EQ(run(adapter, 131, Op::count, u32(0)), "2");
    EXPECT_EQ(run(adapter, 131, Op::keys, listOf({})), "[2, 1]");
    EXPECT_EQ(read<U32>(adapter, 134, nullptr, listOf({u16(1), u16(2)})), "13");
    EXPECT_EQ(modify(adapter, 131, Op::del, nullptr, u16(1)), "");
    EXPECT_EQ(modify(adapter, 131, Op::del, nullptr, u16(1)), "");
    EXPECT_EQ(run(adapter, 131, Op::keys, listOf({})), "[2]");
    EXPECT_EQ(modify(adapter, 131, Op::delAll, nullptr), "");
    EXPECT_EQ(run(adapter, 131, Op::count, u32(0)), "0");
}

TEST(GenericIf, ADeletionAnswersWhatWasThere) {
    const Ptr<GenericIf> adapter = table();
    ASSERT_EQ(modify(adapter, 131, Op::set, u32(5), u16(1)), "");
    EXPECT_EQ(run(adapter, 131, Op::del, u16(9), u16(1)),
              "! argument U16 is missing or of another type");
    EXPECT_EQ(run(adapter, 131, Op::has, Builtin<bool>::genericIf(false), u16(1)), "True")
        << "nothing is removed then";
    EXPECT_EQ(run(adapter, 131, Op::del, u32(9), u16(1)), "5");
    EXPECT_EQ(run(adapter, 131, Op::del, u32(9), u16(1)), "0");
    ASSERT_EQ(
        modify(adapter, 132, Op::set, listOf({Net::_fwkType_Protocol()->newGenericIf(), port(80)})),
        "");
    EXPECT_EQ(run(adapter, 132, Op::del, Net::Endpoint::_fwkType()->newGenericIf(), port(80)),
              "Value('Net::Endpoint', ** {'protocol': 'tcp', 'port': 80})");
    ASSERT_EQ(modify(adapter, 133, Op::set, listOf({u16(3)})), "");
    const Ptr<GenericIf> route = Net::Route::_fwkType()->newGenericIf();
    EXPECT_NE(run(adapter, 133, Op::del, route, u16(3)), "None");
    EXPECT_EQ(read<U16>(route, 130), "3") << "it lives as long as somebody refers to it";
    EXPECT_EQ(run(adapter, 133, Op::del, route, u16(3)), "None");
}

TEST(GenericIf, AMapOfValuesRefusesByName) {
    const Ptr<GenericIf> adapter = table();
    EXPECT_EQ(read<U32>(adapter, 131), "! argument key is missing or of another type");
    EXPECT_EQ(read<U32>(adapter, 131, u32(1)), "! argument key is missing or of another type");
    EXPECT_EQ(run(adapter, 131, Op::count, u32(0), u16(1)), "! attribute weight takes no index");
    EXPECT_EQ(run(adapter, 131, Op::keys, listOf({}), u16(1)), "! attribute weight takes no index");
    EXPECT_EQ(run(adapter, 131, Op::keys, u16(1)),
              "! argument Vel::GenericIf::List_ is missing or of another type");
    EXPECT_EQ(modify(adapter, 131, Op::delAll, nullptr, u16(1)),
              "! attribute weight takes no index");
    EXPECT_EQ(run(adapter, 131, 4, u32(0)), "! attribute weight does not support operation 4");
    EXPECT_EQ(modify(adapter, 131, 131, nullptr),
              "! attribute weight does not support operation 131");
    EXPECT_EQ(modify(adapter, 131, Op::set, u16(5), u16(1)),
              "! argument weight is missing or of another type");
    EXPECT_EQ(modify(adapter, 131, Op::set, nullptr),
              "! argument List is missing or of another type");
    EXPECT_EQ(modify(adapter, 131, Op::set, listOf({u16(1)})),
              "! argument value is missing or of another type");
    EXPECT_EQ(modify(adapter, 131, Op::set, listOf({u16(1), u32(2), u32(3)})),
              "! weight takes no more arguments");
    EXPECT_EQ(run(adapter, 131, Op::count, u32(0)), "0");
}

TEST(GenericIf, MembersThatHoldTheirKeyAreInsertedFromWhatMakesThem) {
    const Ptr<GenericIf> adapter = table();
    const Ptr<GenericIf> udp = Net::_fwkType_Protocol()->genericIf(String8("'udp'"), true);
    EXPECT_EQ(modify(adapter, 132, Op::set, listOf({udp, port(53)})), "");
    EXPECT_EQ(read<Net::Endpoint>(adapter, 132, port(53)),
              "Value('Net::Endpoint', ** {'protocol': 'udp', 'port': 53})");
    const Net::Endpoint web(Net::Protocol::tcp, Net::Port(80));
    EXPECT_EQ(modify(adapter, 132, Op::set, listOf({new ValueGenericIf<Net::Endpoint>(web, true)})),
              "");
    EXPECT_EQ(run(adapter, 132, Op::count, u32(0)), "2");
    EXPECT_EQ(modify(adapter, 132, Op::set, listOf({udp, port(53)}), port(53)),
              "! attribute peer takes no index");
    EXPECT_EQ(modify(adapter, 132, Op::set, listOf({port(53)})),
              "! argument protocol is missing or of another type");
    EXPECT_EQ(modify(adapter, 132, Op::set, listOf({udp, port(53), udp})),
              "! peer takes no more arguments");
    EXPECT_EQ(
        modify(adapter, 132, Op::set, listOf({new ValueGenericIf<Net::Endpoint>(web, true), udp})),
        "! peer takes no more arguments");
    EXPECT_EQ(modify(adapter, 132, Op::del, nullptr, u16(53)),
              "! argument port is missing or of another type");
    EXPECT_EQ(modify(adapter, 132, Op::del, nullptr, port(53)), "");
    EXPECT_EQ(run(adapter, 132, Op::count, u32(0)), "1");
}

TEST(GenericIf, ObjectsAreMadeOnceByTheirKey) {
    const Ptr<GenericIf> adapter = table();
    EXPECT_EQ(modify(adapter, 133, Op::set, listOf({u16(7)})), "");
    const Ptr<GenericIf> route = Net::Route::_fwkType()->newGenericIf();
    adapter->attributeOp({133, Op::read}, u16(7), route);
    EXPECT_EQ(modify(route, 131, Op::set, Builtin<bool>::genericIf(true)), "");
    EXPECT_EQ(modify(adapter, 133, Op::set, listOf({u16(7)})), "");
    const Ptr<GenericIf> again = Net::Route::_fwkType()->newGenericIf();
    adapter->attributeOp({133, Op::read}, u16(7), again);
    EXPECT_EQ(read<bool>(again, 131), "True") << "the same object";
    EXPECT_EQ(read<U16>(again, 0), "7");
    EXPECT_EQ(modify(adapter, 133, Op::set, listOf({})),
              "! argument id is missing or of another type");
    EXPECT_EQ(modify(adapter, 133, Op::set, listOf({u32(7)})),
              "! argument id is missing or of another type");
    EXPECT_EQ(modify(adapter, 133, Op::set, listOf({u16(7), u16(8)})),
              "! route takes no more arguments");
    EXPECT_EQ(modify(adapter, 133, Op::set, listOf({u16(7)}), u16(7)),
              "! attribute route takes no index");
    EXPECT_EQ(modify(adapter, 133, Op::del, nullptr, u16(7)), "");
    adapter->attributeOp({133, Op::read}, u16(7), again);
    EXPECT_EQ(again->strRep(), "None") << "there is none under that key";
    EXPECT_EQ(read<bool>(again, 131), "! argument Route is missing or of another type");
}

TEST(GenericIf, IteratesACollectionInItsOrder) {
    const Ptr<GenericIf> adapter = table();
    for (const U16 key : {U16{1}, U16{2}, U16{3}})
        ASSERT_EQ(modify(adapter, 131, Op::set, u32(10U * key), u16(key)), "");
    const Ptr<AttributeIterator> at = adapter->attributeIterator(131);
    std::string seen;
    for (; adapter->attributeIterator_nonNull(at); adapter->attributeIterator_iterInc(at)) {
        seen += adapter->attributeIterator_iterKey(at)->strRep().charPtr();
        seen += ":";
        seen += adapter->attributeIterator_iterObj(at)->strRep().charPtr();
        seen += " ";
    }
    EXPECT_EQ(seen, "2:20 1:10 3:30 ");
}

TEST(GenericIf, AnIteratorDeletesAndItsCloneStaysBehind) {
    const Ptr<GenericIf> adapter = table();
    for (const U16 key : {U16{1}, U16{2}, U16{3}})
        ASSERT_EQ(modify(adapter, 133, Op::set, listOf({u16(key)})), "");
    const Ptr<AttributeIterator> at = adapter->attributeIterator(133);
    adapter->attributeIterator_iterInc(at);
    const Ptr<AttributeIterator> other = adapter->attributeIterator_iterClone(at);
    adapter->attributeIterator_iterInc(other);
    adapter->attributeIterator_iterDel(at);
    EXPECT_EQ(adapter->attributeIterator_iterKey(at)->strRep(), "3");
    EXPECT_EQ(adapter->attributeIterator_iterKey(other)->strRep(), "3");
    EXPECT_EQ(run(adapter, 133, Op::keys, listOf({})), "[2, 3]");
    adapter->attributeIterator_iterDel(at);
    EXPECT_FALSE(adapter->attributeIterator_nonNull(at));
}

TEST(GenericIf, AConstAdaptersIteratorHandsOutConstMembersAndDeletesNone) {
    const Ptr<Net::Table> object = new Net::Table(1);
    const Ptr<GenericIf> writer = new ObjectGenericIf<Net::Table>(object.ptr(), false);
    ASSERT_EQ(modify(writer, 133, Op::set, listOf({u16(1)})), "");
    const Ptr<GenericIf> reader = new ObjectGenericIf<Net::Table>(object.ptr(), true);
    const Ptr<AttributeIterator> at = reader->attributeIterator(133);
    const Ptr<GenericIf> route = reader->attributeIterator_iterObj(at);
    EXPECT_EQ(modify(route, 131, Op::set, Builtin<bool>::genericIf(true)),
              "! attempting to modify a const instance");
    EXPECT_THROW(reader->attributeIterator_iterDel(at), ReflectionException);
    EXPECT_EQ(run(reader, 133, Op::count, u32(0)), "1");
    const GenericIf& constant = *writer;
    EXPECT_TRUE(constant.attributeIterator_iterObj(at)->isConst());
}

TEST(GenericIf, OnlyCollectionsAreIterated) {
    EXPECT_THROW((void)table()->attributeIterator(130), ReflectionException);
    EXPECT_THROW((void)table()->attributeIterator(1), ReflectionException);
    EXPECT_THROW((void)port(1)->attributeIterator(2), ReflectionException);
    EXPECT_THROW((void)u16(1)->attributeIterator(2), ReflectionException);
}

TEST(GenericIf, AnIteratorKeepsItsObjectAlive) {
    Ptr<GenericIf> adapter = table();
    ASSERT_EQ(modify(adapter, 131, Op::set, u32(5), u16(1)), "");
    const Ptr<AttributeIterator> at = adapter->attributeIterator(131);
    adapter = nullptr;
    EXPECT_EQ(at->key()->strRep(), "1");
    EXPECT_EQ(at->obj(true)->strRep(), "5");
}

TEST(GenericIf, WrapsByAddressTextAdapterAndObject) {
    VelType* const type = Net::Port::_fwkType();
    const Net::Port http(80);
    EXPECT_EQ(type->genericIf(static_cast<const void*>(&http), true)->strRep(), "80");
    EXPECT_EQ(type->genericIf(String8("443"), false)->strRep(), "443");
    EXPECT_EQ(type->genericIf(port(22).ptr(), false)->strRep(), "22");
    EXPECT_FALSE(type->genericIf(u16(22).ptr(), false));
    try {
        (void)type->genericIf(String8("443!"), false);
        FAIL() << "junk was read";
    } catch (const RangeException& refused) {
        EXPECT_STREQ(refused.what(), "junk at column 3 deserializing 443!");
    }
    const Ptr<Net::Route> route = new Net::Route(5);
    VelType* const routes = Net::Route::_fwkType();
    EXPECT_EQ(read<U16>(routes->genericIf(route.ptr(), true), 130), "5");
    EXPECT_EQ(read<U16>(routes->genericIf(routes->genericIf(route.ptr(), true).ptr(), false), 130),
              "5");
    const Ptr<Net::Table> noRoute = new Net::Table(1);
    EXPECT_THROW((void)routes->genericIf(noRoute.ptr(), false), ReflectionException);
    EXPECT_EQ(routes->genericIf(String8("None"), false)->strRep(), "None");
    EXPECT_THROW((void)routes->genericIf(String8("7"), false), RangeException);
}

TEST(GenericIf, ConstructsFromAListInOrder) {
    VelType* const type = Net::Endpoint::_fwkType();
    const auto construct = [type](const Ptr<GenericIf>& arguments) -> std::string {
        try {
            return type->newGenericIf()->genericIfListConstructor(arguments)->strRep().charPtr();
        } catch (const ReflectionException& refused) {
            return std::string("! ") + refused.what();
        }
    };
    const Ptr<GenericIf> udp = Net::_fwkType_Protocol()->genericIf(String8("'udp'"), true);
    EXPECT_EQ(construct(listOf({udp, port(53)})),
              "Value('Net::Endpoint', ** {'protocol': 'udp', 'port': 53})");
    EXPECT_EQ(construct(nullptr), "! argument List is missing or of another type");
    EXPECT_EQ(construct(udp), "! argument Vel::GenericIf::List_ is missing or of another type");
    EXPECT_EQ(construct(listOf({})), "! argument protocol is missing or of another type");
    EXPECT_EQ(construct(listOf({port(53), udp})),
              "! argument protocol is missing or of another type");
    EXPECT_EQ(construct(listOf({udp})), "! argument port is missing or of another type");
    EXPECT_EQ(construct(listOf({udp, port(53), udp})), "! Endpoint takes no more arguments");
    EXPECT_EQ(Builtin<U16>::_fwkType()->genericIfListConstructor(listOf({u16(3)}).ptr())->strRep(),
              "3");
    EXPECT_EQ(Net::_fwkType_Protocol()->genericIfListConstructor(listOf({}).ptr())->strRep(),
              "'tcp'");
    const Ptr<GenericIf> made =
        Net::Table::_fwkType()->genericIfListConstructor(listOf({u32(9)}).ptr());
    EXPECT_EQ(read<U32>(made, 130), "9");
}

TEST(GenericIf, CopiesAValueAndSharesAnObject) {
    const Ptr<GenericIf> value = port(1);
    const Ptr<GenericIf> copy = value->clone();
    static_cast<ValueGenericIf<Net::Port>&>(*value).valIs(Net::Port(2));
    EXPECT_EQ(copy->strRep(), "1");
    const GenericIf& constant = *value;
    EXPECT_EQ(constant.clone()->strRep(), "2");
    const Ptr<GenericIf> object = table();
    const Ptr<GenericIf> same = object->clone();
    ASSERT_EQ(modify(same, 131, Op::set, u32(5), u16(1)), "");
    EXPECT_EQ(run(object, 131, Op::count, u32(0)), "1");
}

TEST(GenericIf, IsInitialisedAnewWithGenericIfIs) {
    const Ptr<GenericIf> value = port(1);
    static_cast<ValueGenericIf<Net::Port>&>(*value).GenericIf_Is(Net::Port(2), true);
    EXPECT_EQ(value->strRep(), "2");
    EXPECT_TRUE(value->isConst());
}

TEST(GenericIf, ReadingThroughAConstReferenceIsAllowed) {
    const Ptr<GenericIf> value = port(1);
    const GenericIf& constant = *value;
    const Ptr<GenericIf> result = u16(0);
    constant.attributeOp({2, Op::read}, nullptr, result);
    EXPECT_EQ(result->strRep(), "1");
    EXPECT_THROW(constant.attributeOp({2, Op::set}, nullptr, result), ReflectionException);
}

TEST(GenericIf, ADeletionMarkIsSetAndTakenBack) {
    const Ptr<GenericIf> value = port(1);
    EXPECT_FALSE(value->velMarkedForDeletion());
    value->velDoZombieReactors(false);
    EXPECT_FALSE(value->velMarkedForDeletion());
    value->velDoZombieReactors(true);
    value->velDoZombieReactors(true);
    EXPECT_TRUE(value->velMarkedForDeletion());
    value->velDoZombieReactors(false);
    EXPECT_FALSE(value->velMarkedForDeletion());
}

TEST(GenericIf, IsANotifieeThatIsActiveAtBirth) {
    const Ptr<GenericIf> value = port(1);
    EXPECT_TRUE(value->hasNotificationActive());
    value->hasNotificationActiveIs(false);
    EXPECT_FALSE(value->hasNotificationActive());
    EXPECT_EQ(value->references(), 1u);
}

} // namespace
} // namespace Vel
