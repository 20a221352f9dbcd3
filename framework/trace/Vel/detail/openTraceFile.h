// openTraceFile.h - the file that trace lines are appended to.
//
// Test: TraceHandle_test.cpp.
#pragma once

#include <string>

namespace Vel::detail {

// A descriptor above 2, closed on exec, of a regular file of the user's own, made with mode 0600 if
// nothing is there; or -1, and `why` says in words what it is instead. Follows no symbolic link,
// and waits for nobody.
int openTraceFile(const char* path, std::string& why);

} // namespace Vel::detail
