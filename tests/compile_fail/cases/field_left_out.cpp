// A field of a value is not in its schema.
// GCC: 'Vel::Refused::FieldsAreLeftOut<Net::Clock, 4> refused' has incomplete type
// Clang: implicit instantiation of undefined template 'Vel::Refused::FieldsAreLeftOut<Net::Clock, 4>'
#include <Vel/Value.h>
#include <Vel/value/Define.h>

namespace Net {

class Clock : public Vel::Value<Clock> {
public:
    VEL_VALUE(Clock)
    constexpr Clock() noexcept = default;

    constexpr explicit Clock(Vel::U32 tick) noexcept : tick_(tick) {}

    static constexpr auto schema() {
        return Vel::valueSchema<Clock>("Net::Clock")
            .stored(2, "tick", &Clock::tick_)
#ifndef MISTAKE
            .stored(3, "tock", &Clock::tock_)
#endif
            .constructedFrom("tick");
    }

private:
    Vel::U32 tick_ = 0;
    Vel::U32 tock_ = 0;
};

VEL_VALUE_FUNCTIONS(, Clock);
VEL_DEFINE_VALUE(Clock)

} // namespace Net
