// sequenceToValueOfPtr.h - reader of a reference to an object, as valueToStrepOfRawPtr() writes it.
//
// Reads:  None, or an entity's type and path, which is looked up below Entity::root().
// Cursor: moves behind the reference.
// Errors: RangeException; the cursor is as before then. Besides what is malformed:
//             no entity at '/system/table' for column 3
//             entity at '/system/table' for column 3 is no 'Port'
//             cannot resolve the address at column 24
#pragma once

#include <Vel/Export.h>
#include <Vel/PtrInterface.h>
#include <Vel/String8.h>

namespace Vel {

// The last argument only says that an object is read; pass a null pointer. The caller takes a
// reference to the result, which whoever holds the tree keeps alive.
VEL_API PtrInterface* sequenceToValueOfPtr(String8::IteratorConst& it,
                                           const String8::IteratorConst& end, PtrInterface* object);

} // namespace Vel
