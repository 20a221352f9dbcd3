// IoMemType.h - the kind of memory behind an I/O buffer.
#pragma once

#include <Brixo/Export.h>
#include <Vel/value/EnumFunctions.h>

namespace Brixo {

VEL_ENUM(Brixo, IoMemType, pinbufMem, mmapMem);

VEL_ENUM_FUNCTIONS(BRIXO_API, IoMemType);

} // namespace Brixo
