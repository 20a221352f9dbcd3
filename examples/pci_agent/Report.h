// Report.h - shows a person what an agent found in its tables, and whether it is what was written.
#pragma once

#include "Agent.h"
#include "WriteJournal.h"

namespace PciAgent {

// One line per table: device, region, physical address, slots, entries that were found when it was opened.
void printTables(const Agent& agent);

// Compares every entry with the journal, byte for byte; names the write that was in flight and what is there of it, prints
// what differs, and the verdict. True when every completed write is there and nothing else.
bool printVerdict(const Agent& agent, WriteJournal& journal);

} // namespace PciAgent
