// trace_file_fuzz.cpp - any bytes as a trace file.
//
// Promises: the reader names an error and has nothing, or has no error and every message can be
//           shown: call site and words are there, and its text does not disturb a terminal.
// Length:   a trace file has exactly the length that its header tells, which a mutation seldom keeps.
//           So the input is read as it is, and once more with the length of the shortest file.
#include <Ferrolog/Reader.h>
#include <Ferrolog/detail/Layout.h>

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

bool isHarmless(std::string_view text) {
    for (const char c : text)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) return false;
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
        promise(isHarmless(reader.origin(reader.callSites()[message.site])),
                "an origin is one line");
    }
    promise(reader.notes().size() <= 101, "notes are counted");
    for (const std::string& note : reader.notes()) promise(isHarmless(note), "a note is one line");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<std::byte> bytes(size);
    for (std::size_t at = 0; at < size; ++at) bytes[at] = static_cast<std::byte>(data[at]);
    check(bytes);
    bytes.resize(shortestFileBytes);
    check(bytes);
    return 0;
}
