#include <Vel/Value.h>

#include <Vel/testing/NetTypes.h>
#include <Vel/testing/ValueTesting.h>
#include <Vel/value/Define.h>
#include <concepts>
#include <gtest/gtest.h>
#include <random>
#include <unordered_set>

namespace Net {

// A field of each kind.
class Flow : public Vel::Value<Flow> {
public:
    VEL_VALUE(Flow)
    constexpr Flow() noexcept = default;

    constexpr Flow(Protocol protocol, Port port, bool open, Vel::U64 peer) noexcept
        : protocol_(protocol), port_(port), open_(open), peer_(peer) {}

    static constexpr auto schema() {
        return Vel::valueSchema<Flow>("Net::Flow")
            .stored(2, "protocol", &Flow::protocol_)
            .stored(3, "port", &Flow::port_)
            .stored(4, "open", &Flow::open_)
            .stored(5, "peer", &Flow::peer_)
            .hashedBy(Vel::Hash::byteMix, 6);
    }

private:
    Protocol protocol_ = Protocol::tcp;
    Port port_;
    bool open_ = false;
    Vel::U64 peer_ = 0;
};

VEL_VALUE_FUNCTIONS(, Flow);
VEL_DEFINE_VALUE(Flow)

} // namespace Net

namespace Vel {
namespace {

using namespace Testing;
using Net::Flow;
using Net::Port;
using Net::Protocol;

const char printed[] = "Value('Net::Flow', ** {'protocol': 'udp', 'port': 53, 'open': True, "
                       "'peer': 18446744073709551615})";
constexpr Flow sample(Protocol::udp, Port(53), true, ~U64{0});

static_assert(sizeof(Port) == 2);
static_assert(std::totally_ordered<Port> && std::totally_ordered<Flow>);
static_assert(Port(1) < Port(2));
static_assert(schemaOf<Port>.shortName() == "Port");
static_assert(schemaOf<Flow>.attributeCount == 5);
static_assert(Flow() < sample);

TEST(Value, SchemaStatesIdsNamesKindsAndFlags) {
    std::string table;
    forEachAttribute<Port>([&](const auto& attribute) {
        table += std::to_string(attribute.id) + " " + std::string(attribute.name) + " " +
                 std::to_string(static_cast<int>(attribute.kind)) + " " +
                 std::to_string(attribute.introspection) + "; ";
    });
    EXPECT_EQ(table, "2 value 0 2; 3 hash 1 0; 4 null 2 0; ");
    EXPECT_EQ(schemaOf<Port>.constructor[0], "value");
}

TEST(Value, ComparesFieldAfterField) {
    const Flow ascending[] = {{Protocol::tcp, Port(9), true, 9},
                              {Protocol::udp, Port(1), true, 9},
                              {Protocol::udp, Port(2), false, 9},
                              {Protocol::udp, Port(2), true, 0xffffffff},
                              {Protocol::udp, Port(2), true, 0x100000000}};
    for (std::size_t i = 0; i < std::size(ascending); ++i)
        for (std::size_t j = 0; j < std::size(ascending); ++j)
            EXPECT_TRUE(comparesAs(ascending[i], ascending[j], i < j, i == j)) << i << " " << j;
}

TEST(Value, PrintsAndReads) {
    EXPECT_EQ(text(sample), printed);
    EXPECT_EQ(parsed<Flow>(printed), sample);
    EXPECT_EQ(text(Port(65535)), "65535");
    EXPECT_EQ(text(Flow(static_cast<Protocol>(9), Port(), false, 0)),
              "Value('Net::Flow', ** {'protocol': 'Protocol(9)', 'port': 0, 'open': False, "
              "'peer': 0})");
}

TEST(Value, LogsItsFieldsInOrder) {
    const std::vector<U8> bytes = {0,    0,    0,    1,    0,    53,   1,   0xff,
                                   0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
    EXPECT_EQ(logged(sample), bytes);
    EXPECT_EQ(fromLog<Flow>(bytes), sample);
}

TEST(Value, HashesFieldsByTheirBytes) {
    ByteMix mix;
    for (const int byte : {1, 0, 0, 0, 53, 0, 1, 255, 255, 255, 255, 255, 255, 255, 255})
        mix.add(static_cast<U8>(byte));
    EXPECT_EQ(sample.hash(), mix.value());
    EXPECT_EQ(Port(77).hash(), 77u);
    const std::unordered_set<Port> set = {Port(1), Port(2), Port(1)};
    EXPECT_EQ(set.size(), 2u);
}

TEST(Value, AFailedReadMovesNoCursorAndTouchesNoTarget) {
    const String8 broken("Value('Net::Flow', ** {'port': 7, 'open': 2})");
    auto pos = broken.begin();
    EXPECT_THROW(Flow(pos, broken.end()), RangeException);
    EXPECT_EQ(pos.column(), 0);
}

// Blanks wherever the grammar lets them stand: the value is the same, by the other path.
TEST(Value, ReadsThePrintedFormAndTheGrammarAlike) {
    std::mt19937 random(6);
    for (int round = 0; round < 2000; ++round) {
        const Flow value(static_cast<Protocol>(random() % 2), Port(static_cast<U16>(random())),
                         random() % 2 == 0, U64{random()} << (random() % 33));
        const std::string exact = text(value);
        ASSERT_EQ(parsed<Flow>(exact), value);
        std::string spaced;
        bool quoted = false;
        for (std::size_t i = 0; i < exact.size(); ++i) {
            const char c = exact[i];
            const bool token = std::string_view("(,{}):").find(c) != std::string_view::npos;
            if (token && !quoted && random() % 3 == 0) spaced += "  ";
            spaced += c;
            if (c == '\'') quoted = !quoted;
        }
        ASSERT_EQ(parsed<Flow>(" " + spaced + " \n"), value) << spaced;
    }
}

TEST(Value, RefusesEveryCutText) {
    const std::string whole = printed;
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_NE(parseError<Flow>(whole.substr(0, length)), "") << length;
}

TEST(Value, AdaptersWrapCopies) {
    auto* type = ValueType<Port>::instance();
    EXPECT_EQ(Port::_fwkType(), type);
    EXPECT_EQ(type->name(), "Port");
    EXPECT_EQ(type->qualifiedName(), "Net::Port");
    const Port port(80);
    const Ptr<GenericIf> byAddress = type->genericIf(static_cast<const void*>(&port), true);
    const Ptr<GenericIf> byText = type->genericIf(String8("443"), false);
    const Ptr<GenericIf> byOther = type->genericIf(byText.ptr(), false);
    EXPECT_EQ(byAddress->strRep(), "80");
    EXPECT_TRUE(byAddress->isConst());
    EXPECT_EQ(byOther->strRep(), "443");
    EXPECT_EQ(byText->clone()->strRep(), "443");
    EXPECT_EQ(byText->type(), type);
    const Ptr<GenericIf> foreign =
        ValueType<Flow>::instance()->genericIf(static_cast<const void*>(&sample), false);
    EXPECT_FALSE(type->genericIf(foreign.ptr(), false));
    auto& wrapper = static_cast<ValueGenericIf<Port>&>(*byText);
    wrapper.valIs(Port(1));
    EXPECT_EQ(wrapper.val(), Port(1));
    wrapper.GenericIf_Is(Port(2), true);
    EXPECT_TRUE(wrapper.isConst());
    try {
        (void)type->genericIf(String8("12!"), false);
        FAIL() << "12! was read";
    } catch (const RangeException& error) {
        EXPECT_STREQ(error.what(), "junk at column 2 deserializing 12!");
    }
}

} // namespace
} // namespace Vel
