// A value has no constructor that takes the fields that the schema names.
// GCC: 'Vel::Refused::ConstructorTakesNoSuchFields<Net::Clock, &Net::Clock::tick_, &Net::Clock::tock_, &Net::Clock::tick_> refused' has incomplete type
// Clang: implicit instantiation of undefined template 'Vel::Refused::ConstructorTakesNoSuchFields<Net::Clock, &Net::Clock::tick_, &Net::Clock::tock_, &Net::Clock::tick_>'
#include <Vel/Value.h>
#include <Vel/value/Define.h>

namespace Net {

class Clock : public Vel::Value<Clock> {
public:
    VEL_VALUE(Clock)
    constexpr Clock() noexcept = default;

    constexpr Clock(Vel::U32 tick, Vel::U32 tock) noexcept : tick_(tick), tock_(tock) {}

    static constexpr auto schema() {
        return Vel::valueSchema<Clock>("Net::Clock")
            .stored(2, "tick", &Clock::tick_)
            .stored(3, "tock", &Clock::tock_)
#ifdef MISTAKE
            .constructedFrom("tick", "tock", "tick");
#else
            .constructedFrom("tick", "tock");
#endif
    }

private:
    Vel::U32 tick_ = 0;
    Vel::U32 tock_ = 0;
};

VEL_VALUE_FUNCTIONS(, Clock);
VEL_DEFINE_VALUE(Clock)

} // namespace Net
