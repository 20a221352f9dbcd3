// PhysicalResourceIdCol.h - a set of physical resources, each found by its 64-bit id.
//
// Owns:    a node for each. Overwriting keeps the node.
// Threads: one at a time; nobody is notified.
#pragma once

#include <Brixo/Export.h>
#include <Brixo/PhysicalResourceId.h>
#include <Vel/Integers.h>
#include <Vel/KeyedCollection.h>
#include <Vel/MapMember.h>
#include <Vel/Ptr.h>
#include <Vel/PtrInterface.h>
#include <Vel/value/DeclareEntity.h>
#include <Vel/value/Schema.h>

namespace Brixo {

class BRIXO_API PhysicalResourceIdCol : public Vel::PtrInterface {
public:
    VEL_ENTITY(PhysicalResourceIdCol)

    class BRIXO_API VelResourceId final : public Vel::MapMember<Vel::U64, PhysicalResourceId> {
    public:
        explicit VelResourceId(const PhysicalResourceId& value) : MapMember(keyOf(value), value) {}

        static Vel::U64 keyOf(const PhysicalResourceId& value) noexcept { return value.id(); }
    };

    using ResourceId = Vel::KeyedCollection<VelResourceId>;

    PhysicalResourceIdCol();
    ~PhysicalResourceIdCol() override;

    const ResourceId& resourceId() const noexcept { return resourceId_; }

    // The resource with that id, a default one when there is none.
    PhysicalResourceId resourceId(const Vel::U64& id) const { return resourceId_.value(id); }

    Vel::U32 resourceIds() const noexcept { return resourceId_.count(); }

    // For an id that is not there yet.
    Vel::Ptr<VelResourceId> newResourceId(const PhysicalResourceId& value) {
        return resourceId_.create(value);
    }

    // Overwrites the resource with the same id as a whole, or adds it.
    void resourceIdIs(const PhysicalResourceId& value) { resourceId_.set(value); }

    void resourceIdDel(const Vel::U64& id) { resourceId_.del(id); }

    void resourceIdDel(ResourceId::Iterator& position) { resourceId_.del(position); }

    void resourceIdDelAll() noexcept { resourceId_.delAll(); }

    void resourceIdNotify(const Vel::U64&) noexcept {}

    static constexpr auto schema();

private:
    ResourceId resourceId_;
};

constexpr auto PhysicalResourceIdCol::schema() {
    return Vel::entitySchema<PhysicalResourceIdCol>("Brixo::PhysicalResourceIdCol")
        .collection(130, "resourceId", &PhysicalResourceIdCol::resourceId_);
}

} // namespace Brixo
