#include "Report.h"

#include <cstdio>
#include <pinbuf/pinbuf.h>
#include <string>

namespace PciAgent {

using Vel::U32;

namespace {

struct RegionSought {
    std::string name;
    unsigned physicalAddress = 0;
};

int takeAddress(const pinbuf_region* region, void* context) {
    auto& sought = *static_cast<RegionSought*>(context);
    if (sought.name != region->name) return 0;
    sought.physicalAddress = region->physical_address;
    return 1;
}

unsigned physicalAddress(const std::string& regionName) {
    RegionSought sought{regionName};
    pinbuf_list(takeAddress, &sought);
    return sought.physicalAddress;
}

// What became of the write that a kill interrupted. Its key word may stand without its data: then the value is torn.
void printInFlight(const Agent& agent, const WriteJournal::InFlight& write, bool present, U32 found,
                   U32 before) {
    const HardwareDevice& device = *agent.devices()[write.table].device;
    std::printf("  in flight at the kill: %s register 0x%03x = 0x%08x: ", device.name().c_str(),
                write.index * MirroredDevice::registerBytes, write.value);
    if (!present)
        std::printf("not there yet\n");
    else if (found == write.value)
        std::printf("there, whole\n");
    else if (found == before)
        std::printf("not there yet, the value before it (0x%08x) is\n", found);
    else
        std::printf("torn: 0x%08x\n", found);
}

} // namespace

void printTables(const Agent& agent) {
    std::printf("  %-8s %-26s %-28s %-11s %6s %8s\n", "device", "what it is", "region", "physical",
                "slots", "found");
    for (const MirroredDevice& mirrored : agent.devices()) {
        const std::string region = agent.regionName(mirrored);
        std::printf("  %-8s %-26s %-28s 0x%08x  %6u %8u\n", mirrored.device->name().c_str(),
                    mirrored.device->description().c_str(), region.c_str(), physicalAddress(region),
                    mirrored.table->size(), mirrored.recovered);
    }
}

bool printVerdict(const Agent& agent, WriteJournal& journal) {
    if (journal.completedWrites() == 0) return true; // nobody has written before us
    unsigned expected = 0;
    unsigned equal = 0;
    unsigned unexpected = 0;
    const WriteJournal::InFlight write = journal.inFlight();
    for (unsigned t = 0; t < agent.devices().size(); ++t) {
        const MirroredDevice& mirrored = agent.devices()[t];
        for (unsigned i = 0; i < mirrored.device->registerCount(); ++i) {
            U32 found = 0;
            const bool present = mirrored.mirrored(i, found);
            const WriteJournal::Register& written = journal.at(t, i);
            if (write.active != 0 && write.table == t && write.index == i) {
                printInFlight(agent, write, present, found, written.value);
                journal.settle(present, found);
                continue;
            }
            if (written.completed == 0) {
                unexpected += present ? 1 : 0;
                continue;
            }
            ++expected;
            if (present && found == written.value) {
                ++equal;
                continue;
            }
            std::printf("  LOST %s register 0x%03x: written 0x%08x, found %s0x%08x\n",
                        mirrored.device->name().c_str(), i * MirroredDevice::registerBytes,
                        written.value, present ? "" : "nothing ", found);
        }
    }
    if (write.active == 0) std::printf("  in flight at the kill: nothing\n");
    std::printf("  completed before the kill: %u entries, found again byte for byte: %u, "
                "found but never written: %u\n",
                expected, equal, unexpected);
    return expected == equal && unexpected == 0;
}

} // namespace PciAgent
