// Recovery.h - compares what an agent found in its tables with what the journal says was written.
#pragma once

#include "Agent.h"
#include "Verdict.h"
#include "WriteJournal.h"
#include <vector>

namespace PciAgent {

struct Recovery {
    struct Lost {
        unsigned table;
        unsigned index; // of the register
        Vel::U32 written;
        bool present;
        Vel::U32 found;
    };

    Verdict verdict;
    WriteJournal::InFlight write; // that a kill interrupted, if the verdict tells its fate
    Vel::U32 foundOfWrite;        // the value in its place
    std::vector<Lost> lost;
};

// To be called before the agent writes. Settles the write in flight: what is there of it counts as
// written.
Recovery recoveryOf(const Agent& agent, WriteJournal& journal);

} // namespace PciAgent
