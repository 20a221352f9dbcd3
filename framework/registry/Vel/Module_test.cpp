#include <Vel/Module.h>

#include <Vel/DefineModule.h>
#include <Vel/IntrospectionReactor.h>
#include <Vel/TypeSection.h>
#include <Vel/testing/AssertionTesting.h>
#include <Vel/testing/NetTypes.h>
#include <array>
#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace Net {

// It calls itself as another type does.
class OtherPort : public Vel::Value<OtherPort> {
public:
    VEL_VALUE(OtherPort)
    constexpr OtherPort() noexcept = default;

    static constexpr auto schema() {
        return Vel::scalarSchema<OtherPort>("Net::Port").stored(2, "value", &OtherPort::number_);
    }

private:
    Vel::U32 number_ = 0;
};

VEL_VALUE_FUNCTIONS(, OtherPort);
VEL_DEFINE_VALUE(OtherPort)

} // namespace Net

VEL_MODULE(netModule, Net::Types)

namespace Late {

VEL_ENUM(Late, Season, spring, autumn);
VEL_ENUM_FUNCTIONS(, Season);
VEL_DEFINE_ENUM(Season)

} // namespace Late

namespace Vel {
namespace {

// Writes down what it is told, and may fail at an attribute.
class Recorder : public IntrospectionReactor {
public:
    void handleNameSpace(const char* name) override {
        said += std::string("namespace ") + name + "\n";
        IntrospectionReactor::handleNameSpace(name);
    }

    void handleType(const Ptr<const VelType>& type, const Ptr<const VelType>& other) override {
        said += "type " + std::string(type->name()) + (other ? " other" : "") + "\n";
        IntrospectionReactor::handleType(type, other);
    }

    void handleScopeExit() override {
        said += "exit " + openScope() + "\n";
        IntrospectionReactor::handleScopeExit();
    }

    VelAttr* defNoninstantiatingAttr(const Ptr<VelType>& type, Name name,
                                     const Ptr<VelType>& attrType, const Ptr<VelType>& scopeType,
                                     VelAttr::AttrFlags flags,
                                     VelAttr::VelAttrIntrospectionFlags introspection,
                                     AttributeId id) override {
        said += "attr " + std::string(name) + " " + std::to_string(id) + "\n";
        if (name == failAt) throw std::runtime_error("no memory for an attribute");
        return IntrospectionReactor::defNoninstantiatingAttr(type, name, attrType, scopeType, flags,
                                                             introspection, id);
    }

    void handleAttr(const Ptr<VelAttr>& attr) override {
        said += "context " + std::string(attr->name());
        for (std::size_t i = 0; i < attr->arguments().size(); ++i)
            said += " " + std::string(attr->arguments().name(i)) + ":" +
                    std::string(attr->arguments().typeName(i));
        IntrospectionReactor::handleAttr(attr);
    }

    void handleAttrContextExit() override {
        said += " end\n";
        IntrospectionReactor::handleAttrContextExit();
    }

    std::string said;
    Name failAt;
};

class ModuleTest : public testing::Test {
protected:
    ModuleTest() { IntrospectionReactor::globalIs(recorder); }

    ~ModuleTest() override { IntrospectionReactor::globalIs(before_); }

    const Ptr<Recorder> recorder = new Recorder;
    Module ports{detail::moduleTypes<Net::Port, Net::LowPort>};
    Module endpoints{detail::moduleTypes<Net::Endpoint, Net::Table>};

private:
    const Ptr<IntrospectionReactor> before_ = IntrospectionReactor::global();
};

TEST_F(ModuleTest, TellsTheRegistrarEachTypeInOrder) {
    ports.registerTypes();
    EXPECT_EQ(recorder->said, "namespace Net\n"
                              "type Port\nattr value 2\nattr hash 3\nattr null 4\nexit Net::Port\n"
                              "type LowPort\nattr privileged 130\nexit Net::LowPort\n"
                              "exit Net\n");
    ASSERT_EQ(recorder->types().size(), 2u);
    EXPECT_EQ(recorder->types()[0], Net::Port::_fwkType());
    EXPECT_EQ(recorder->openScope(), "");
    EXPECT_EQ(Net::Port::_fwkType()->valueAttr(), Net::Port::_fwkType()->attr("value"));
}

TEST_F(ModuleTest, TellsArgumentsAndKeysWithTheirAttribute) {
    endpoints.registerTypes();
    EXPECT_EQ(recorder->said,
              "namespace Net\n"
              "type Endpoint\nattr protocol 2\nattr port 3\n"
              "context move by:U16 up:bool end\ncontext moved by:U16 end\nexit Net::Endpoint\n"
              "type Table\nattr size 130\nattr weight 131\n"
              "context peer end\ncontext route id:U16 end\n"
              "context sum from:U16 to:U16 end\nattr clear 135\nexit Net::Table\n"
              "exit Net\n");
    EXPECT_EQ(Net::Endpoint::_fwkType()->valueAttr(), nullptr);
}

TEST_F(ModuleTest, RegistersOnceHoweverOftenItIsAsked) {
    static Module loaded{
        detail::moduleTypes<Net::Port>}; // what was loaded is looked at until the process ends
    loaded.registerTypes();
    loaded.registerTypes();
    loaded.load();
    loaded.load();
    EXPECT_TRUE(loaded.isRegistered());
    EXPECT_EQ(recorder->said.find("type Port", recorder->said.find("type Port") + 1),
              std::string::npos);
}

TEST_F(ModuleTest, AnInactiveRegistrarLeavesItCallable) {
    recorder->activeIs(false);
    ports.registerTypes();
    EXPECT_EQ(recorder->said, "");
    EXPECT_FALSE(ports.isRegistered());
    recorder->activeIs(true);
    ports.registerTypes();
    EXPECT_TRUE(ports.isRegistered());
    EXPECT_EQ(recorder->types().size(), 2u);
}

// A descriptor that is not ready before somebody else asks for the type, too.
std::atomic<bool> isBinding = false;
std::atomic<bool> isAskedFor = false;

VelType* lateSeason() {
    isBinding = true;
    while (!isAskedFor) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(20)); // until he waits, as a rule
    return Late::_fwkType_Season();
}

constexpr TypeDescription lateDescription = [] {
    TypeDescription description = descriptionOf<Late::Season>;
    description.type = &lateSeason;
    return description;
}();

constexpr std::array<const TypeDescription*, 1> lateTypes = {&lateDescription};

TEST_F(ModuleTest, WhoLooksATypeUpWhileAnotherThreadBindsItFindsIt) {
    recorder->activeIs(false);
    static Module late{lateTypes};
    late.load();
    const VelType* first = nullptr;
    std::thread other([&first] { first = VelType::typeNode("Late::Season"); });
    while (!isBinding) std::this_thread::yield();
    isAskedFor = true;
    EXPECT_EQ(VelType::typeNode("Late::Season"), Late::_fwkType_Season());
    other.join();
    EXPECT_EQ(first, Late::_fwkType_Season());
}

TEST_F(ModuleTest, WhatTheRegistrarThrowsLeavesTheGuardSetAndNoScopeOpen) {
    recorder->failAt = "hash";
    EXPECT_THROW(ports.registerTypes(), std::runtime_error);
    EXPECT_TRUE(ports.isRegistered());
    EXPECT_EQ(recorder->openScope(), "");
    recorder->said.clear();
    ports.registerTypes();
    EXPECT_EQ(recorder->said, "");
}

TEST_F(ModuleTest, ReRegistrationReplacesAFunctionAttribute) {
    endpoints.registerTypes();
    VelAttr* const first = Net::Endpoint::_fwkType()->attr("move");
    const std::size_t attributes = Net::Endpoint::_fwkType()->attrs().size();
    Module again{detail::moduleTypes<Net::Endpoint>};
    again.registerTypes();
    VelAttr* const second = Net::Endpoint::_fwkType()->attr("move");
    EXPECT_NE(first, second);
    EXPECT_EQ(second->arguments().size(), 2u);
    EXPECT_EQ(Net::Endpoint::_fwkType()->attrs().size(), attributes);
    EXPECT_EQ(Net::Endpoint::_fwkType()->constructorArguments().size(), 2u);
}

TEST(Module, TypesAreKnownByNameOnceItIsLoaded) {
    EXPECT_EQ(VelType::typeNode("Net::LowPort"), Net::LowPort::_fwkType());
    EXPECT_EQ(VelType::typeNode("Net::Protocol"), Net::_fwkType_Protocol());
    EXPECT_EQ(VelType::typeNode("Net::Nothing"), nullptr);
}

TEST(Module, TheRoutineIsEffectiveOnce) {
    VelAttr* const before = Net::Endpoint::_fwkType()->attr("move");
    netModule();
    EXPECT_EQ(Net::Endpoint::_fwkType()->attr("move"), before);
}

TEST(ModuleDeathTest, TwoTypesOfOneNameAreNamed) {
    static Module loaded{detail::moduleTypes<Net::OtherPort>};
    const char* const text = "no two types have one name; name = Net::Port";
    const auto fails = [text](const char* function) {
        return Testing::assertionFailed("VelType.cpp", text, function);
    };
    const auto matcher =
        testing::AnyOf(fails("static void Vel::VelType::typeNodeIs(Vel::VelType*, Vel::Name)"),
                       fails("static void Vel::VelType::typeNodeIs(Vel::VelType *, Vel::Name)"));
    EXPECT_DEATH(loaded.load(), matcher);
    EXPECT_DEATH(
        {
            IntrospectionReactor::global()->activeIs(false);
            loaded.load();
            (void)VelType::typeNode("Net::Port");
        },
        matcher);
}

TEST(Module, ItsNamesStandInTheSectionTheLastTypeFirst) {
    const std::vector<String8> names = typeSectionOfFile("/proc/self/exe");
    const std::vector<String8> expected = {"Net::Table",   "Net::Route", "Net::Endpoint",
                                           "Net::LowPort", "Net::Port",  "Net::Protocol"};
    EXPECT_EQ(names, expected);
}

TEST(Module, AMemberOfACollectionHasAKeyAttribute) {
    const VelAttr* const peer = Net::Table::_fwkType()->attr("peer");
    ASSERT_NE(peer->keyAttr(), nullptr);
    EXPECT_EQ(peer->keyAttr()->name(), "port");
    EXPECT_EQ(peer->keyAttr()->scope(), Net::Endpoint::_fwkType());
    EXPECT_EQ(peer->keyType(), Net::Port::_fwkType());
    EXPECT_EQ(peer->type(), Net::Endpoint::_fwkType());
    const VelAttr* const weight = Net::Table::_fwkType()->attr("weight");
    EXPECT_EQ(weight->keyAttr(), nullptr);
    EXPECT_EQ(weight->keyType()->name(), "U16");
}

} // namespace
} // namespace Vel
