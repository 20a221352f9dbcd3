// pci_agent_demo - starts the agent, kills it with SIGKILL while it writes, starts it again and shows what it found.
//
//     pci_agent_demo AGENT TRACE_READER [FOLDER]
//
// AGENT and TRACE_READER are the programs pci_agent and ferrolog-cat. FOLDER, by default /dev/shm/brixo-demo-<uid>, is
// emptied first and kept afterwards: the regions and the trace are plain files there.
#include "WriteJournal.h"
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <initializer_list>
#include <random>
#include <string>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

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
    Demo(std::string agent, std::string traceReader, fs::path folder)
        : agent_(std::move(agent)), traceReader_(std::move(traceReader)),
          folder_(std::move(folder)), journal_(prepared(folder_)) {
        ::setenv("PINBUF_DIR", (folder_ / "regions").c_str(), 1);
        ::setenv("FERROLOG_FILE", traceFile().c_str(), 1);
        ::setenv("AGENT_PROCESS_NAME", "pci_agent", 1);
    }

    int run() {
        for (int life = 1; life <= kills; ++life)
            if (!liveAndDie(life)) return 1;
        const bool whole = lastLife();
        showTrace();
        heading(whole ? "Every completed write survived " + std::to_string(kills) + " kills."
                      : std::string("Something was lost."));
        std::printf("  The regions and the trace are plain files in %s\n", folder_.c_str());
        return whole ? 0 : 1;
    }

private:
    static std::string prepared(const fs::path& folder) {
        fs::remove_all(folder);
        fs::create_directories(folder / "regions");
        fs::permissions(folder / "regions", fs::perms::owner_all);
        return (folder / "journal").string();
    }

    std::string traceFile() const { return (folder_ / "trace").string(); }

    // One agent from its start to its death, at a moment that nobody chose.
    bool liveAndDie(int life) {
        heading("Life " + std::to_string(life) +
                (life == 1 ? ": the agent starts on empty regions"
                           : ": the agent starts again and recovers its tables"));
        const Vel::U32 writesBefore = journal_.completedWrites();
        Child agent(agent_, {"--journal", (folder_ / "journal").string(), "--report", "--watch",
                             "2000", "--writes", "400"});
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
        Child agent(agent_, {"--journal", (folder_ / "journal").string(), "--report", "--watch",
                             "2000", "--passes", "1"});
        return agent.wait() == 0;
    }

    void showTrace() {
        heading("The end of the trace file, written by all of them");
        Child(traceReader_, {"-n", "16", traceFile()}).wait();
    }

    std::string agent_;
    std::string traceReader_;
    fs::path folder_;
    PciAgent::WriteJournal journal_;
    std::random_device random_;
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 3 && argc != 4) {
        std::fprintf(stderr, "usage: %s AGENT TRACE_READER [FOLDER]\n", argv[0]);
        return 2;
    }
    try {
        const std::string folder =
            argc == 4 ? argv[3] : "/dev/shm/brixo-demo-" + std::to_string(::getuid());
        return Demo(argv[1], argv[2], folder).run();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "pci_agent_demo: %s\n", error.what());
        return 1;
    }
}
