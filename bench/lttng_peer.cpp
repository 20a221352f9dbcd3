// lttng_peer.cpp - the peer's tracepoint, apart from our code because its macros do not keep our
// warnings.
#include "lttng_calls.h"

#define LTTNG_UST_TRACEPOINT_CREATE_PROBES
#define LTTNG_UST_TRACEPOINT_DEFINE
#include "lttng_peer.h"

bool lttngIsRecording() { return lttng_ust_tracepoint_enabled(brixo_bench, recovered_entry); }

void lttngTrace(unsigned index, unsigned key) {
    lttng_ust_tracepoint(brixo_bench, recovered_entry, index, key);
}
