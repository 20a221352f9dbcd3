// An attribute of an object takes an id that is the framework's.
// GCC: 'Vel::Refused::IdIsBelow130<Net::Table, &Net::Table::size_> refused' has incomplete type
// Clang: implicit instantiation of undefined template 'Vel::Refused::IdIsBelow130<Net::Table, &Net::Table::size_>'
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
#ifdef MISTAKE
            .stored(129, "size", &Table::size_)
#else
            .stored(130, "size", &Table::size_)
#endif
            .constructedFrom("size");
    }

private:
    Vel::U32 size_;
};

VEL_DEFINE_ENTITY(Table)

} // namespace Net
