// ResourceIdToDataMaskMap.h - which data mask applies to a physical resource.
//
// Owns:    a node for each. Overwriting keeps the node.
// Threads: one at a time; nobody is notified.
#pragma once

#include <Brixo/Export.h>
#include <Brixo/PhysicalResourceId.h>
#include <Brixo/RequesterDataMask.h>
#include <Vel/Integers.h>
#include <Vel/KeyedCollection.h>
#include <Vel/MapMember.h>
#include <Vel/Ptr.h>
#include <Vel/PtrInterface.h>
#include <Vel/value/DeclareEntity.h>
#include <Vel/value/Schema.h>

namespace Brixo {

class BRIXO_API ResourceIdToDataMaskMap : public Vel::PtrInterface {
public:
    VEL_ENTITY(ResourceIdToDataMaskMap)

    class BRIXO_API VelDataMask final
        : public Vel::MapMember<PhysicalResourceId, RequesterDataMask> {
    public:
        using MapMember::MapMember;
    };

    using DataMask = Vel::KeyedCollection<VelDataMask>;

    ResourceIdToDataMaskMap();
    ~ResourceIdToDataMaskMap() override;

    const DataMask& dataMask() const noexcept { return dataMask_; }

    // A default mask when there is none.
    RequesterDataMask dataMask(const PhysicalResourceId& id) const { return dataMask_.value(id); }

    Vel::U32 dataMasks() const noexcept { return dataMask_.count(); }

    // For a resource that has none yet.
    Vel::Ptr<VelDataMask> newDataMask(const PhysicalResourceId& id, const RequesterDataMask& mask) {
        return dataMask_.create(id, mask);
    }

    void dataMaskIs(const PhysicalResourceId& id, const RequesterDataMask& mask) {
        dataMask_.set(id, mask);
    }

    void dataMaskDel(const PhysicalResourceId& id) { dataMask_.del(id); }

    void dataMaskDel(DataMask::Iterator& position) { dataMask_.del(position); }

    void dataMaskDelAll() noexcept { dataMask_.delAll(); }

    void dataMaskNotify(const PhysicalResourceId&) noexcept {}

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
