// UserMode.h - the role of a process that uses the access layer.
#pragma once

#include <Brixo/Export.h>
#include <Vel/value/EnumFunctions.h>

namespace Brixo {

VEL_ENUM(Brixo, UserMode, requester, serializer);

VEL_ENUM_FUNCTIONS(BRIXO_API, UserMode);

} // namespace Brixo
