// ResourceIdToDataMaskMap.h - which data mask applies to a physical resource.
//
// Owns:    a node for each. Overwriting keeps the node.
// Threads: one at a time; nobody is notified.
#pragma once

#include <Brixo/Export.h>
#include <Brixo/PhysicalResourceId.h>
#include <Brixo/RequesterDataMask.h>
#include <Vel/CollectionAttribute.h>
#include <Vel/Ptr.h>
#include <Vel/PtrInterface.h>
#include <Vel/value/DeclareEntity.h>
#include <Vel/value/Schema.h>

namespace Brixo {

class BRIXO_API ResourceIdToDataMaskMap : public Vel::PtrInterface {
public:
    VEL_ENTITY(ResourceIdToDataMaskMap)

    ResourceIdToDataMaskMap();
    ~ResourceIdToDataMaskMap() override;

    // The mask of a resource; a default one where there is none.
    VEL_COLLECTION(BRIXO_API, dataMask, DataMask, PhysicalResourceId, RequesterDataMask);

    static constexpr auto schema();

private:
    DataMask dataMask_;
};

// A new, empty map, with one reference.
BRIXO_API Vel::Ptr<ResourceIdToDataMaskMap> resourceIdToDataMaskMapFactory();

constexpr auto ResourceIdToDataMaskMap::schema() {
    return Vel::entitySchema<ResourceIdToDataMaskMap>("Brixo::ResourceIdToDataMaskMap")
        .collection(130, "dataMask", &ResourceIdToDataMaskMap::dataMask_);
}

} // namespace Brixo
