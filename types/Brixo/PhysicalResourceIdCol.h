// PhysicalResourceIdCol.h - a set of physical resources, each found by its 64-bit id.
//
// Owns:    a node for each. Overwriting keeps the node.
// Threads: one at a time; nobody is notified.
#pragma once

#include <Brixo/Export.h>
#include <Brixo/PhysicalResourceId.h>
#include <Vel/CollectionAttribute.h>
#include <Vel/Integers.h>
#include <Vel/PtrInterface.h>
#include <Vel/value/DeclareEntity.h>
#include <Vel/value/Schema.h>

namespace Brixo {

class BRIXO_API PhysicalResourceIdCol : public Vel::PtrInterface {
public:
    VEL_ENTITY(PhysicalResourceIdCol)

    PhysicalResourceIdCol();
    ~PhysicalResourceIdCol() override;

    // resourceIdIs() overwrites the resource with the same id as a whole, or adds it.
    VEL_COLLECTION_BY(BRIXO_API, resourceId, ResourceId, Vel::U64, PhysicalResourceId, id);

    static constexpr auto schema();

private:
    ResourceId resourceId_;
};

constexpr auto PhysicalResourceIdCol::schema() {
    return Vel::entitySchema<PhysicalResourceIdCol>("Brixo::PhysicalResourceIdCol")
        .collection(130, "resourceId", &PhysicalResourceIdCol::resourceId_);
}

} // namespace Brixo
