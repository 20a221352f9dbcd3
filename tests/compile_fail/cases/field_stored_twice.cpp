// A field is stored twice, and another one not at all.
// GCC: 'Vel::Refused::TwoAttributesHaveOneField<Net::Clock, &Net::Clock::tick_> refused' has incomplete type
// Clang: implicit instantiation of undefined template 'Vel::Refused::TwoAttributesHaveOneField<Net::Clock, &Net::Clock::tick_>'
#include <Vel/Value.h>
#include <Vel/value/Define.h>

namespace Net {

class Clock : public Vel::Value<Clock> {
public:
    VEL_VALUE(Clock)
    constexpr Clock() noexcept = default;

    static constexpr auto schema() {
        return Vel::valueSchema<Clock>("Net::Clock")
            .stored(2, "tick", &Clock::tick_)
#ifdef MISTAKE
            .stored(3, "tock", &Clock::tick_);
#else
            .stored(3, "tock", &Clock::tock_);
#endif
    }

private:
    Vel::U32 tick_ = 0;
    Vel::U32 tock_ = 0;
};

VEL_VALUE_FUNCTIONS(, Clock);
VEL_DEFINE_VALUE(Clock)

} // namespace Net
