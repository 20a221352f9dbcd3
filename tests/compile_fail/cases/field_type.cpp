// A field of a value is of a type that has no text form and no place in a log.
// GCC: 'Vel::Refused::FieldHasUnsupportedType<Net::Host, &Net::Host::name_, std::__cxx11::basic_string<char> > refused' has incomplete type
// Clang: implicit instantiation of undefined template 'Vel::Refused::FieldHasUnsupportedType<Net::Host, &Net::Host::name_, std::basic_string<char>>'
#include <Vel/Value.h>
#include <Vel/value/Define.h>
#include <string>

namespace Net {

class Host : public Vel::Value<Host> {
public:
    VEL_VALUE(Host)
    Host() = default;

    static constexpr auto schema() {
        return Vel::valueSchema<Host>("Net::Host")
            .stored(2, "address", &Host::address_)
            .stored(3, "name", &Host::name_);
    }

private:
    Vel::U32 address_ = 0;
#ifdef MISTAKE
    std::string name_;
#else
    Vel::U64 name_ = 0;
#endif
};

VEL_VALUE_FUNCTIONS(, Host);
VEL_DEFINE_VALUE(Host)

} // namespace Net
