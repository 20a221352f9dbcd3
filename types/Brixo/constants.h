// constants.h - numbers that clients of the access layer agree on. The library itself uses none of
// them.
#pragma once

#include <Brixo/Export.h>
#include <Vel/Integers.h>

namespace Brixo {

// Marks an unused entry of a hardware table.
BRIXO_API Vel::U32 unusedEntryPattern() noexcept;
// The largest bulk transaction, in bytes: 1 MiB.
BRIXO_API Vel::U32 maxBulkTransactionSizeInBytes() noexcept;

} // namespace Brixo
