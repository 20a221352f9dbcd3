// Demo.h - the story: one agent after the other is killed with SIGKILL, and each finds what the one
// before it wrote.
#pragma once

#include "Child.h"
#include "DemoFolder.h"
#include "Picture.h"
#include "WriteJournal.h"
#include <random>
#include <string>
#include <vector>

namespace PciAgent {

class Demo {
public:
    // The programs pci_agent and ferrolog-cat, and the folder to work in. Throws as DemoFolder
    // does.
    Demo(std::string agent, std::string traceReader, std::string folder);

    // Tells the story on standard output. The program's exit code: 0 when every completed write was
    // found again.
    int run();

private:
    bool fillAndDie();
    bool rewriteAndDie();
    bool liveInPeace();
    int verdict();

    Child start(const std::vector<std::string>& options);
    template <class Condition>
    bool waitUntil(Child& agent, Condition condition);
    bool waitForVerdict(Child& agent);
    const Life& kill(Child& agent, Vel::U32 writesBefore);
    const Life& take(Vel::U32 writesBefore);

    std::string agent_;
    std::string traceReader_;
    DemoFolder folder_;
    WriteJournal journal_;
    std::vector<Life> lives_;
    std::random_device random_;
};

} // namespace PciAgent
