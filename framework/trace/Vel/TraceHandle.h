// TraceHandle.h - the named switchboard of one module's trace lines: ten levels, each on or off.
//
//     Vel::TraceHandle& trace() {       // made on first use, kept for the life of the process
//         static Vel::TraceHandle& handle = *new Vel::TraceHandle("NetTable", true);
//         return handle;
//     }
//     VEL_TRACE(trace(), 9, "Recovered entry, index: " << index << " key: " << key);
//
// Levels:   0 to 9. By custom 1 is an anomaly, 8 the entry of a function, 9 a detail; no level
//           implies another.
// Settings: entries separated by commas, applied from left to right: the last that names a handle
//           decides.
//               entry   = name "/" levels
//               name    = a handle's name, or its beginning and "*"; "*" alone names every handle
//               levels  = "all", "none", or digits and ranges joined by "+", such as 0-3+8
//           NetTable/0-9   */1,Net*/0-3+8   */none
//           They hold for handles that exist and for those made later. The environment variable
//           VEL_TRACE gives the first settings; it is read when the first handle is made. A program
//           that has more rights than who starts it (set-user-id) takes no settings from the
//           environment, nor the name of a file. A malformed entry is reported in one line on
//           standard error; the others hold.
// Output:   one line, one write(2), to standard error, or to the file that VEL_TRACE_FILE names:
//               2024-03-05T06:07:08.090123Z 4242 NetTable/9 Recovered entry, ...
//           that is time (UTC), process, handle, level and text. A control character of the text
//           is written as \xNN, so that a line stays a line. A file is appended to, made with mode
//           0600, and shared by any number of processes. It is a regular file of the user's own,
//           and no symbolic link: anything else is reported in one line on standard error, which
//           then takes the lines.
// Cost:     a level that is off costs one load and one branch, and its line is not built.
// Threads:  everything here may be called from any thread, and in the child of a fork() whatever
//           other threads did at the time; but, as any local static, the one above stays locked
//           there if another thread was just making it.
#pragma once

#include <Vel/Export.h>
#include <Vel/Integers.h>
#include <Vel/String8.h>
#include <atomic>
#include <string_view>

namespace Vel {

class TraceHandle;

// Where trace lines go instead of the usual output; for tests, and for hosts with a log of their
// own.
class VEL_API TraceSink {
public:
    virtual ~TraceSink();

    // Called by the tracing thread, several threads at once. `text` is as the caller wrote it and
    // is gone after the call. Must not trace, nor change the sink, nor fork.
    virtual void line(const TraceHandle& handle, unsigned level, std::string_view text) = 0;
};

class VEL_API TraceHandle {
public:
    static constexpr unsigned levels = 10;

    // A set of levels: bit n is level n.
    using LevelSet = U16;
    static constexpr LevelSet allLevels = (1U << levels) - 1;

    // `anomalies`: what is on while no setting names the handle: levels 0 and 1, or nothing.
    TraceHandle(String8 name, bool anomalies);
    ~TraceHandle();
    TraceHandle(const TraceHandle&) = delete;
    TraceHandle& operator=(const TraceHandle&) = delete;

    const String8& name() const noexcept { return name_; }

    // Levels above 9 are never on.
    bool isOn(unsigned level) const noexcept {
        return level < levels && (on_.load(std::memory_order_relaxed) >> level & 1U) != 0;
    }

    LevelSet levelsOn() const noexcept { return on_.load(std::memory_order_relaxed); }

    // Switches one level of this handle, or all; levels above 9 are ignored.
    void levelIs(unsigned level, bool on) noexcept;

    void levelsOnIs(LevelSet set) noexcept {
        on_.store(set & allLevels, std::memory_order_relaxed);
    }

    // Writes the line whether or not the level is on; traceHelper.h asks first. Leaves errno alone.
    // Without memory a line of more than 500 bytes is cut.
    void write(unsigned level, std::string_view text) const;

    // Applies settings, see above. Returns whether all of them were well formed.
    static bool settingsAre(std::string_view settings);

    // Sends all lines to `sink`, which stays the caller's, or to the usual output if it is null.
    // Returns the sink before it; when this returns, no thread is inside that any more.
    static TraceSink* sinkIs(TraceSink* sink);

private:
    friend class TraceSwitchboard;

    const String8 name_;
    std::atomic<LevelSet> on_;
    TraceHandle* next_ = nullptr; // in the switchboard's list of handles
};

} // namespace Vel
