// LogicalRemoteResourceIdCol.h - the tables and registers that a remote requester touches, each
// with its data mask.
//
// Owns:    a node for each. Overwriting keeps the node.
// Threads: one at a time; nobody is notified.
#pragma once

#include <Brixo/Export.h>
#include <Brixo/LogicalRegisterId.h>
#include <Brixo/LogicalRemoteResourceId.h>
#include <Brixo/LogicalResourceId.h>
#include <Brixo/LogicalTableId.h>
#include <Brixo/RequesterDataMask.h>
#include <Vel/CollectionAttribute.h>
#include <Vel/Ptr.h>
#include <Vel/PtrInterface.h>
#include <Vel/value/DeclareEntity.h>
#include <Vel/value/Schema.h>

namespace Brixo {

class BRIXO_API LogicalRemoteResourceIdCol : public Vel::PtrInterface {
public:
    VEL_ENTITY(LogicalRemoteResourceIdCol)

    LogicalRemoteResourceIdCol();
    ~LogicalRemoteResourceIdCol() override;

    // Each with its mask. resourceIdIs() replaces the mask of the resource with the same id, or
    // adds it.
    VEL_COLLECTION_BY(BRIXO_API, resourceId, ResourceId, LogicalResourceId, LogicalRemoteResourceId,
                      id);

    // Each as resourceIdIs() does; without a mask, with a default one.
    void tableIdIs(LogicalTableId tid) { tableIdWithMaskIs(tid, RequesterDataMask()); }

    void tableIdWithMaskIs(LogicalTableId tid, const RequesterDataMask& mask) {
        resourceIdIs(LogicalRemoteResourceId(tid, mask));
    }

    void registerIdIs(LogicalRegisterId rid) { registerIdWithMaskIs(rid, RequesterDataMask()); }

    void registerIdWithMaskIs(LogicalRegisterId rid, const RequesterDataMask& mask) {
        resourceIdIs(LogicalRemoteResourceId(rid, mask));
    }

    static constexpr auto schema();

private:
    ResourceId resourceId_;
};

// A new, empty collection, with one reference.
BRIXO_API Vel::Ptr<LogicalRemoteResourceIdCol> logicalRemoteResourceIdColFactory();

constexpr auto LogicalRemoteResourceIdCol::schema() {
    using Self = LogicalRemoteResourceIdCol;
    return Vel::entitySchema<Self>("Brixo::LogicalRemoteResourceIdCol")
        .function(130, "tableIdIs", &Self::tableIdIs, "tid")
        .function(131, "tableIdWithMaskIs", &Self::tableIdWithMaskIs, "tid", "mask")
        .function(132, "registerIdIs", &Self::registerIdIs, "rid")
        .function(133, "registerIdWithMaskIs", &Self::registerIdWithMaskIs, "rid", "mask")
        .collection(134, "resourceId", &Self::resourceId_);
}

} // namespace Brixo
