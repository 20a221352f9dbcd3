// trace_file_fuzz.cpp - any bytes as a trace file.
//
// Promises: the reader names an error and has nothing, or has no error and every message can be
//           shown: call site and words are there, and its text does not disturb a terminal.
// Length:   a trace file has exactly the length that its header tells, which a mutation seldom
//           keeps. So an input whose last byte is even is read with the length of the shortest
//           file, and any other as it is.
// Speed:    an execution costs what the messages and the memory for their texts cost. So most seeds
//           have few messages (smoke.py), memory is used again soon, and the fuzzer does not watch
//           which way the loop over the characters goes.
#include <Ferrolog/Reader.h>
#include <Ferrolog/detail/Layout.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::size_t shortestFileBytes = 45056; // of the smallest ring, 16 KiB

void promise(bool kept, const char* what) {
    if (kept) return;
    std::fprintf(stderr, "broken promise: %s\n", what);
    std::abort();
}

[[clang::no_sanitize("coverage")]] bool isHarmless(std::string_view text) {
    const char* const end = text.data() + text.size();
    for (const char* c = text.data(); c != end; ++c)
        if (static_cast<unsigned char>(*c) < 0x20 || *c == 0x7f) return false;
    return true;
}

void check(std::span<const std::byte> bytes) {
    const Ferrolog::Reader reader(bytes);
    promise(reader.error().empty() || reader.messages().empty(), "an error comes alone");
    promise(isHarmless(reader.error()), "the error is one line");
    for (const Ferrolog::Message& message : reader.messages()) {
        promise(message.site < reader.callSites().size(), "a message has a call site");
        promise(reader.words(message).size() == message.wordCount, "a message has its words");
        promise(isHarmless(reader.text(message)), "a message is one line");
    }
    for (const Ferrolog::CallSite& site : reader.callSites())
        promise(isHarmless(reader.origin(site)), "an origin is one line");
    promise(reader.notes().size() <= 101, "notes are counted");
    for (const std::string& note : reader.notes()) promise(isHarmless(note), "a note is one line");
}

} // namespace

// All that an execution frees stays out of use until it has ended.
extern "C" const char* __asan_default_options() {
    return "quarantine_size_mb=8:malloc_context_size=4";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto* const first = reinterpret_cast<const std::byte*>(data);
    if (size == 0 || size == shortestFileBytes || data[size - 1] % 2 != 0) {
        check({first, size});
        return 0;
    }
    std::vector<std::byte> bytes(first, first + std::min(size, shortestFileBytes));
    bytes.resize(shortestFileBytes);
    check(bytes);
    return 0;
}
