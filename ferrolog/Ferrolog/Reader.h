// Reader.h - reads a trace file, of a living process or a dead one, written by a 32- or a 64-bit
// program.
//
// Owns:      a copy of the file's contents; the file itself is opened for reading, copied, and
//            closed again.
// Tolerates: whatever the bytes are. What is torn, damaged or foreign is skipped and named in
//            notes(); the rest is there. Only a file that cannot be read or is no trace file at all
//            gives an error().
// Exact:     lost() of a call site is the number of messages that it had begun when the file was
//            copied and that the file no longer holds. One that a kill cut off counts as lost;
//            while the writer lives, one that is just being written may.
// Cost:      O(file + messages log messages) time, some four times the file's size of memory.
// Threads:   const calls from any thread.
#pragma once

#include <Ferrolog/Ferrolog.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Ferrolog {

// A process that wrote into the file, from an opening, or a fork, to its end.
struct Life {
    std::uint32_t number = 0; // 1 for the first in this file
    std::uint32_t pid = 0;
    std::string name;          // of the program, cut at 16 bytes; as the file has it
    std::uint64_t beganNs = 0; // since 1970, UTC
};

// The texts stand as the file has them; Reader::harmless() makes them fit to print.
struct CallSite {
    std::string file;
    std::uint32_t line = 0;
    std::string format;
    std::string letters;
    bool known = false;        // false: its record is damaged; file and format are empty
    std::uint64_t present = 0; // messages in the file
    std::uint64_t lost = 0;    // begun, and no longer in the file
};

struct Message {
    std::uint64_t timeNs =
        0; // since 1970, UTC; 0: unknown, because the record of its life is damaged or gone
    std::uint32_t life = 0;   // number of its life; 0: unknown
    std::uint32_t thread = 0; // the kernel's thread id; 0: unknown
    std::uint32_t site = 0;   // index into callSites()
    std::uint32_t firstWord = 0;
    std::uint32_t wordCount = 0;
};

class FERROLOG_API Reader {
public:
    // Reads the file at this path, through a symbolic link too.
    explicit Reader(const std::string& path);

    // Reads contents that are in memory already; `bytes` is not needed afterwards.
    explicit Reader(std::span<std::byte const> bytes);

    // Why there is nothing to read, one line without the path; "" if there is.
    const std::string& error() const { return error_; }

    // Oldest first. The order is that of the time stamps; the messages of one thread keep theirs.
    const std::vector<Message>& messages() const { return messages_; }

    const std::vector<CallSite>& callSites() const { return callSites_; }

    // In the order of their numbers; those that the file has not forgotten.
    const std::vector<Life>& lives() const { return lives_; }

    // Null if the file has forgotten it, or for 0.
    const Life* life(std::uint32_t number) const;

    std::span<std::uint32_t const> words(const Message& message) const {
        return std::span(words_).subspan(message.firstWord, message.wordCount);
    }

    // "Recovered entry, index: 5 key: 77", harmless.
    std::string text(const Message& message) const;

    // "BrixoCacheTable:212", harmless.
    std::string origin(const CallSite& site) const;

    // The text as it may be printed wherever it comes from: one line that commands no terminal.
    // Control characters, marks of direction, line separators and bytes that are no UTF-8 come out
    // byte by byte as \x1b, a backslash as two.
    static std::string harmless(std::string_view text);

    // All call sites together.
    std::uint64_t lost() const { return lost_; }

    // Messages of which only the beginning was written when the file was copied.
    std::uint64_t unfinished() const { return unfinished_; }

    // What was skipped and why, one line each; at most a hundred, then one that counts the others.
    const std::vector<std::string>& notes() const { return notes_; }

private:
    class Parser;

    std::string error_;
    std::vector<Message> messages_;
    std::vector<CallSite> callSites_;
    std::vector<Life> lives_;
    std::vector<std::uint32_t> words_;
    std::vector<std::string> notes_;
    std::uint64_t lost_ = 0;
    std::uint64_t unfinished_ = 0;
};

} // namespace Ferrolog
