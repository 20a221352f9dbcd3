// Mapping.h - regions mapped into this process, each once.
//
// Owns:      the mappings, until the process ends: an address handed out stays good.
// Invariant: behind the region's bytes follow zero bytes up to the end of its last page and at
//            least one page more, that page read-only.
// Threads:   no lock: the list of mappings only ever grows at its head, by one atomic exchange. So
//            a process forked while another thread maps finds the list whole, and inherits the
//            mappings that it names.
// Cost:      a walk over the mappings of the process, and two system calls for a new one.
#pragma once

#include <pinbuf/detail/FolderFile.h>

namespace pinbuf {

// The address of the whole of `file`, shared, readable and writable. A file that this process has
// mapped already (the same inode with the same size: a mapping keeps its inode from being used
// again) has its earlier address. Throws Failure when the file is empty or the address space has no
// room.
void* mapOnce(const FolderFile& file);

} // namespace pinbuf
