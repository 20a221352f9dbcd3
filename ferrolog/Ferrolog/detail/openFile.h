// openFile.h - how this library comes by a descriptor.
#pragma once

#include <sys/types.h>

namespace Ferrolog::detail {

// As open(2), close-on-exec; what a signal interrupts is done again. The descriptor is none of 0 to
// 2, also where a standard stream is closed: else what the program prints there later, its last
// words in particular, would land in the file.
int openFile(const char* path, int flags, mode_t mode = 0);

} // namespace Ferrolog::detail
