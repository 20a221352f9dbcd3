#include <Vel/strepToValue.h>

#include <Vel/RangeException.h>
#include <Vel/testing/NetTypes.h>
#include <Vel/valueToStrep.h>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>

namespace Vel {
namespace {

// What a whole text is read as, or what is thrown behind "! ", with the value that was there
// before.
template <class T>
std::string read(const char* text, T value) {
    try {
        strepToValue<T>(String8(text), &value);
        return valueToStrep(value).charPtr();
    } catch (const RangeException& refused) {
        return std::string("! ") + refused.what() + " ! " + valueToStrep(value).charPtr();
    }
}

TEST(strepToValue, ReadsAWholeTextOfEveryKindOfType) {
    EXPECT_EQ(read("443", Net::Port(1)), "443");
    EXPECT_EQ(read("80", Net::LowPort(1)), "80");
    EXPECT_EQ(read("'udp'", Net::Protocol::tcp), "'udp'");
    const char* const endpoint = "Value('Net::Endpoint', ** {'protocol': 'udp', 'port': 53})";
    EXPECT_EQ(read(endpoint, Net::Endpoint()), endpoint);
    EXPECT_EQ(read("True", false), "True");
    EXPECT_EQ(read("18446744073709551615", U64{0}), "18446744073709551615");
}

TEST(strepToValue, RefusesWhatIsLeftOverAndLeavesTheValueAlone) {
    EXPECT_EQ(read("443!", Net::Port(1)), "! junk at column 3 deserializing 443! ! 1");
    EXPECT_EQ(read("80 ", Net::LowPort(1)), "! junk at column 2 deserializing 80  ! 1");
    EXPECT_EQ(read("'tcp'x", Net::Protocol::udp),
              "! junk at column 5 deserializing 'tcp'x ! 'udp'");
    EXPECT_EQ(read("Value('Net::Endpoint', ** {'port': 53})xyz", Net::Endpoint()),
              "! junk at column 39 deserializing Value('Net::Endpoint', ** {'port': 53})xyz ! "
              "Value('Net::Endpoint', ** {'protocol': 'tcp', 'port': 0})");
}

TEST(strepToValue, PassesOnWhatTheTypesReaderThrows) {
    EXPECT_EQ(read("icmp", Net::Protocol::udp),
              "! cannot convert \"icmp\" at column 0 to String8 ! 'udp'");
    EXPECT_EQ(read("'icmp'", Net::Protocol::udp), "! Protocol ! 'udp'");
    EXPECT_EQ(read("", Net::Port(1)),
              "! in attribute 'value': cannot convert end of text at column 0 to long long ! 1");
    EXPECT_EQ(read("Value('Net::Endpoint', ** {", Net::Endpoint()),
              "! premature end of value type Endpoint ! "
              "Value('Net::Endpoint', ** {'protocol': 'tcp', 'port': 0})");
}

} // namespace
} // namespace Vel
