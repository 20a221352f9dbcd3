// Report.h - shows a person what an agent found in its tables, and whether it is what was written.
#pragma once

#include "Agent.h"
#include "Recovery.h"

namespace PciAgent {

// One line per table: device, region, the address that processes agree on, slots. When nobody has
//                     written yet.
void printRegions(const Agent& agent);

// Of the tables that it opened: how full each is, what some registers say, what became of the write
// in flight, what is lost, and the verdict.
void printRecovery(const Agent& agent, const Recovery& recovery);

} // namespace PciAgent
