// Child.h - runs a part of a test in a process of its own, and hears its last words. Not installed.
#pragma once

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Brixo::Testing {

// Exit status of a child that has ended, or minus the signal that ended it.
inline int statusOf(pid_t child) {
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {}
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

// Runs `body` in a child process; returns what it returns (0 to 255), or minus the signal that
// ended it.
template <class Body>
int inChild(Body body) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(body());
    return statusOf(child);
}

struct Death {
    int status = 0;   // as inChild gives it
    std::string said; // all of its standard error
};

// Runs `body` in a child process that is expected not to survive it; a survivor has status 0.
template <class Body>
Death deathOf(Body body) {
    Death death;
    int ends[2];
    if (::pipe(ends) != 0) return death;
    const pid_t child = ::fork();
    if (child == 0) {
        const rlimit noCore{};
        ::setrlimit(RLIMIT_CORE, &noCore);
        ::dup2(ends[1], STDERR_FILENO);
        ::close(ends[0]);
        ::close(ends[1]);
        body();
        ::_exit(0);
    }
    ::close(ends[1]);
    char buffer[4096];
    for (ssize_t count = 0; (count = ::read(ends[0], buffer, sizeof(buffer))) != 0;)
        if (count > 0) death.said.append(buffer, static_cast<std::size_t>(count));
    ::close(ends[0]);
    death.status = statusOf(child);
    return death;
}

// The same for a failed assertion. Compilers spell the function differently, and lines move: of
// these the line number comes back as "#", the function as its name alone.
//     "CacheTable.cpp:#: assertion failed: freeIndexs() > 0 (in takeFreeIndex)\n"
template <class Body>
std::string lastWordsOf(Body body) {
    const Death death = deathOf(body);
    if (death.status != -SIGABRT)
        return "status " + std::to_string(death.status) + ", " + death.said;
    std::string said = death.said;
    const std::size_t line = said.rfind("CacheTable.cpp:");
    if (line == std::string::npos) return said;
    const std::size_t number = line + std::string("CacheTable.cpp:").size();
    std::size_t end = number;
    while (end < said.size() && said[end] >= '0' && said[end] <= '9') ++end;
    if (end != number) said.replace(number, end - number, "#");
    const std::size_t function = said.find(" (in ", number);
    if (function == std::string::npos) return said;
    const std::size_t open = said.find('(', function + 2);
    const std::size_t name = said.rfind("::", open) + 2;
    const std::size_t close = said.rfind(")\n");
    if (open == std::string::npos || close == std::string::npos) return said;
    return said.substr(0, function) + " (in " + said.substr(name, open - name) + ")" +
           said.substr(close + 1);
}

} // namespace Brixo::Testing
