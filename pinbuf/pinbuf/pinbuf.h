// pinbuf.h - named DMA regions: memory that outlives its process, at an address that all processes
// agree on.
//
// Address:  who gives the memory says what its physical address is good for. The back end that this
//           library has, "shm", gives ordinary shared memory: its addresses are agreed between
//           processes and are no bus addresses, so no device can use them. A platform whose
//           devices shall reach the regions links a libpinbuf of its own with these calls.
// Owns:     nothing on the caller's side. A region is one file, named after it, that holds exactly
//           the region's bytes. The process keeps two descriptors of files beside the regions.
// Lifetime: a region lives as long as its file. No call here ever unmaps, grows, cuts or removes a
//           region: the process may die and start again, and finds what it left. To remove a region
//           is an operator's decision (rm).
// Errors:   a call that fails writes one line to standard error that says which call, which region
//           and why, and pinbuf_error() gives the same line. A failure changes nothing that was
//           stored before.
//           A file larger than the process may make is such a failure, and not a signal.
// Threads:  every call may be made from any thread and from any number of processes at once. Making
//           regions is serialised by an advisory lock in the folder, so a call can wait for another
//           process that makes one; after a second a line on standard error says for which. The
//           environment is read at each call: do not change it while another thread is in one.
//           A thread is not cancelled inside a call. A child that was forked while another thread
//           was in one may make any call.
//
// Environment:
//   PINBUF_BACKEND  which back end gives the memory. "shm", also when unset or empty: files in a
//                   folder, no privilege.
//   PINBUF_DIR      folder of the regions. Unset or empty: /dev/shm/pinbuf-<effective user id>. It
//                   is made (mode 0700) when absent; it must belong to the user, be writable by
//                   nobody else and be no symbolic link. What its owner lacks of access to it he
//                   gets.
// Both are ignored in a program that has more rights than who started it (set-user-id and the
// like).
#pragma once

#define PINBUF_API __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

// Makes region `name` of `size` bytes, or finds it again, and returns its physical address, by
// outcome:
// (1) absent: made, all zero, its memory reserved now, so that a full file system is an answer of 0
//     and not a bus error later; a kill at any instruction leaves the region whole or absent, never
//     short;
// (2) exists with at least `size` bytes: returned with its contents, neither grown nor cut; a file
//     put there by other means becomes a region in this way. Size and owner stay on record as they
//     were when the region was made or found first;
// (3) anything else: 0. So also: an existing region that is shorter, is not a regular file of the
//     user's own, or is reached through a symbolic link; a size of 0; no room in the address
//     window.
// The address is a multiple of 4096 between 0x40000000 and 0xbfffffff, overlaps no other region's,
// and is the same for every process and every restart as long as the region lives.
// `name`:  1 to 127 bytes, none of them '/' or a control character, the first no '.'.
// `owner`: who asks, for people to read; null is "", and what exceeds 111 bytes is cut off.
// Cost:    some 20 system calls, however many regions there are; a new region, its zeroing too. The
//          first call of a process, and one after many regions were made by others, reads and
//          checks 256 bytes per region; they stay in memory.
PINBUF_API unsigned pinbuf_alloc_func(const char* name, unsigned size, const char* owner);

// Maps the whole region `name`, readable and writable, shared with every process that maps it, and
// returns its page-aligned virtual address; null on failure. The region must exist: call
// pinbuf_alloc_func first.
// At least one page of zero bytes follows that may be read but not written, so that reading a full
// word at the region's last byte harms nobody. Mapping the same region again in one process returns
// the same address, unless its file was replaced or changed its size meanwhile. The mapping stays
// until the process ends.
// Who cuts the file of a mapped region short, which its owner alone can do, sends SIGBUS to every
// process that touches the bytes that are gone.
// The three numbers are constants of the platform that pass through to the back end; clients pass
// 1, 0, 0. The shm back end does not interpret them.
PINBUF_API void* pinbuf_map(const char* name, int platform0, int platform1, int platform2);

// Who holds a region.
struct pinbuf_holder {
    int process;     // its process id; 0: in a PID name space that this process cannot see into
    char owner[112]; // who asked for the region first, as it is on record; "" when unknown
};

// Says to all processes that this one uses region `name` from now on, until it ends, by outcome:
//  1: nobody did; this process holds the region now;
//  0: somebody does already: another process, or this one through an earlier call (then
//     holder->process is its own id);
// -1: failure; also when there is no such region. `holder` keeps its contents.
// `holder` may be null. Nobody is refused anything: the hold only tells the next who asks.
// A hold ends with its process, whatever ends it, and with exec; there is no call to give it up.
// It is the process's, not a thread's; a forked child has none of its parent's and may ask for its
// own. It is a hold of this file: one that replaces it under the same name is held by nobody yet.
PINBUF_API int pinbuf_hold(const char* name, struct pinbuf_holder* holder);

// The line that the calling thread's last call here wrote to standard error, without its line feed;
// "" when that call succeeded. At most 1023 bytes, on one line whatever the region was named. Valid
// until the thread's next call.
const PINBUF_API char* pinbuf_error(void);

// What is known of one region. The strings live until the visit returns.
struct pinbuf_region {
    const char* name;
    const char* owner;         // "" when unknown
    unsigned physical_address; // 0: a file that no pinbuf_alloc_func has taken for a region yet
    unsigned size_bytes;       // of the file
    int made_here;             // 1: made by pinbuf_alloc_func with exactly size_bytes; 0: put there
                               // by other means, or not known
};

// Looks at one region; returns 0 to go on, else stops. May call every function of this header.
// NOLINTNEXTLINE(modernize-use-using): this header is C, too
typedef int (*pinbuf_visitor)(const struct pinbuf_region* region, void* context);

// Visits the regions of the folder in ascending byte order of their names and returns how many were
// visited; -1 on failure. Reads only, and needs no process that uses the regions: it also serves an
// operator who looks into the folder of another user. An absent folder has no regions.
PINBUF_API int pinbuf_list(pinbuf_visitor visitor, void* context);

// Visits the region `name`, if there is one: returns 1, whatever the visitor answers; 0 when there
// is none; -1 on failure. Reads only, as pinbuf_list does, and looks at no other file of the folder
// than the region's and the directory of regions.
PINBUF_API int pinbuf_find(const char* name, pinbuf_visitor visitor, void* context);

#ifdef __cplusplus
}
#endif
