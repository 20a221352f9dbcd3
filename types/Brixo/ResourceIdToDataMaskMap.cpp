#include <Brixo/ResourceIdToDataMaskMap.h>

#include <Vel/value/ObjectType.h>

namespace Brixo {

VEL_DEFINE_ENTITY(ResourceIdToDataMaskMap)

ResourceIdToDataMaskMap::ResourceIdToDataMaskMap() = default;

ResourceIdToDataMaskMap::~ResourceIdToDataMaskMap() = default;

Vel::Ptr<ResourceIdToDataMaskMap> resourceIdToDataMaskMapFactory() {
    return new ResourceIdToDataMaskMap;
}

} // namespace Brixo
