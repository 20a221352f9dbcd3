// A constructor's argument is named after no field.
// GCC: 'Vel::Refused::ConstructorArgumentIsNoField<Net::Clock, (& Vel::Refused::Name<'t', 'a', 'c', 'k'>::shown)> refused' has incomplete type
// Clang: implicit instantiation of undefined template 'Vel::Refused::ConstructorArgumentIsNoField<Net::Clock, &Vel::Refused::Name<'t', 'a', 'c', 'k'>::shown>'
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
            .constructedFrom("tick", "tack");
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
