#include <Vel/TraceHandle.h>

#include <Vel/detail/TraceSwitchboard.h>

namespace Vel {

TraceSink::~TraceSink() = default;

TraceHandle::TraceHandle(String8 name, bool anomalies)
    : name_(std::move(name)), on_(anomalies ? 0b11 : 0) {
    TraceSwitchboard::global().add(*this);
}

TraceHandle::~TraceHandle() { TraceSwitchboard::global().remove(*this); }

void TraceHandle::levelIs(unsigned level, bool on) noexcept {
    if (level >= levels) return;
    const auto bit = static_cast<LevelSet>(1U << level);
    if (on)
        on_.fetch_or(bit, std::memory_order_relaxed);
    else
        on_.fetch_and(static_cast<LevelSet>(~bit), std::memory_order_relaxed);
}

void TraceHandle::write(unsigned level, std::string_view text) const {
    TraceSwitchboard::global().write(*this, level, text);
}

bool TraceHandle::settingsAre(std::string_view settings) {
    return TraceSwitchboard::global().settingsAre(settings, "trace settings");
}

TraceSink* TraceHandle::sinkIs(TraceSink* sink) { return TraceSwitchboard::global().sinkIs(sink); }

} // namespace Vel
