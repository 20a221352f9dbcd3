// LiveLine.h - one line of a terminal that changes while one waits; nothing at all where the output
// is no terminal.
#pragma once

#include <cstdio>
#include <string>
#include <unistd.h>

namespace PciAgent {

class LiveLine {
public:
    void show(const std::string& text) {
        if (!isTerminal_ || text == shown_) return;
        std::printf("\r  %s", text.c_str());
        std::fflush(stdout);
        shown_ = text;
    }

    void clear() const {
        if (isTerminal_) std::printf("\r\033[K");
    }

private:
    bool isTerminal_ = ::isatty(STDOUT_FILENO) != 0;
    std::string shown_;
};

} // namespace PciAgent
