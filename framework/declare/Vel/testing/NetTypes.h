// NetTypes.h - a small module of every kind of type and attribute, for the tests of reflection.
// Include it in one source file of a test; the file says VEL_MODULE itself if it wants the types
// registered.
#pragma once

#include <Vel/KeyedCollection.h>
#include <Vel/MapLink.h>
#include <Vel/MapMember.h>
#include <Vel/Ptr.h>
#include <Vel/PtrInterface.h>
#include <Vel/TypeList.h>
#include <Vel/Value.h>
#include <Vel/value/DeclareEntity.h>
#include <Vel/value/Define.h>
#include <Vel/value/DefineEnum.h>
#include <Vel/value/ObjectType.h>

namespace Net {

VEL_ENUM(Net, Protocol, tcp, udp);
VEL_ENUM_FUNCTIONS(, Protocol);
VEL_DEFINE_ENUM(Protocol)

// A scalar with a constant.
class Port : public Vel::Value<Port> {
public:
    VEL_VALUE(Port)
    constexpr Port() noexcept = default;

    constexpr explicit Port(Vel::U16 number) noexcept : number_(number) {}

    constexpr Vel::U16 number() const noexcept { return number_; }

    static constexpr Vel::U16 null() noexcept { return 0xffff; }

    static constexpr auto schema() {
        return Vel::scalarSchema<Port>("Net::Port")
            .stored(2, "value", &Port::number_)
            .hashedBy(Vel::Hash::plainValue, 3, Vel::Introspection::plain)
            .constant(4, "null", &Port::null)
            .constructedFrom("value");
    }

private:
    Vel::U16 number_ = 0;
};

VEL_VALUE_FUNCTIONS(, Port);
VEL_DEFINE_VALUE(Port)

// A refinement with an attribute of its own.
class LowPort : public Vel::Refinement<LowPort, Port> {
public:
    VEL_VALUE(LowPort)
    constexpr LowPort() noexcept = default;

    constexpr explicit LowPort(Vel::U16 number) noexcept : Refinement(number) {}

    constexpr bool privileged() const noexcept { return number() < 1024; }

    static constexpr auto schema() {
        constexpr auto base = Vel::schemaOf<Port>.refinedAs<LowPort>("Net::LowPort");
        return base.computed(130, "privileged", &LowPort::privileged);
    }
};

VEL_VALUE_FUNCTIONS(, LowPort);
VEL_DEFINE_VALUE(LowPort)

// A structured value with a writer and functions.
class Endpoint : public Vel::Value<Endpoint> {
public:
    VEL_VALUE(Endpoint)
    constexpr Endpoint() noexcept = default;

    constexpr Endpoint(Protocol protocol, Port port) noexcept : protocol_(protocol), port_(port) {}

    constexpr Protocol protocol() const noexcept { return protocol_; }

    constexpr Port port() const noexcept { return port_; }

    constexpr void protocolIs(Protocol protocol) noexcept { protocol_ = protocol; }

    constexpr void move(Vel::U16 by, bool up) noexcept {
        port_ = Port(static_cast<Vel::U16>(up ? port_.number() + by : port_.number() - by));
    }

    constexpr Endpoint moved(Vel::U16 by) const noexcept {
        return {protocol_, Port(static_cast<Vel::U16>(port_.number() + by))};
    }

    static constexpr auto schema() {
        return Vel::valueSchema<Endpoint>("Net::Endpoint")
            .stored(2, "protocol", &Endpoint::protocol_, &Endpoint::protocolIs)
            .stored(3, "port", &Endpoint::port_)
            .function(4, "move", &Endpoint::move, "by", "up")
            .function(5, "moved", &Endpoint::moved, "by")
            .constructedFrom("protocol", "port");
    }

private:
    Protocol protocol_ = Protocol::tcp;
    Port port_;
};

VEL_VALUE_FUNCTIONS(, Endpoint);
VEL_DEFINE_VALUE(Endpoint)

// An object that is its own member in a Table.
class Route : public Vel::MapLink {
public:
    VEL_ENTITY(Route)
    using Key = Vel::U16;
    using Value = Vel::Ptr<Route>;

    explicit Route(Vel::U16 id) : id_(id) {}

    const Vel::U16& fwkKey() const noexcept { return id_; }

    bool up() const noexcept { return up_; }

    void upIs(bool up) noexcept { up_ = up; }

    static constexpr auto schema() {
        return Vel::entitySchema<Route>("Net::Route")
            .stored(130, "id", &Route::id_)
            .stored(131, "up", &Route::up_, &Route::upIs)
            .computed(0, "fwkKey", &Route::fwkKey, Vel::Introspection::plain)
            .constructedFrom("id");
    }

private:
    Vel::U16 id_;
    bool up_ = false;
};

VEL_DEFINE_ENTITY(Route)

// An object with a collection of each kind.
class Table : public Vel::PtrInterface {
public:
    VEL_ENTITY(Table)

    class Weight final : public Vel::MapMember<Vel::U16, Vel::U32> {
    public:
        using MapMember::MapMember;
    };

    class Peer final : public Vel::MapMember<Port, Endpoint> {
    public:
        explicit Peer(const Endpoint& value) : MapMember(keyOf(value), value) {}

        static Port keyOf(const Endpoint& value) noexcept { return value.port(); }
    };

    explicit Table(Vel::U32 size) : size_(size) {}

    Vel::U32 size() const noexcept { return size_; }

    const Vel::KeyedCollection<Route>& route() const noexcept { return route_; }

    void clear() { weight_.delAll(); }

    Vel::U32 sum(Vel::U16 from, Vel::U16 to) const {
        Vel::U32 all = 0;
        for (const auto& [key, value] : weight_) all += key >= from && key <= to ? value : 0;
        return all;
    }

    static constexpr auto schema() {
        return Vel::entitySchema<Table>("Net::Table")
            .stored(130, "size", &Table::size_)
            .collection(131, "weight", &Table::weight_)
            .collection(132, "peer", &Table::peer_)
            .collection(133, "route", &Table::route_)
            .function(134, "sum", &Table::sum, "from", "to")
            .procedure(135, "clear", &Table::clear)
            .constructedFrom("size");
    }

private:
    Vel::U32 size_;
    Vel::KeyedCollection<Weight> weight_;
    Vel::KeyedCollection<Peer> peer_;
    Vel::KeyedCollection<Route> route_;
};

VEL_DEFINE_ENTITY(Table)

// VEL_MODULE(netModule, Net::Types)
using Types = Vel::TypeList<Protocol, Port, LowPort, Endpoint, Route, Table>;

} // namespace Net
