#include <Brixo/ResourceIdToDataMaskMap.h>

namespace Brixo {

ResourceIdToDataMaskMap::ResourceIdToDataMaskMap() = default;

ResourceIdToDataMaskMap::~ResourceIdToDataMaskMap() = default;

Vel::Ptr<ResourceIdToDataMaskMap> resourceIdToDataMaskMapFactory() {
    return new ResourceIdToDataMaskMap;
}

} // namespace Brixo
