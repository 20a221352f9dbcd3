// Picture.h - draws the lives of the demo's agents above the memory that outlived them.
#pragma once

#include "Verdict.h"
#include <Vel/Integers.h>
#include <vector>

namespace PciAgent {

// One process, from its start to its end.
struct Life {
    Verdict found;        // when it opened the tables
    Vel::U32 writes;      // that it completed
    Vel::U32 entriesLeft; // in the tables at its end, as the journal has it
    Vel::U32 round;       // the last that it wrote
};

// The last of them ended by itself, the others were killed. Four fit into 100 columns.
void printPicture(const std::vector<Life>& lives);

} // namespace PciAgent
