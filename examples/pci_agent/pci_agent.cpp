// pci_agent - mirrors the registers of this machine's devices into cache tables until it is stopped
// or killed.
//
//     pci_agent [--agent ID] [--journal FILE] [--report] [--watch N] [--passes N] [--rounds N]
//               [--fill MS] [--sysfs FOLDER]
//
// --report        says what was found in the tables, and compares it with the journal; exits with 1
// when something is lost --watch N       watches the DALs: a line after each N commands, and their
// status at the end --passes N      stops when all registers were read N times; 0, the default,
// never stops --rounds N      writes all registers N times whenever they were read, 1 by default
// --fill MS       spreads what is left of the first fill over so many milliseconds --sysfs FOLDER
// where the kernel shows the devices, /sys by default
#include "Agent.h"
#include "Progress.h"
#include "Recovery.h"
#include "Report.h"
#include "WriteJournal.h"
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <getopt.h>
#include <optional>
#include <string>

namespace {

struct Options {
    unsigned agent = 7;
    std::string journal = "/dev/shm/pci_agent.journal";
    bool report = false;
    unsigned long watch = 0;
    unsigned long passes = 0;
    unsigned rounds = 1;
    unsigned long fill = 0;
    std::string sysfs = "/sys";
};

[[noreturn]] void usage(const char* program) {
    std::fprintf(stderr,
                 "usage: %s [--agent ID] [--journal FILE] [--report] [--watch N] [--passes N] "
                 "[--rounds N] [--fill MS] [--sysfs FOLDER]\n",
                 program);
    std::exit(2);
}

unsigned long number(const char* program, const char* text, unsigned long most) {
    char* end = nullptr;
    const unsigned long value = std::strtoul(text, &end, 0);
    if (end == text || *end != '\0' || *text == '-' || value > most) {
        std::fprintf(stderr, "%s: '%s' is not a number from 0 to %lu\n", program, text, most);
        usage(program);
    }
    return value;
}

Options parse(int argc, char** argv) {
    static constexpr option known[] = {{"agent", required_argument, nullptr, 'a'},
                                       {"journal", required_argument, nullptr, 'j'},
                                       {"report", no_argument, nullptr, 'r'},
                                       {"watch", required_argument, nullptr, 't'},
                                       {"passes", required_argument, nullptr, 'p'},
                                       {"rounds", required_argument, nullptr, 'n'},
                                       {"fill", required_argument, nullptr, 'f'},
                                       {"sysfs", required_argument, nullptr, 's'},
                                       {nullptr, 0, nullptr, 0}};
    Options options;
    for (int letter; (letter = getopt_long(argc, argv, "", known, nullptr)) != -1;) {
        switch (letter) {
        case 'a': options.agent = static_cast<unsigned>(number(argv[0], optarg, 0xffff)); break;
        case 'j': options.journal = optarg; break;
        case 'r': options.report = true; break;
        case 't': options.watch = number(argv[0], optarg, 1000000000UL); break;
        case 'p': options.passes = number(argv[0], optarg, 1000000000UL); break;
        case 'n': options.rounds = static_cast<unsigned>(number(argv[0], optarg, 1000000)); break;
        case 'f': options.fill = number(argv[0], optarg, 1000000UL); break;
        case 's': options.sysfs = optarg; break;
        default: usage(argv[0]);
        }
    }
    if (optind != argc) usage(argv[0]);
    return options;
}

int run(const Options& options) {
    PciAgent::WriteJournal journal(options.journal);
    PciAgent::Agent agent(Brixo::AgentId(static_cast<Vel::U16>(options.agent)), options.sysfs,
                          journal);
    std::optional<PciAgent::Progress> progress;
    if (options.watch != 0) progress.emplace(agent.dals(), options.watch);
    const bool isFirst = journal.completedWrites() == 0;
    const PciAgent::Recovery recovery = PciAgent::recoveryOf(agent, journal);
    if (options.report) {
        if (isFirst)
            PciAgent::printRegions(agent);
        else
            PciAgent::printRecovery(agent, recovery);
        std::fflush(stdout);
    }
    journal.verdictIs(recovery.verdict);
    agent.spreadFillOver(std::chrono::milliseconds(options.fill));
    for (unsigned long pass = 0; options.passes == 0 || pass < options.passes; ++pass)
        agent.refresh(options.rounds);
    if (progress) progress->printStatus();
    return recovery.verdict.nothingLost() ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run(parse(argc, argv));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "pci_agent: %s\n", error.what());
        return 1;
    }
}
