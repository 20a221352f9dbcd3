// Child.h - a program that was started, until it ends or is killed. It does not outlive its parent.
#pragma once

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace PciAgent {

class Child {
public:
    Child(const std::string& program, const std::vector<std::string>& arguments) {
        std::fflush(stdout);
        const pid_t parent = ::getpid();
        pid_ = ::fork();
        if (pid_ < 0) throw std::system_error(errno, std::generic_category(), "cannot fork");
        if (pid_ > 0) return;
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != parent) ::_exit(127);
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

} // namespace PciAgent
