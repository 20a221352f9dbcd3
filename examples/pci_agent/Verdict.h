// Verdict.h - what a new process found in the tables, beside what the journal says was written
// before.
#pragma once

#include <Vel/Integers.h>

namespace PciAgent {

// What became of the write that a kill interrupted. A write stores the key first and then the data.
enum class Fate : Vel::U32 {
    none,      // no write was in flight
    absent,    // nothing of it is there
    keyAlone,  // its key is there, which is new, and no data yet
    before,    // the value before it is there
    unchanged, // its value is there, which is also the value before it
    whole,     // its value is there
    torn       // something else is there
};

struct Verdict {
    Vel::U32 process = 0;    // which found it
    Vel::U32 registers = 0;  // of all tables: as many entries as they can hold
    Vel::U32 found = 0;      // entries in all tables
    Vel::U32 completed = 0;  // entries whose last write had completed; they must be there
    Vel::U32 equal = 0;      // those of them that are there byte for byte
    Vel::U32 unexpected = 0; // entries that nobody has written
    Fate inFlight = Fate::none;

    bool nothingLost() const noexcept { return equal == completed && unexpected == 0; }
};

} // namespace PciAgent
