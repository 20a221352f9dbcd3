// TraceCapture.h - takes all trace lines in for the life of a scope; for tests of code that traces.
//
//     Vel::TraceCapture capture;
//     table.doRestart();
//     EXPECT_EQ(capture.take(), "BrixoCacheTable/8 CacheTable::doRestart\n");
//
// Switches no level: the test says which it wants, such as TraceHandle::settingsAre("*/all").
// Threads: any thread may trace. Captures nest; the innermost takes the lines.
// Test: none; a help for tests; TraceHandle_test.cpp uses it.
#pragma once

#include <Vel/TraceHandle.h>
#include <mutex>
#include <string>
#include <utility>

namespace Vel {

class TraceCapture final : public TraceSink {
public:
    TraceCapture() : outer_(TraceHandle::sinkIs(this)) {}

    ~TraceCapture() override { TraceHandle::sinkIs(outer_); }

    TraceCapture(const TraceCapture&) = delete;
    TraceCapture& operator=(const TraceCapture&) = delete;

    void line(const TraceHandle& handle, unsigned level, std::string_view text) override {
        const std::lock_guard lock(mutex_);
        lines_ += handle.name().view();
        lines_ += '/';
        lines_ += std::to_string(level);
        lines_ += ' ';
        lines_ += text;
        lines_ += '\n';
    }

    // What was traced since the last call: handle, level and text of each line, and a line end.
    std::string take() {
        const std::lock_guard lock(mutex_);
        return std::exchange(lines_, {});
    }

private:
    TraceSink* outer_;
    std::mutex mutex_;
    std::string lines_;
};

} // namespace Vel
