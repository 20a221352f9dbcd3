// A field is not in the schema of a value that the compiler cannot make: it holds a collection.
// GCC: 'Vel::Refused::FieldsAreLeftOut<Net::Clock, 8> refused' has incomplete type
// Clang: implicit instantiation of undefined template 'Vel::Refused::FieldsAreLeftOut<Net::Clock, 8>'
#include <Vel/KeyedCollection.h>
#include <Vel/MapMember.h>
#include <Vel/Value.h>
#include <Vel/value/Define.h>

namespace Net {

class Clock : public Vel::Value<Clock> {
public:
    class Alarm final : public Vel::MapMember<Vel::U16, Vel::U8> {
    public:
        using MapMember::MapMember;
    };

    VEL_VALUE(Clock)
    Clock() = default;

    explicit Clock(Vel::U32 tick) noexcept : tick_(tick) {}

    static constexpr auto schema() {
        return Vel::valueSchema<Clock>("Net::Clock")
            .stored(2, "tick", &Clock::tick_)
#ifndef MISTAKE
            .stored(3, "tock", &Clock::tock_)
#endif
            .collection(4, "alarm", &Clock::alarm_)
            .constructedFrom("tick");
    }

private:
    Vel::U32 tick_ = 0;
    Vel::U64 tock_ = 0;
    Vel::KeyedCollection<Alarm> alarm_;
};

VEL_VALUE_FUNCTIONS(, Clock);
VEL_DEFINE_VALUE(Clock)

} // namespace Net
