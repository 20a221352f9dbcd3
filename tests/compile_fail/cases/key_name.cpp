// An attribute that is not the key takes its id.
// GCC: 'Vel::Refused::IdIsBelow130<Net::Table, &Net::Table::fwkKey> refused' has incomplete type
// Clang: implicit instantiation of undefined template 'Vel::Refused::IdIsBelow130<Net::Table, &Net::Table::fwkKey>'
#include <Vel/PtrInterface.h>
#include <Vel/value/DeclareEntity.h>
#include <Vel/value/ObjectType.h>

namespace Net {

class Table : public Vel::PtrInterface {
public:
    VEL_ENTITY(Table)

    explicit Table(Vel::U32 size) : size_(size) {}

    const Vel::U32& fwkKey() const noexcept { return size_; }

    static constexpr auto schema() {
        return Vel::entitySchema<Table>("Net::Table")
            .stored(130, "size", &Table::size_)
#ifdef MISTAKE
            .computed(0, "key", &Table::fwkKey)
#else
            .computed(0, "fwkKey", &Table::fwkKey)
#endif
            .constructedFrom("size");
    }

private:
    Vel::U32 size_;
};

VEL_DEFINE_ENTITY(Table)

} // namespace Net
