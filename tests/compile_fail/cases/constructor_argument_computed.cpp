// A constructor's argument is named after an attribute that is no field.
// GCC: 'Vel::Refused::ConstructorArgumentIsNoField<Net::Clock, (& Vel::Refused::Name<'h', 'a', 's', 'h'>::shown)> refused' has incomplete type
// Clang: implicit instantiation of undefined template 'Vel::Refused::ConstructorArgumentIsNoField<Net::Clock, &Vel::Refused::Name<'h', 'a', 's', 'h'>::shown>'
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
            .hashedBy(Vel::Hash::byteMix, 4)
#ifdef MISTAKE
            .constructedFrom("tick", "hash");
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
