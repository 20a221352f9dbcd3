// Openings.h - the recorder of the open file, and those of closed files that a thread may still be
// in.
//
// Owns:      recorders and their mappings, and the memory that they stand in, which stays.
// Mappings:  an append leaves no mark, so what stands in place of a closed file (TraceFile::close)
//            goes only when no thread can be in it: nobody visits it, no living thread has a lane
//            of it, and that was so already when another file was closed. (A handler's append gives
//            a lane back that the interrupted thread may be using: it is through by then.) So a
//            thread keeps one at most, and two while it moves from one to the other.
// Signals:   a handler may visit and, with a turn, open: nothing here allocates.
#pragma once

#include <Ferrolog/detail/Recorder.h>

namespace Ferrolog::detail {

struct Opening;

// While it lives, so does the mapping of the file that was open when it began. False: none was.
class Visit {
public:
    Visit();
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;
    ~Visit();

    explicit operator bool() const { return opening_ != nullptr; }

    Recorder& recorder() const;

private:
    Opening* opening_;
};

// With a turn, while no file is open: as ferrolog_open says; on success visits find the file.
int beginOpening(const char* path, U32 ringBytes, U32 epoch);

// With a turn. Nothing happens if no file is open.
void endOpening();

// In a forked child: no thread but this one is in any mapping.
void forgetParent();

} // namespace Ferrolog::detail
