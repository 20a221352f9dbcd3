// A refinement has no schema of its own: it would take its base's, and the name.
// GCC: 'Vel::Refused::SchemaIsOfAnotherType<Net::LowPort, Net::Port> refused' has incomplete type
// Clang: implicit instantiation of undefined template 'Vel::Refused::SchemaIsOfAnotherType<Net::LowPort, Net::Port>'
#include <Vel/Value.h>
#include <Vel/value/Define.h>

namespace Net {

class Port : public Vel::Value<Port> {
public:
    VEL_VALUE(Port)
    constexpr Port() noexcept = default;

    static constexpr auto schema() {
        return Vel::scalarSchema<Port>("Net::Port")
            .stored(2, "number", &Port::number_)
            .hashedBy(Vel::Hash::plainValue, 3);
    }

private:
    Vel::U16 number_ = 0;
};

VEL_VALUE_FUNCTIONS(, Port);
VEL_DEFINE_VALUE(Port)

class LowPort : public Vel::Refinement<LowPort, Port> {
public:
    VEL_VALUE(LowPort)
    constexpr LowPort() noexcept = default;

#ifndef MISTAKE
    static constexpr auto schema() {
        return Vel::schemaOf<Port>.refinedAs<LowPort>("Net::LowPort");
    }
#endif
};

VEL_VALUE_FUNCTIONS(, LowPort);
VEL_DEFINE_VALUE(LowPort)

} // namespace Net
