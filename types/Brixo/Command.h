// Command.h - what a requester asks of an access layer.
#pragma once

#include <Brixo/Export.h>
#include <Vel/value/EnumFunctions.h>

namespace Brixo {

VEL_ENUM(Brixo, Command, writeCmd, readCmd, bulkWriteCmd, bulkReadCmd, bulkInitReadCmd,
         bulkInitFreeCmd);

VEL_ENUM_FUNCTIONS(BRIXO_API, Command);

} // namespace Brixo
