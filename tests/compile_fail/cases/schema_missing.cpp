// A value type has no schema.
// GCC: 'Vel::Refused::SchemaIsMissing<Net::Port> refused' has incomplete type
// Clang: implicit instantiation of undefined template 'Vel::Refused::SchemaIsMissing<Net::Port>'
#include <Vel/Value.h>
#include <Vel/value/Define.h>

namespace Net {

class Port : public Vel::Value<Port> {
public:
    VEL_VALUE(Port)
    constexpr Port() noexcept = default;

#ifndef MISTAKE
    static constexpr auto schema() {
        return Vel::scalarSchema<Port>("Net::Port").stored(2, "number", &Port::number_);
    }
#endif

private:
    Vel::U16 number_ = 0;
};

VEL_VALUE_FUNCTIONS(, Port);
VEL_DEFINE_VALUE(Port)

} // namespace Net
