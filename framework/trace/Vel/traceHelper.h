// traceHelper.h - builds a trace line from its parts, only when its level is on.
//
//     VEL_TRACE(handle, 9, "Recovered entry, index: " << index << " key: " << key);
//     Vel::traceHelper(handle, 9, "Recovered entry, index: ", index, " key: ", key);
//
// Parts:   whatever has an operator<< to a std::ostream. Numbers look the same in every locale.
// Cost:    VEL_TRACE evaluates nothing but the handle and the level when the level is off;
//          traceHelper is a function: its arguments are evaluated in any case, and only not
//          printed.
// Errors:  what an operator<< throws reaches the caller, and no line is written.
#pragma once

#include <Vel/Export.h>
#include <Vel/TraceHandle.h>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

// Streams `...` as one line of `level` of `handle` if that level is on.
#define VEL_TRACE(handle, level, ...)                                                              \
    do {                                                                                           \
        const ::Vel::TraceHandle& velTraceHandle = (handle);                                       \
        if (velTraceHandle.isOn(level)) [[unlikely]]                                               \
            ::Vel::detail::traceLine(velTraceHandle, level, [&](::std::ostream& velTraceOut) {     \
                velTraceOut << __VA_ARGS__;                                                        \
            });                                                                                    \
    } while (false)

namespace Vel {

namespace detail {

// A line under construction: characters in place, and on the heap only when they do not fit.
class VEL_API TraceLine : private std::streambuf {
public:
    TraceLine();
    ~TraceLine() override;

    std::ostream& out() noexcept { return out_; }

    std::string_view text() const noexcept {
        return {pbase(), static_cast<std::size_t>(pptr() - pbase())};
    }

private:
    int_type overflow(int_type c) override;

    char first_[240];
    std::string grown_; // holds the whole text once it has outgrown `first_`
    std::ostream out_;
};

template <class Write>
[[gnu::noinline, gnu::cold]] void traceLine(const TraceHandle& handle, unsigned level,
                                            Write write) {
    TraceLine line;
    write(line.out());
    handle.write(level, line.text());
}

} // namespace detail

template <class... Parts>
void traceHelper(const TraceHandle& handle, unsigned level, const Parts&... parts) {
    if (handle.isOn(level)) [[unlikely]]
        detail::traceLine(handle, level,
                          [&](std::ostream& out) { static_cast<void>((out << ... << parts)); });
}

} // namespace Vel
