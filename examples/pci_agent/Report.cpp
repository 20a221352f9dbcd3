#include "Report.h"

#include "Bar.h"
#include <algorithm>
#include <cstdio>
#include <pinbuf/pinbuf.h>
#include <span>
#include <string>
#include <vector>

namespace PciAgent {

using Vel::U32;

namespace {

constexpr std::size_t mostLines = 10; // of tables: a large machine has hundreds of devices

struct RegionSought {
    std::string name;
    unsigned address = 0;
};

int takeAddress(const pinbuf_region* region, void* context) {
    auto& sought = *static_cast<RegionSought*>(context);
    if (sought.name != region->name) return 0;
    sought.address = region->physical_address;
    return 1;
}

unsigned addressOf(const std::string& regionName) {
    RegionSought sought{regionName};
    pinbuf_list(takeAddress, &sought);
    return sought.address;
}

// The tables of which each gets a line, and those that share one.
std::span<const MirroredDevice> first(const Agent& agent) {
    return std::span(agent.devices()).first(std::min(mostLines, agent.devices().size()));
}

std::span<const MirroredDevice> rest(const Agent& agent) {
    return std::span(agent.devices()).subspan(first(agent).size());
}

void printFilling(const std::string& what, std::span<const MirroredDevice> devices) {
    unsigned found = 0;
    unsigned slots = 0;
    for (const MirroredDevice& mirrored : devices) {
        found += mirrored.recovered;
        slots += mirrored.table->size();
    }
    std::printf("    %-15s %s %5u of %5u entries\n", what.c_str(), bar(found, slots, 42).c_str(),
                found, slots);
}

// A line for each table, unless all are full.
void printTables(const Agent& agent) {
    const std::vector<MirroredDevice>& all = agent.devices();
    if (std::ranges::all_of(all,
                            [](const auto& one) { return one.recovered == one.table->size(); })) {
        printFilling("all tables", all);
        return;
    }
    for (const MirroredDevice& mirrored : first(agent))
        printFilling(mirrored.device->name(), {&mirrored, 1});
    if (!rest(agent).empty())
        printFilling("and " + std::to_string(rest(agent).size()) + " more", rest(agent));
}

enum class Base { ten, sixteen };

void printValue(const MirroredDevice& mirrored, unsigned registerIndex, Base base) {
    std::printf("    %-15s 0x%03x  %-20s  ", mirrored.device->name().c_str(),
                registerIndex * MirroredDevice::registerBytes,
                mirrored.device->registerMeaning(registerIndex).c_str());
    U32 value = 0;
    if (!mirrored.mirrored(registerIndex, value))
        std::printf("%10s\n", "not there");
    else if (base == Base::ten)
        std::printf("%10u\n", value);
    else
        std::printf("0x%08x\n", value);
}

// What the process before it wrote, as it stands in the tables.
void printValues(const Agent& agent) {
    std::printf("  Some of what it reads there:\n");
    for (unsigned i = 0; i < OwnRegisters::count; ++i) printValue(agent.devices()[0], i, Base::ten);
    if (agent.devices().size() == 1) return;
    const MirroredDevice& hardware = agent.devices()[1];
    printValue(hardware, hardware.device->exampleRegister(), Base::sixteen);
}

// The write that was under way, and what there is of it.
void printInFlight(const Agent& agent, const Recovery& recovery) {
    const Fate fate = recovery.verdict.inFlight;
    if (fate == Fate::none) {
        std::printf("  In flight at the kill: nothing.\n");
        return;
    }
    std::printf("  In flight at the kill: %s 0x%03x = 0x%08x. There: ",
                agent.devices()[recovery.write.table].device->name().c_str(),
                recovery.write.index * MirroredDevice::registerBytes, recovery.write.value);
    switch (fate) {
    case Fate::none: break;
    case Fate::absent: std::printf("nothing yet.\n"); break;
    case Fate::keyAlone: std::printf("its key, not yet its value.\n"); break;
    case Fate::before: std::printf("still the old value 0x%08x.\n", recovery.foundOfWrite); break;
    case Fate::unchanged: std::printf("the same value as before.\n"); break;
    case Fate::whole: std::printf("this new value.\n"); break;
    case Fate::torn: std::printf("torn, 0x%08x.\n", recovery.foundOfWrite); break;
    }
}

} // namespace

void printRegions(const Agent& agent) {
    std::printf("  %-15s %-26s %-28s %-12s %6s\n", "device", "what it is", "region", "agreed addr.",
                "slots");
    for (const MirroredDevice& mirrored : first(agent)) {
        const std::string region = agent.regionName(mirrored);
        std::printf("  %-15s %-26s %-28s 0x%08x   %6u\n", mirrored.device->name().c_str(),
                    mirrored.device->description().c_str(), region.c_str(), addressOf(region),
                    mirrored.table->size());
    }
    if (!rest(agent).empty()) std::printf("  and %zu more\n", rest(agent).size());
    std::printf("  agreed addr.: the same for every process, but made up by the `shm` back end; no "
                "bus knows it\n"
                "  agent: synthetic, %u registers of its own that change all the time, as "
                "hardware's seldom do\n",
                unsigned{OwnRegisters::count});
    if (agent.devices().size() == 1)
        std::printf(
            "  This machine shows neither PCI devices nor network interfaces: there is no more.\n");
}

void printRecovery(const Agent& agent, const Recovery& recovery) {
    const Verdict& verdict = recovery.verdict;
    std::printf("  Process %u opens the tables and finds:\n", verdict.process);
    printTables(agent);
    printValues(agent);
    printInFlight(agent, recovery);
    for (const Recovery::Lost& lost : recovery.lost)
        std::printf("  LOST %s register 0x%03x: written 0x%08x, found %s0x%08x\n",
                    agent.devices()[lost.table].device->name().c_str(),
                    lost.index * MirroredDevice::registerBytes, lost.written,
                    lost.present ? "" : "nothing ", lost.found);
    std::printf("  Completed: %u entries. Found again byte for byte: %u. Lost: %u. Found but never "
                "written: %u.\n",
                verdict.completed, verdict.equal, verdict.completed - verdict.equal,
                verdict.unexpected);
}

} // namespace PciAgent
