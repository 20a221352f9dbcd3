// An attribute takes the id of an inherited one.
// GCC: 'Vel::Refused::TwoAttributesHaveOneId<Net::LowPort, (& Vel::Refused::Name<'h', 'a', 's', 'h'>::shown), &Net::LowPort::privileged> refused' has incomplete type
// Clang: implicit instantiation of undefined template 'Vel::Refused::TwoAttributesHaveOneId<Net::LowPort, &Vel::Refused::Name<'h', 'a', 's', 'h'>::shown, &Net::LowPort::privileged>'
#include <Vel/Value.h>
#include <Vel/value/Define.h>

namespace Net {

class Port : public Vel::Value<Port> {
public:
    VEL_VALUE(Port)
    constexpr Port() noexcept = default;

    constexpr Vel::U16 number() const noexcept { return number_; }

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

    constexpr bool privileged() const noexcept { return number() < 1024; }

    static constexpr auto schema() {
        return Vel::schemaOf<Port>
            .refinedAs<LowPort>("Net::LowPort")
#ifdef MISTAKE
            .computed(3, "privileged", &LowPort::privileged);
#else
            .computed(130, "privileged", &LowPort::privileged);
#endif
    }
};

VEL_VALUE_FUNCTIONS(, LowPort);
VEL_DEFINE_VALUE(LowPort)

} // namespace Net
