// pci_agent - mirrors the registers of this machine's devices into cache tables until it is stopped or killed.
//
//     pci_agent [--agent ID] [--journal FILE] [--report] [--watch N] [--passes N] [--writes N]
//
// --report    says what was found in the tables, and compares it with the journal; exits with 1 when something is lost
// --watch N   watches the DALs: a line after each N commands, and the status of each DAL at the end
// --passes N  stops after N refreshes of every register; 0, the default, never stops
// --writes N  writes each value N times in a refresh, 1 by default
#include "Agent.h"
#include "Progress.h"
#include "Report.h"
#include "WriteJournal.h"
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
    unsigned writes = 1;
};

[[noreturn]] void usage(const char* program) {
    std::fprintf(stderr,
                 "usage: %s [--agent ID] [--journal FILE] [--report] [--watch N] [--passes N] "
                 "[--writes N]\n",
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
                                       {"writes", required_argument, nullptr, 'w'},
                                       {nullptr, 0, nullptr, 0}};
    Options options;
    for (int letter; (letter = getopt_long(argc, argv, "", known, nullptr)) != -1;) {
        switch (letter) {
        case 'a': options.agent = static_cast<unsigned>(number(argv[0], optarg, 0xffff)); break;
        case 'j': options.journal = optarg; break;
        case 'r': options.report = true; break;
        case 't': options.watch = number(argv[0], optarg, 1000000000UL); break;
        case 'p': options.passes = number(argv[0], optarg, 1000000000UL); break;
        case 'w': options.writes = static_cast<unsigned>(number(argv[0], optarg, 1000000)); break;
        default: usage(argv[0]);
        }
    }
    if (optind != argc) usage(argv[0]);
    return options;
}

int run(const Options& options) {
    PciAgent::WriteJournal journal(options.journal);
    PciAgent::Agent agent(Brixo::AgentId(static_cast<Vel::U16>(options.agent)), journal);
    if (agent.devices().empty()) {
        std::fprintf(stderr, "pci_agent: this machine shows neither PCI devices nor network "
                             "interfaces below /sys\n");
        return 1;
    }
    std::optional<PciAgent::Progress> progress;
    if (options.watch != 0) progress.emplace(agent.dals(), options.watch);
    bool whole = true;
    if (options.report) {
        PciAgent::printTables(agent);
        whole = PciAgent::printVerdict(agent, journal);
        std::fflush(stdout);
    }
    for (unsigned long pass = 0; options.passes == 0 || pass < options.passes; ++pass)
        agent.refresh(options.writes);
    if (progress) progress->printStatus();
    return whole ? 0 : 1;
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
