// A scalar has two fields.
// GCC: 'Vel::Refused::ScalarIsNotOneInteger<Net::Clock> refused' has incomplete type
// Clang: implicit instantiation of undefined template 'Vel::Refused::ScalarIsNotOneInteger<Net::Clock>'
#include <Vel/Value.h>
#include <Vel/value/Define.h>

namespace Net {

class Clock : public Vel::Value<Clock> {
public:
    VEL_VALUE(Clock)
    constexpr Clock() noexcept = default;

    static constexpr auto schema() {
#ifdef MISTAKE
        return Vel::scalarSchema<Clock>("Net::Clock")
#else
        return Vel::valueSchema<Clock>("Net::Clock")
#endif
            .stored(2, "tick", &Clock::tick_)
            .stored(3, "tock", &Clock::tock_);
    }

private:
    Vel::U32 tick_ = 0;
    Vel::U32 tock_ = 0;
};

VEL_VALUE_FUNCTIONS(, Clock);
VEL_DEFINE_VALUE(Clock)

} // namespace Net
