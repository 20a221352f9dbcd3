// SpokenTrace.h - trace lines among a child's last words, without time and process. Not installed.
#pragma once

#include <Vel/TraceHandle.h>
#include <string>
#include <string_view>
#include <unistd.h>

namespace Brixo::Testing {

// Sends every trace line to standard error while it lives: "BrixoCacheTable/8
// CacheTable::doRestart\n".
class SpokenTrace final : public Vel::TraceSink {
public:
    SpokenTrace() : outer_(Vel::TraceHandle::sinkIs(this)) {}

    ~SpokenTrace() override { Vel::TraceHandle::sinkIs(outer_); }

    SpokenTrace(const SpokenTrace&) = delete;
    SpokenTrace& operator=(const SpokenTrace&) = delete;

    void line(const Vel::TraceHandle& handle, unsigned level, std::string_view text) override {
        const std::string said = std::string(handle.name().view()) + "/" + std::to_string(level) +
                                 " " + std::string(text) + "\n";
        [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, said.data(), said.size());
    }

private:
    Vel::TraceSink* outer_;
};

} // namespace Brixo::Testing
