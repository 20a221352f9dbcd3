// lttng_peer.h - LTTng's tracepoint with the arguments of our message. Read twice by LTTng's own
// headers, hence no pragma.
#undef LTTNG_UST_TRACEPOINT_PROVIDER
#define LTTNG_UST_TRACEPOINT_PROVIDER brixo_bench

#undef LTTNG_UST_TRACEPOINT_INCLUDE
#define LTTNG_UST_TRACEPOINT_INCLUDE "lttng_peer.h"

#if !defined(LTTNG_PEER_H) || defined(LTTNG_UST_TRACEPOINT_HEADER_MULTI_READ)
    #define LTTNG_PEER_H

    #include <lttng/tracepoint.h>

LTTNG_UST_TRACEPOINT_EVENT(brixo_bench, recovered_entry,
                           LTTNG_UST_TP_ARGS(unsigned, index, unsigned, key),
                           LTTNG_UST_TP_FIELDS(lttng_ust_field_integer(unsigned, index, index)
                                                   lttng_ust_field_integer(unsigned, key, key)))

#endif

#include <lttng/tracepoint-event.h>
