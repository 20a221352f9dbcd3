// pci_agent_demo - starts the agent, kills it with SIGKILL while it writes, starts it again and shows what it found.
#include "DemoFolder.h"
#include "WriteJournal.h"
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using namespace std::chrono_literals;
using PciAgent::DemoFolder;
using PciAgent::WriteJournal;

constexpr int kills = 3;
constexpr Vel::U32 writesBeforeKill = 1'000'000;

class Child {
public:
    Child(const std::string& program, const std::vector<std::string>& arguments) : pid_(::fork()) {
        if (pid_ < 0) throw std::system_error(errno, std::generic_category(), "cannot fork");
        if (pid_ > 0) return;
        std::vector<char*> argv{const_cast<char*>(program.c_str())};
        for (const std::string& argument : arguments)
            argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        ::execv(program.c_str(), argv.data());
        std::perror(program.c_str());
        ::_exit(127);
    }

    pid_t pid() const noexcept { return pid_; }

    void kill() const { ::kill(pid_, SIGKILL); }

    bool hasEnded() { return ::waitpid(pid_, &status_, WNOHANG) == pid_; }

    // The wait status as waitpid gives it.
    int wait() {
        ::waitpid(pid_, &status_, 0);
        return status_;
    }

private:
    pid_t pid_;
    int status_ = 0;
};

void heading(const std::string& text) {
    const bool bold = ::isatty(STDOUT_FILENO) != 0;
    std::printf("\n%s%s%s\n", bold ? "\033[1m" : "", text.c_str(), bold ? "\033[0m" : "");
    std::fflush(stdout);
}

class Demo {
public:
    Demo(std::string agent, std::string traceReader, std::string folder)
        : agent_(std::move(agent)), traceReader_(std::move(traceReader)),
          folder_(std::move(folder)), journal_(folder_.journal()) {
        ::setenv("PINBUF_DIR", folder_.regions().c_str(), 1);
        ::setenv("FERROLOG_FILE", folder_.trace().c_str(), 1);
        ::setenv("AGENT_PROCESS_NAME", "pci_agent", 1);
    }

    int run() {
        for (int life = 1; life <= kills; ++life)
            if (!liveAndDie(life)) return 1;
        const bool whole = lastLife();
        showTrace();
        heading(whole ? "Every completed write survived " + std::to_string(kills) + " kills."
                      : std::string("Something was lost."));
        std::printf("  The regions and the trace are plain files in %s\n", folder_.path().c_str());
        return whole ? 0 : 1;
    }

private:
    // One agent from its start to its death, at a moment that nobody chose.
    bool liveAndDie(int life) {
        heading("Life " + std::to_string(life) +
                (life == 1 ? ": the agent starts on empty regions"
                           : ": the agent starts again and recovers its tables"));
        const Vel::U32 writesBefore = journal_.completedWrites();
        Child agent(agent_, {"--journal", folder_.journal(), "--report", "--watch", "2000",
                             "--writes", "400"});
        while (journal_.completedWrites() - writesBefore < writesBeforeKill) {
            if (agent.hasEnded()) {
                std::printf("  the agent ended by itself\n");
                return false;
            }
            std::this_thread::sleep_for(1ms);
        }
        std::this_thread::sleep_for(std::chrono::microseconds(random_() % 20'000));
        agent.kill();
        agent.wait();
        std::printf("  SIGKILL to process %d, which had completed %u writes\n",
                    static_cast<int>(agent.pid()), journal_.completedWrites() - writesBefore);
        return true;
    }

    // The agent once more: it reports, refreshes everything once and ends in peace.
    bool lastLife() {
        heading("Life " + std::to_string(kills + 1) + ": recovered, compared, refreshed once more");
        Child agent(agent_, {"--journal", folder_.journal(), "--report", "--watch", "2000",
                             "--passes", "1"});
        return agent.wait() == 0;
    }

    void showTrace() {
        heading("The end of the trace file, written by all of them");
        Child(traceReader_, {"-n", "16", folder_.trace()}).wait();
    }

    std::string agent_;
    std::string traceReader_;
    DemoFolder folder_;
    WriteJournal journal_;
    std::random_device random_;
};

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
        return Demo(words[0], words[1], folder).run();
    } catch (const DemoFolder::Refused& refusal) {
        std::fprintf(stderr, "pci_agent_demo: %s\n", refusal.what());
        return 2;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "pci_agent_demo: %s\n", error.what());
        return 1;
    }
}
