// An object's constructor does not take the fields that the schema names.
// GCC: 'Vel::Refused::ConstructorTakesNoSuchFields<Net::Table, &Net::Table::size_, &Net::Table::open_> refused' has incomplete type
// Clang: implicit instantiation of undefined template 'Vel::Refused::ConstructorTakesNoSuchFields<Net::Table, &Net::Table::size_, &Net::Table::open_>'
#include <Vel/PtrInterface.h>
#include <Vel/value/DeclareEntity.h>
#include <Vel/value/ObjectType.h>

namespace Net {

class Table : public Vel::PtrInterface {
public:
    VEL_ENTITY(Table)

    explicit Table(Vel::U32 size) : size_(size) {}

    static constexpr auto schema() {
        return Vel::entitySchema<Table>("Net::Table")
            .stored(130, "size", &Table::size_)
            .stored(131, "open", &Table::open_)
#ifdef MISTAKE
            .constructedFrom("size", "open");
#else
            .constructedFrom("size");
#endif
    }

private:
    Vel::U32 size_;
    bool open_ = false;
};

VEL_DEFINE_ENTITY(Table)

} // namespace Net
