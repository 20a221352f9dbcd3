// pci_agent_demo - starts the agent, kills it with SIGKILL while it writes, starts it again and
// shows what it found.
#include "Demo.h"
#include "DemoFolder.h"
#include <cstdio>
#include <exception>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr const char* help = R"(usage: pci_agent_demo AGENT TRACE_READER [FOLDER]

Starts an agent that mirrors registers into cache tables, kills it with SIGKILL three times, starts it again each time,
and shows what the next process finds.

AGENT         the program pci_agent
TRACE_READER  the program ferrolog-cat
FOLDER        where the regions and the trace are kept, as plain files; by default /dev/shm/pci-agent-demo-<uid>.
              It is made. If it exists, it must be what an earlier demo made, and what that one left is removed;
              any other folder is refused, and nothing in it touched.
--help        prints this

Exit codes: 0 every completed write was found again; 1 something was lost or failed; 2 wrong use.
)";

int wrongUse(const std::string& why) {
    std::fprintf(stderr, "pci_agent_demo: %s\npci_agent_demo: try --help\n", why.c_str());
    return 2;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    for (const std::string& word : words) {
        if (word == "--help" || word == "-h") return std::fputs(help, stdout) < 0 ? 1 : 0;
        if (word.starts_with('-')) return wrongUse("unknown option " + word);
    }
    if (words.size() < 2) return wrongUse("the agent and the trace reader must be named");
    if (words.size() > 3) return wrongUse("too many words: " + words[3]);
    const std::string folder =
        words.size() == 3 ? words[2] : "/dev/shm/pci-agent-demo-" + std::to_string(::getuid());
    if (folder.empty()) return wrongUse("the folder has no name");
    try {
        return PciAgent::Demo(words[0], words[1], folder).run();
    } catch (const PciAgent::DemoFolder::Refused& refusal) {
        std::fprintf(stderr, "pci_agent_demo: %s\n", refusal.what());
        return 2;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "pci_agent_demo: %s\n", error.what());
        return 1;
    }
}
