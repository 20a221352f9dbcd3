// A module that is loaded by name and stands on the libraries, as an agent's own may.
#include <Brixo/Brixo.h>

extern "C" [[gnu::visibility("default")]] bool useTheLibraries();

// Leaves behind, for the thread that calls it, what the libraries keep for each thread: its lists
// of free memory and its place in the trace.
bool useTheLibraries() {
    const Brixo::CacheTableIndex tableId(Brixo::DeviceId(1), Brixo::PhysicalTableId(7));
    const Vel::Ptr<Brixo::CacheTable> table =
        Brixo::cacheTableFactory(Brixo::AgentId(1), tableId, 100, 8);
    for (Vel::U32 offset = 0; offset < 100; ++offset)
        table->entryIs_py(Brixo::DeviceOffset(offset), offset);
    const Vel::Ptr<Brixo::DalProcessingStatusCol> statuses = new Brixo::DalProcessingStatusCol;
    for (Vel::U8 dal = 0; dal < 100; ++dal) statuses->processingStatusIs(Brixo::DalId(dal));
    return table->keyToIndexs() == 100 && statuses->processingStatuss() == 100;
}
