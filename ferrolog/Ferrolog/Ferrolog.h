// Ferrolog.h - one process-wide binary trace file: the calls, with C linkage.
//
// A message is a call site, described once in the file, and the raw 32-bit words of its arguments.
// They go straight into a memory-mapped file, so whatever was appended before a kill is readable
// after it, with no handler and no core dump. C++ call sites are written with FERROLOG (Trace.h);
// files are read with Reader.h or `ferrolog-cat`.
//
// Cost:     no file open: one load and one predicted branch at the call site. File open: a time
//           stamp and a handful of plain stores; no lock, no allocation, no formatting, no system
//           call.
// Loss:     the ring keeps the newest messages. How many it no longer holds is known exactly, per
//           call site.
// Threads:  every call may be made from any thread.
// Signals:  ferrolog_append may come from a handler, whatever that interrupted, also as the first
//           message, which opens the file: that allocates nothing and waits for nobody.
// Memory:   no call allocates with malloc or throws. Without address space an opening is ENOMEM.
// fork():   the child goes on in the same file as a life of its own. Not so after a bare clone() or
//           vfork(), which run no fork handlers: such a child must exec or exit without tracing.
#pragma once

#include <stdint.h> // NOLINT(modernize-deprecated-headers): this header is also C

#define FERROLOG_API __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

// One call site. The caller fills it, with static storage duration and texts that live as long, and
// sets `ticket` to 0; from then on the library owns `ticket`.
//
// `letters` has one letter for each argument, `format` one mark, '%' and that letter, where the
// argument is printed; a percent sign of the text itself is doubled. Lower case takes one word,
// upper case two, the low half first; no more than 15 words together:
//   i u   unsigned decimal        x   0x and lower-case hexadecimal        d   signed decimal
//   I U   the same for 64 bits    X                                        D
typedef struct ferrolog_site { /* NOLINT(modernize-use-using): C reads this, too */
    const char* file;          // where the message comes from; any text, it need not be a path
    const char* format;        // "Recovered entry, index: %i key: %i"
    const char* letters;       // "ii"
    uint32_t line;
    uint32_t ticket;
} ferrolog_site;

// 0: tracing is off. Anything else: call ferrolog_append. Read it, inline, before the arguments are
// computed. It starts non-zero, because the first call looks at the environment. Only the library
// writes it.
FERROLOG_API extern uint32_t ferrolog_state;

// Opens the trace file and turns tracing on; 0, or an errno value and one clear line on standard
// error.
//
// path       created with mode 0600 if absent, never opened through a symbolic link. A trace file
//            of an earlier life is continued: its messages stay until newer ones push them out. A
//            file that is not a whole trace file, has another ring size, or has little room left
//            for call sites is moved to PATH.1 (or .2 to .9), and a line says so; nothing is ever
//            overwritten, and when all nine exist, tracing stays off. An opening that fails leaves
//            nothing of what it made; what one leaves that was killed is made anew in its place.
//            One process and its forked children hold the file at a time.
//            Whoever shortens it meanwhile kills them (docs/trace-file.md).
// ringBytes  rounded up to a power of two from 16 KiB to 256 MiB. 0: the size the file has, or 1
//            MiB. All of it is reserved here, so a full file system is an answer of this call and
//            no bus error later.
//
// Without this call the first message opens the file that the environment variable FERROLOG_FILE
// names, with FERROLOG_SIZE bytes if that is set; messages that other threads and signal handlers
// have meanwhile are counted as lost, all under the call site Ferrolog:0. FERROLOG_CLOCK=monotonic
// takes times from CLOCK_MONOTONIC also where the time stamp counter would do. A set-user-id
// program ignores all three.
FERROLOG_API int ferrolog_open(const char* path, uint32_t ringBytes);

// Turns tracing off; the file can be opened again, here or elsewhere. A thread that is just
// appending comes to no harm, nor does the file; the thread's last message may be missing. So the
// addresses stay, with zeros in place of the file, until every thread that appended has ended or
// has appended to a later file, and that one is closed and the next one opened; a signal handler
// that interrupted an append before must have returned by then. Also forgets the environment.
FERROLOG_API void ferrolog_close(void);

// The last line that this library printed, without its newline; "" if there is none. Valid until
// the next one.
const FERROLOG_API char* ferrolog_error(void);

// Enters the call site into the open file, or finds it there by its content; 1 if it has an entry
// of its own now. 0: no file is open, or the file has no room for the site; its messages are then
// kept with their words but without their text. ferrolog_append does this by itself.
FERROLOG_API int ferrolog_register(ferrolog_site* site);

// Appends one message with the present time: as many words as the letters of the site take. Does
// nothing while no file is open.
FERROLOG_API void ferrolog_append(ferrolog_site* site, const uint32_t* words);

#ifdef __cplusplus
}
#endif
