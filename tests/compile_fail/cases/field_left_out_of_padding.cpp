// The field that is not in the schema takes no more room than what aligns the others.
// GCC: 'Vel::Refused::FieldsAreLeftOut<Net::Clock, 1> refused' has incomplete type
// Clang: implicit instantiation of undefined template 'Vel::Refused::FieldsAreLeftOut<Net::Clock, 1>'
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
            .stored(3, "tock", &Clock::tock_)
#ifndef MISTAKE
            .stored(4, "stopped", &Clock::stopped_)
#endif
            .constructedFrom("tick");
    }

private:
    Vel::U32 tick_ = 0;
    bool tock_ = false;
    bool stopped_ = false;
};

VEL_VALUE_FUNCTIONS(, Clock);
VEL_DEFINE_VALUE(Clock)

} // namespace Net
