// lttng_calls.h - what the trace benchmarks ask of LTTng.
#pragma once

// Whether a session records the tracepoint; scripts/bench makes one around the run.
bool lttngIsRecording();
// One message of two integers.
void lttngTrace(unsigned index, unsigned key);
