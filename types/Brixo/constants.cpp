#include <Brixo/constants.h>

namespace Brixo {

Vel::U32 unusedEntryPattern() noexcept { return 0xdeadbeef; }

Vel::U32 maxBulkTransactionSizeInBytes() noexcept { return 0x100000; }

} // namespace Brixo
