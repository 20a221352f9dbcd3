#include <Vel/Any.h>

#include <Vel/DefineModule.h>
#include <Vel/RangeException.h>
#include <Vel/ReflectionException.h>
#include <Vel/testing/NetTypes.h>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>

VEL_MODULE(netModule, Net::Types)

namespace Vel {
namespace {

// What a call gives as text, or what it throws behind "! ".
template <class Call>
std::string result(Call call) {
    try {
        if constexpr (std::is_void_v<decltype(call())>) {
            call();
            return "";
        } else {
            return call().text().charPtr();
        }
    } catch (const Exception& refused) {
        return std::string("! ") + refused.what();
    }
}

TEST(Any, IsMadeFromATextOrFromNamedArguments) {
    EXPECT_EQ(Any::parse("Net::Port", "443").text(), "443");
    const Any udp = Any::make("Net::Endpoint", {{"port", 53}, {"protocol", "udp"}});
    EXPECT_EQ(udp.text(), "Value('Net::Endpoint', ** {'protocol': 'udp', 'port': 53})");
    EXPECT_EQ(Any::parse("Net::Endpoint", udp.text()), udp);
    EXPECT_EQ(Any::make("Net::Protocol").text(), "'tcp'");
    EXPECT_EQ(Any::make("Net::Endpoint", {{"protocol", "'udp'"}, {"port", udp.get("port")}}), udp);
}

TEST(Any, SaysWhatItCannotMake) {
    EXPECT_EQ(result([] { return Any::make("Net::Endpiont"); }),
              "! there is no type Net::Endpiont; nearest: Net::Endpoint");
    EXPECT_EQ(result([] { return Any::make("Bus"); }), "! there is no type Bus");
    EXPECT_EQ(result([] {
                  return Any::make("Net::Endpoint", {{"port", 53}});
              }),
              "! Net::Endpoint lacks its argument protocol");
    EXPECT_EQ(result([] {
                  return Any::make("Net::Endpoint", {{"prot", 53}});
              }),
              "! Net::Endpoint has no argument prot; nearest: port");
    EXPECT_EQ(result([] {
                  return Any::make("Net::Endpoint", {{"protocol", "icmp"}, {"port", 1}});
              }),
              "! Protocol");
    EXPECT_EQ(result([] { return Any::parse("Net::Port", "443!"); }),
              "! junk at column 3 deserializing 443!");
}

TEST(Any, AVeryLongNameIsRefusedInAFewWords) {
    const std::string written(std::size_t{1} << 20, 'a');
    const std::string shown(64, 'a');
    Any endpoint = Any::make("Net::Endpoint", {{"port", 53}, {"protocol", "udp"}});
    EXPECT_EQ(result([&] { return Any::make(written); }), "! there is no type " + shown + "...");
    EXPECT_EQ(result([&] { return endpoint.get(written); }),
              "! Net::Endpoint has no attribute " + shown + "...");
    EXPECT_EQ(result([&] {
                  return Any::make("Net::Endpoint", {{written, 53}});
              }),
              "! Net::Endpoint has no argument " + shown + "...");
    EXPECT_EQ(
        result([&] { (void)endpoint.adapter()->attributeId(String8(std::string_view(written))); }),
        "! Net::Endpoint has no attribute " + shown + "...");
    EXPECT_EQ(result([] {
                  return Any::parse("U8", String8(std::string_view(std::string(100, '0') + "256")));
              }),
              "! " + std::string(64, '0') + "... is out of range for U8");
}

TEST(Any, GetsAndSetsByName) {
    Any endpoint = Any::make("Net::Endpoint", {{"port", 53}, {"protocol", "udp"}});
    EXPECT_EQ(endpoint.get("port").get("value").as<U16>(), 53u);
    endpoint.set("protocol", "tcp");
    EXPECT_EQ(endpoint.get("protocol").as<Net::Protocol>(), Net::Protocol::tcp);
    EXPECT_EQ(result([&] { endpoint.set("port", 80); }),
              "! attribute port does not support operation 128");
    EXPECT_EQ(result([&] { return endpoint.get("prot"); }),
              "! Net::Endpoint has no attribute prot; nearest: port");
    EXPECT_EQ(result([&] { return endpoint.get("port", 1); }), "! attribute port takes no index");
    EXPECT_EQ(result([&] { endpoint.set("move", 1); }),
              "! attribute move does not support operation 128");
}

TEST(Any, ANumberHasToFitWhatItBecomes) {
    Any table = Any::make("Net::Table", {{"size", 8}});
    EXPECT_EQ(result([&] { table.set("weight", 65536, 1); }), "! 65536 is out of range for U16");
    EXPECT_EQ(result([&] { table.set("weight", 1, -1); }), "! -1 is out of range for U32");
    table.set("weight", 65535, 4294967295U);
    EXPECT_EQ(table.get("weight", 65535).as<U32>(), 4294967295U);
    EXPECT_EQ(table.count("weight"), 1u);
}

TEST(Any, AnAnyOfAnotherTypeIsReadAgainFromItsText) {
    const Any number = Any::parse("U64", "53");
    EXPECT_EQ(
        Any::make("Net::Endpoint", {{"protocol", "tcp"}, {"port", number}}).get("port").text(),
        "53");
    EXPECT_EQ(result([&] {
                  return Any::make("Net::Table", {{"size", Any::parse("U64", "4294967296")}});
              }),
              "! 4294967296 is out of range for U32");
}

TEST(Any, CallsFunctions) {
    Any endpoint = Any::make("Net::Endpoint", {{"port", 53}, {"protocol", "udp"}});
    EXPECT_FALSE(endpoint.call("move", {7, true}).has_value());
    EXPECT_EQ(endpoint.get("port").text(), "60");
    EXPECT_EQ(endpoint.call("moved", {3})->get("port").text(), "63");
    EXPECT_EQ(result([&] { (void)endpoint.call("move", {7}); }), "! move lacks its argument up");
    EXPECT_EQ(result([&] {
                  (void)endpoint.call("move", {7, true, 1});
              }),
              "! move takes 2 arguments");
    EXPECT_EQ(result([&] {
                  (void)endpoint.call("move", {7, "maybe"});
              }),
              result([&] { return Any::parse("bool", "maybe"); }));
}

TEST(Any, WorksWithCollections) {
    Any table = Any::make("Net::Table", {{"size", 8}});
    table.insert("route", {3});
    table.insert("route", {1});
    table.insert("route", {3});
    table.insert("peer", {"udp", 53});
    table.insert("peer", {Any::make("Net::Endpoint", {{"protocol", "tcp"}, {"port", 80}})});
    table.insert("weight", {1, 10});
    table.set("weight", 2, 20);
    EXPECT_EQ(table.count("route"), 2u);
    EXPECT_EQ(table.count("peer"), 2u);
    EXPECT_TRUE(table.has("peer", 53));
    EXPECT_FALSE(table.has("peer", 54));
    EXPECT_EQ(table.get("peer", 53).get("protocol").text(), "'udp'");
    EXPECT_EQ(table.call("sum", {1, 2})->as<U32>(), 30u);
    EXPECT_TRUE(table.get("route", 2).isNull());
    Any route = table.get("route", 3);
    EXPECT_FALSE(route.isNull());
    route.set("up", true);
    EXPECT_EQ(table.get("route", 3).get("up").text(), "True");
    EXPECT_EQ(table.get("route", 3), route);
    EXPECT_EQ(result([&] { table.insert("route", {}); }), "! route lacks its argument id");
    EXPECT_EQ(result([&] { table.insert("size", {1}); }), "! attribute size takes no index");
    EXPECT_EQ(table.del("weight", 1).text(), "10");
    EXPECT_EQ(table.del("weight", 1).text(), "0");
    EXPECT_EQ(table.del("peer", 53).get("protocol").text(), "'udp'");
    EXPECT_EQ(table.del("route", 3), route);
    EXPECT_TRUE(table.del("route", 3).isNull());
    EXPECT_EQ(result([&] { return table.del("size", 1); }), "! attribute size takes no index");
    EXPECT_EQ(table.count("weight"), 1u);
    table.delAll("weight");
    EXPECT_EQ(table.count("weight"), 0u);
}

TEST(Any, VisitsMembersAndLetsTheOneAtHandGo) {
    Any table = Any::make("Net::Table", {{"size", 8}});
    for (int key = 1; key <= 3; ++key) table.set("weight", key, 10 * key);
    std::string seen;
    table.forEachMember("weight", [&](const Any& key, const Any& value) {
        seen += std::string(key.text().charPtr()) + ":" + value.text().charPtr() + " ";
        if (key.text() == "1") table.del("weight", key);
    });
    EXPECT_EQ(seen, "2:20 1:10 3:30 ");
    EXPECT_EQ(table.count("weight"), 2u);
    EXPECT_EQ(result([&] { table.forEachMember("size", [](const Any&, const Any&) {}); }),
              "! Net::Table has no attribute 130");
}

TEST(Any, VisitsAttributesThoseOfTheBaseFirst) {
    std::string names;
    Any::parse("Net::LowPort", "80").forEachAttribute([&names](const VelAttr& attr) {
        names += std::string(attr.name()) + " ";
    });
    EXPECT_EQ(names, "value hash null privileged ");
}

TEST(Any, ComparesAndCopies) {
    Any endpoint = Any::make("Net::Endpoint", {{"port", 53}, {"protocol", "udp"}});
    Any same = endpoint;
    Any copy = endpoint.clone();
    endpoint.set("protocol", "tcp");
    EXPECT_EQ(same, endpoint);
    EXPECT_FALSE(copy == endpoint);
    EXPECT_FALSE(Any::parse("Net::Port", "1") == Any::parse("U16", "1"));
}

TEST(Any, GivesTheCppValueOfItsTypeAlone) {
    EXPECT_EQ(Any::parse("Net::LowPort", "80").as<Net::Port>(), Net::Port(80));
    const Any table = Any::make("Net::Table", {{"size", 8}});
    EXPECT_EQ(table.as<Ptr<Net::Table>>()->size(), 8u);
    EXPECT_EQ(result([] { (void)Any::parse("U16", "1").as<U32>(); }),
              "! argument U32 is missing or of another type");
}

TEST(AnyDeathTest, NeedsAnAdapter) {
    EXPECT_DEATH(Any(Ptr<GenericIf>()), "Any.cpp:[0-9]+: assertion failed: adapter != nullptr ");
}

} // namespace
} // namespace Vel
