#include "Demo.h"

#include "Bar.h"
#include "LiveLine.h"
#include "OwnRegisters.h"
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <unistd.h>

namespace PciAgent {

using namespace std::chrono_literals;
using Vel::U32;

namespace {

constexpr unsigned kills = 3;
constexpr std::chrono::seconds firstFill = 2s; // spread over this, for the first kill to hit it
constexpr U32 writesBeforeKill = 1'000'000;    // of each later life
constexpr unsigned roundsPerReading =
    400; // a kill rather hits a write than the reading of hardware

constexpr const char* introduction = R"(
A cache table keeps entries of a fixed size in a named region of memory that outlives its process.
Here an agent mirrors registers into such tables: a table per device, in it an entry of 4 bytes per
register. It is killed with SIGKILL three times, once while it fills its tables and twice while it
rewrites them. Each time a new process opens the tables and shows what the dead one left. A journal,
which only this demo keeps, knows each write that was begun or completed, and so what must be there.
)";

void heading(const std::string& text) {
    const bool bold = ::isatty(STDOUT_FILENO) != 0;
    std::printf("\n%s%s%s\n", bold ? "\033[1m" : "", text.c_str(), bold ? "\033[0m" : "");
    std::fflush(stdout);
}

void headingOfLife(unsigned life, const char* text) {
    heading("Life " + std::to_string(life) + ": " + text);
}

} // namespace

Demo::Demo(std::string agent, std::string traceReader, std::string folder)
    : agent_(std::move(agent)), traceReader_(std::move(traceReader)), folder_(std::move(folder)),
      journal_(folder_.journal()) {
    ::setenv("PINBUF_BACKEND", "shm", 1);
    ::setenv("PINBUF_DIR", folder_.regions().c_str(), 1);
    ::setenv("FERROLOG_FILE", folder_.trace().c_str(), 1);
    ::setenv("AGENT_PROCESS_NAME", "pci_agent", 1);
}

int Demo::run() {
    std::fputs(introduction, stdout);
    headingOfLife(1,
                  "an agent starts where nothing is yet, and is killed while it fills its tables");
    if (!fillAndDie()) return 1;
    for (unsigned life = 2; life <= kills; ++life) {
        headingOfLife(
            life, "a new process opens the tables, goes on, and is killed while it rewrites them");
        if (!rewriteAndDie()) return 1;
    }
    headingOfLife(kills + 1,
                  "a last process opens the tables, writes all once more, and ends by itself");
    if (!liveInPeace()) return 1;
    heading("The end of the trace, a binary ring that each of them wrote to and no kill harmed");
    Child(traceReader_, {"-n", "4", folder_.trace()}).wait();
    heading("What happened");
    printPicture(lives_);
    return verdict();
}

// The first agent, until it dies somewhere in its first fill: not at the start of it, and not close
// to its end.
bool Demo::fillAndDie() {
    Child agent = start({"--fill", std::to_string(std::chrono::milliseconds(firstFill).count())});
    if (!waitForVerdict(agent)) return false;
    const U32 registers = journal_.verdict().registers;
    const U32 target = std::clamp(registers / 4 + random_() % (registers / 2), 2U, registers - 1);
    std::printf("  The agent spreads its first fill over %d s, for the kill to come in between.\n",
                static_cast<int>(firstFill.count()));
    LiveLine line;
    const auto isReached = [&] {
        const U32 written = journal_.completedWrites();
        line.show(bar(written, registers, 60) + " " + std::to_string(written) + " of " +
                  std::to_string(registers) + " entries");
        return written >= target;
    };
    if (!waitUntil(agent, isReached)) return false;
    const Life& life = kill(agent, 0);
    line.clear();
    std::printf("  SIGKILL to process %u in the first fill: %u of %u entries written.\n",
                life.found.process, life.entriesLeft, registers);
    return true;
}

// A later one, until it dies at a moment that nobody chose.
bool Demo::rewriteAndDie() {
    const U32 before = journal_.completedWrites();
    Child agent = start({"--rounds", std::to_string(roundsPerReading)});
    if (!waitForVerdict(agent)) return false;
    const U32 target = writesBeforeKill + random_() % writesBeforeKill;
    if (!waitUntil(agent, [&] { return journal_.completedWrites() - before >= target; }))
        return false;
    const Life& life = kill(agent, before);
    std::printf("  SIGKILL to process %u in round %u, after %u writes of its own.\n",
                life.found.process, life.round, life.writes);
    return true;
}

// The last one, which reads all registers once and writes them once.
bool Demo::liveInPeace() {
    const U32 before = journal_.completedWrites();
    Child agent = start({"--watch", "1000000000", "--passes", "1"});
    const bool isContent = agent.wait() == 0;
    if (!journal_.hasVerdictOf(static_cast<U32>(agent.pid()))) return false;
    return take(before).found.nothingLost() == isContent;
}

int Demo::verdict() {
    const bool whole =
        std::ranges::all_of(lives_, [](const Life& life) { return life.found.nothingLost(); });
    heading(whole ? "Every completed write survived " + std::to_string(kills) + " kills."
                  : "Something was lost, or found that was never written.");
    std::printf("  The regions and the trace are plain files in %s;\n"
                "  od -A d -t x4 shows what is in a region.\n",
                folder_.path().c_str());
    return whole ? 0 : 1;
}

Child Demo::start(const std::vector<std::string>& options) {
    std::vector<std::string> arguments{"--agent", std::to_string(DemoFolder::agentId), "--journal",
                                       folder_.journal(), "--report"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return {agent_, arguments};
}

// False when the agent has ended instead.
template <class Condition>
bool Demo::waitUntil(Child& agent, Condition condition) {
    while (!condition()) {
        if (agent.hasEnded()) {
            std::printf("  the agent ended by itself\n");
            return false;
        }
        std::this_thread::sleep_for(1ms);
    }
    return true;
}

// Then the agent has shown what it found, and writes.
bool Demo::waitForVerdict(Child& agent) {
    return waitUntil(agent, [&] { return journal_.hasVerdictOf(static_cast<U32>(agent.pid())); });
}

const Life& Demo::kill(Child& agent, U32 writesBefore) {
    agent.kill();
    agent.wait();
    return take(writesBefore);
}

// What the journal knows of a life that has ended.
const Life& Demo::take(U32 writesBefore) {
    return lives_.emplace_back(Life{journal_.verdict(), journal_.completedWrites() - writesBefore,
                                    journal_.completedEntries(),
                                    journal_.at(0, OwnRegisters::round).value});
}

} // namespace PciAgent
