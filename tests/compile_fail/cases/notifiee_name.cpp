// The notifiees of a class have another name than NotifieeConst.
// GCC: 'Vel::Refused::NotifieeConstIsMissing<Net::Clock> refused' has incomplete type
// Clang: implicit instantiation of undefined template 'Vel::Refused::NotifieeConstIsMissing<Net::Clock>'
#include <Vel/Notifiee.h>
#include <Vel/Notifier.h>

namespace Net {

class Clock : public Vel::Notifier<Clock> {
public:
#ifdef MISTAKE
    class Listener : public Vel::Notifiee<Clock> {
#else
    class NotifieeConst : public Vel::Notifiee<Clock> {
#endif
    public:
        virtual void onTick() {}
    };

    void tick() {
        notify(130, [](auto& notifiee) { notifiee.onTick(); });
    }
};

} // namespace Net
