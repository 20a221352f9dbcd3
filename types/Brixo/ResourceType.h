// ResourceType.h - what kind of hardware resource.
#pragma once

#include <Brixo/Export.h>
#include <Vel/value/EnumFunctions.h>

namespace Brixo {

VEL_ENUM(Brixo, ResourceType, invalidResource, tableResource, registerResource);

VEL_ENUM_FUNCTIONS(BRIXO_API, ResourceType);

} // namespace Brixo
