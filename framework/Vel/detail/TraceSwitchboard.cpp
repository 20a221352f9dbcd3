#include <Vel/detail/TraceSwitchboard.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace Vel {

namespace {

// Writes all of `line`. What the output does not take is lost: there is nobody to tell.
void writeAll(int fd, std::string_view line) noexcept {
    while (!line.empty()) {
        const ssize_t written = ::write(fd, line.data(), line.size());
        if (written > 0)
            line.remove_prefix(static_cast<std::size_t>(written));
        else if (written == 0 || errno != EINTR)
            return;
    }
}

// Time, process, handle and level: everything that stands before the text.
std::string lineStart(const TraceHandle& handle, unsigned level) {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    std::tm utc{};
    ::gmtime_r(&now.tv_sec, &utc);
    char start[96];
    const std::size_t dated = std::strftime(start, sizeof(start), "%Y-%m-%dT%H:%M:%S", &utc);
    std::snprintf(start + dated, sizeof(start) - dated, ".%06ldZ %d ", now.tv_nsec / 1000,
                  static_cast<int>(::getpid()));
    std::string line(start);
    line += handle.name().view();
    line += '/';
    line += std::to_string(level);
    line += ' ';
    return line;
}

void addPrintable(std::string& line, std::string_view text) {
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7f) {
            line += c;
        } else {
            line += "\\x";
            line += "0123456789abcdef"[byte >> 4];
            line += "0123456789abcdef"[byte & 0xf];
        }
    }
}

// Tracing must not disturb the error number that its caller is about to look at.
class ErrnoKept {
public:
    ErrnoKept() noexcept : value_(errno) {}

    ~ErrnoKept() { errno = value_; }

    ErrnoKept(const ErrnoKept&) = delete;
    ErrnoKept& operator=(const ErrnoKept&) = delete;

private:
    int value_;
};

} // namespace

TraceSwitchboard& TraceSwitchboard::global() {
    static TraceSwitchboard& board = *new TraceSwitchboard;
    return board;
}

TraceSwitchboard::TraceSwitchboard() {
    if (const char* path = std::getenv("VEL_TRACE_FILE"); path != nullptr && *path != '\0')
        openFile(path);
    if (const char* settings = std::getenv("VEL_TRACE"); settings != nullptr)
        settingsAre(settings, "VEL_TRACE");
}

void TraceSwitchboard::openFile(const char* path) {
    const int fd = ::open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY, 0600);
    if (fd >= 0)
        fd_ = fd;
    else
        complain("VEL_TRACE_FILE", path,
                 std::generic_category().message(errno) + "; tracing to standard error");
}

void TraceSwitchboard::complain(const char* source, std::string_view what, std::string_view why) {
    std::string line(source);
    line += ": \"";
    addPrintable(line, what);
    line += "\": ";
    line += why;
    line += '\n';
    writeAll(STDERR_FILENO, line);
}

bool TraceSwitchboard::Rule::names(const TraceHandle& handle) const {
    return isPrefix ? handle.name().view().starts_with(name) : handle.name().view() == name;
}

void TraceSwitchboard::add(TraceHandle& handle) {
    const std::lock_guard lock(mutex_);
    for (const Rule& rule : rules_)
        if (rule.names(handle)) handle.levelsOnIs(rule.levels);
    handle.next_ = std::exchange(handles_, &handle);
}

void TraceSwitchboard::remove(TraceHandle& handle) {
    const std::lock_guard lock(mutex_);
    TraceHandle** link = &handles_;
    while (*link != &handle) link = &(*link)->next_;
    *link = handle.next_;
}

bool TraceSwitchboard::settingsAre(std::string_view settings, const char* source) {
    const ErrnoKept kept;
    const std::lock_guard lock(mutex_);
    bool wellFormed = true;
    while (!settings.empty()) {
        const std::string_view entry = settings.substr(0, settings.find(','));
        settings.remove_prefix(std::min(entry.size() + 1, settings.size()));
        std::string_view complaint;
        const std::optional<Rule> rule = ruleOf(entry, complaint);
        if (!rule) {
            complain(source, entry, complaint);
            wellFormed = false;
            continue;
        }
        // An older rule for the same name has nothing left to say.
        std::erase_if(rules_, [&](const Rule& old) {
            return old.name == rule->name && old.isPrefix == rule->isPrefix;
        });
        rules_.push_back(*rule);
        for (TraceHandle* handle = handles_; handle != nullptr; handle = handle->next_)
            if (rule->names(*handle)) handle->levelsOnIs(rule->levels);
    }
    return wellFormed;
}

std::optional<TraceSwitchboard::Rule> TraceSwitchboard::ruleOf(std::string_view entry,
                                                               std::string_view& complaint) {
    const std::size_t slash = entry.rfind('/');
    if (slash == std::string_view::npos || slash == 0) {
        complaint = "not of the form name/levels; entry ignored";
        return std::nullopt;
    }
    const std::optional<TraceHandle::LevelSet> levels = levelsOf(entry.substr(slash + 1));
    if (!levels) {
        complaint = "levels are all, none, or digits and ranges joined by +; entry ignored";
        return std::nullopt;
    }
    std::string_view name = entry.substr(0, slash);
    const bool isPrefix = name.back() == '*';
    if (isPrefix) name.remove_suffix(1);
    return Rule{std::string(name), isPrefix, *levels};
}

std::optional<TraceHandle::LevelSet> TraceSwitchboard::levelsOf(std::string_view text) {
    if (text == "all") return TraceHandle::allLevels;
    if (text == "none") return TraceHandle::LevelSet{0};
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    unsigned set = 0;
    for (;;) { // one digit or one range at a time
        const bool isRange = text.size() >= 3 && text[1] == '-';
        if (text.empty() || !isDigit(text[0]) || (isRange && !isDigit(text[2]))) return {};
        const char last = isRange ? text[2] : text[0];
        for (char level = text[0]; level <= last; ++level) set |= 1U << (level - '0');
        if (last < text[0]) return {};
        text.remove_prefix(isRange ? 3 : 1);
        if (text.empty()) return static_cast<TraceHandle::LevelSet>(set);
        if (text[0] != '+') return {};
        text.remove_prefix(1);
    }
}

TraceSink* TraceSwitchboard::sinkIs(TraceSink* sink) {
    const std::lock_guard lock(sinkMutex_);
    return std::exchange(sink_, sink);
}

void TraceSwitchboard::write(const TraceHandle& handle, unsigned level, std::string_view text) {
    const ErrnoKept kept;
    {
        const std::shared_lock lock(sinkMutex_);
        if (sink_ != nullptr) return sink_->line(handle, level, text);
    }
    std::string line = lineStart(handle, level);
    addPrintable(line, text);
    line += '\n';
    writeAll(fd_, line);
}

} // namespace Vel
