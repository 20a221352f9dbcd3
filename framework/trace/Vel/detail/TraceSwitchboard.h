// TraceSwitchboard.h - the process's trace handles, the settings that reach them, and the output.
//
// Test: TraceHandle_test.cpp.
#pragma once

#include <Vel/TraceHandle.h>
#include <Vel/detail/ProcessWide.h>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <vector>

namespace Vel {

class TraceSwitchboard {
public:
    // Made on first use, with the settings of the environment; never destroyed, because handles of
    // other libraries may trace until the process ends. A fork() leaves its locks free in the
    // child.
    static TraceSwitchboard& global() { return detail::ProcessWide<TraceSwitchboard>::only(); }

    void add(TraceHandle& handle);
    void remove(TraceHandle& handle);

    // `source` is who gave the settings, as a complaint names it.
    bool settingsAre(std::string_view settings, const char* source);

    TraceSink* sinkIs(TraceSink* sink);
    void write(const TraceHandle& handle, unsigned level, std::string_view text);

private:
    friend class detail::ProcessWide<TraceSwitchboard>;

    // What one entry says. `name` without its final "*" when that stood there.
    struct Rule {
        std::string name;
        bool isPrefix = false;
        TraceHandle::LevelSet levels = 0;

        bool names(const TraceHandle& handle) const;
    };

    TraceSwitchboard();

    void beforeFork();
    void afterFork(bool isChild);

    static std::optional<Rule> ruleOf(std::string_view entry, std::string_view& complaint);
    static std::optional<TraceHandle::LevelSet> levelsOf(std::string_view text);
    static void complain(const char* source, std::string_view what, std::string_view why);
    void openFile(const char* path);

    // Of the handles and the rules. A sink may make handles, so it is taken behind sinkMutex_.
    std::mutex mutex_;
    TraceHandle* handles_ = nullptr;
    std::vector<Rule> rules_; // in the order in which they were given
    std::shared_mutex sinkMutex_;
    TraceSink* sink_ = nullptr;
    int fd_ = 2; // standard error
};

} // namespace Vel
