#include <Vel/detail/TraceSwitchboard.h>

#include <Vel/detail/ObjectHeap.h>
#include <Vel/detail/environment.h>
#include <Vel/detail/openTraceFile.h>
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <exception>
#include <new>
#include <unistd.h>
#include <utility>

#ifdef __clang__
    #if __has_feature(thread_sanitizer)
        #define VEL_THREAD_SANITIZER
        #include <sanitizer/tsan_interface.h>
    #endif
#endif

namespace Vel {

namespace {

// A lock that nobody holds in the place of one whose holder is not of this process.
void makeAnew(std::shared_mutex& mutex) {
#ifdef VEL_THREAD_SANITIZER
    __tsan_mutex_pre_unlock(&mutex, 0); // or it takes the new lock for the held one
    __tsan_mutex_post_unlock(&mutex, 0);
#endif
    ::new (&mutex) std::shared_mutex;
}

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

// A line under construction: in place while it is short, else on the heap. Without memory it is cut
// where the place ends.
class Line {
public:
    void add(std::string_view text) noexcept {
        if (!isLong()) {
            const std::size_t fitting = std::min(text.size(), sizeof(short_) - 1 - length_);
            std::memcpy(short_ + length_, text.data(), fitting);
            length_ += fitting;
            text.remove_prefix(fitting);
        }
        if (!text.empty() && !isCut_) addLong(text);
    }

    // Whatever the text holds, it stays one line.
    void addPrintable(std::string_view text) noexcept {
        for (const char c : text) {
            const auto byte = static_cast<unsigned char>(c);
            constexpr std::string_view digits = "0123456789abcdef";
            if (byte >= 0x20 && byte != 0x7f)
                add({&c, 1});
            else
                add({std::array{'\\', 'x', digits[byte >> 4], digits[byte & 0xf]}.data(), 4});
        }
    }

    // The line and its end; nothing is added behind that.
    std::string_view ended() noexcept {
        if (isLong()) return long_ += '\n'; // there is room for it
        short_[length_] = '\n';
        return {short_, length_ + 1};
    }

private:
    bool isLong() const noexcept { return !long_.empty(); }

    void addLong(std::string_view text) noexcept {
        try {
            long_.reserve((isLong() ? long_.size() : length_) + text.size() + 1);
        } catch (const std::exception&) {
            isCut_ = true;
            return;
        }
        if (!isLong()) long_.assign(short_, length_);
        long_ += text;
    }

    char short_[512];
    std::size_t length_ = 0; // of what is in place
    std::string long_;
    bool isCut_ = false;
};

// Time, process, handle and level: everything that stands before the text.
void addStart(Line& line, const TraceHandle& handle, unsigned level) noexcept {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    std::tm utc{};
    ::gmtime_r(&now.tv_sec, &utc);
    char start[96];
    const std::size_t dated = std::strftime(start, sizeof(start), "%Y-%m-%dT%H:%M:%S", &utc);
    std::snprintf(start + dated, sizeof(start) - dated, ".%06ldZ %d ", now.tv_nsec / 1000,
                  static_cast<int>(::getpid()));
    line.add(start);
    line.add(handle.name().view());
    char end[16];
    std::snprintf(end, sizeof(end), "/%u ", level);
    line.add(end);
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

TraceSwitchboard::TraceSwitchboard() {
    // A sink may make objects, so their locks are made first.
    static_cast<void>(detail::ObjectHeap::reservedBytes());
    if (const char* path = detail::fromEnvironment("VEL_TRACE_FILE");
        path != nullptr && *path != '\0')
        openFile(path);
    if (const char* settings = detail::fromEnvironment("VEL_TRACE"); settings != nullptr)
        settingsAre(settings, "VEL_TRACE");
}

void TraceSwitchboard::beforeFork() {
    sinkMutex_.lock();
    mutex_.lock();
}

void TraceSwitchboard::afterFork(bool isChild) {
    mutex_.unlock();
    if (isChild) // the lock is its parent's thread's: nobody else can give it back
        makeAnew(sinkMutex_);
    else
        sinkMutex_.unlock();
}

void TraceSwitchboard::openFile(const char* path) {
    std::string why;
    if (const int fd = detail::openTraceFile(path, why); fd >= 0)
        fd_ = fd;
    else
        complain("VEL_TRACE_FILE", path, why + "; tracing to standard error");
}

void TraceSwitchboard::complain(const char* source, std::string_view what, std::string_view why) {
    Line line;
    line.add(source);
    line.add(": \"");
    line.addPrintable(what);
    line.add("\": ");
    line.add(why);
    writeAll(STDERR_FILENO, line.ended());
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
    Line line;
    addStart(line, handle, level);
    line.addPrintable(text);
    writeAll(fd_, line.ended());
}

} // namespace Vel
