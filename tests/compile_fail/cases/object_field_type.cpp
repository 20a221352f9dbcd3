// A field of an object is of a type that reflection does not know.
// GCC: 'Vel::Refused::FieldHasUnsupportedType<Net::Table, &Net::Table::owner_, long int> refused' has incomplete type
// Clang: implicit instantiation of undefined template 'Vel::Refused::FieldHasUnsupportedType<Net::Table, &Net::Table::owner_, long>'
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
            .stored(131, "owner", &Table::owner_)
            .constructedFrom("size");
    }

private:
    Vel::U32 size_;
#ifdef MISTAKE
    long owner_ = 0;
#else
    Vel::U32 owner_ = 0;
#endif
};

VEL_DEFINE_ENTITY(Table)

} // namespace Net
