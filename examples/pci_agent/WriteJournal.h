// WriteJournal.h - what the agent has written, in memory that its watcher sees: the demo's witness,
// no part of the product.
//
// Contents: for each register of each table the value of the last completed write; the write in
//           flight; and the verdict of the process that opened the tables last.
// Order:    begin() states the write before it starts, completed() after it has returned, so that
//           at a kill every write is either not begun, in flight, or completed.
// Threads:  one writer; a reader looks once the writer is dead.
#pragma once

#include "Verdict.h"
#include <Vel/Integers.h>
#include <string>

namespace PciAgent {

class WriteJournal {
public:
    static constexpr unsigned maxTables = 64;
    static constexpr unsigned maxRegisters = 1024;

    struct Register {
        Vel::U32 value;     // of the last completed write
        Vel::U32 completed; // how many writes completed, modulo 2^32
    };

    struct InFlight {
        Vel::U32 active; // 1 from before the write until after it
        Vel::U32 table;
        Vel::U32 index; // of the register
        Vel::U32 value; // what is being written
    };

    // Opens the journal file, making one of zeros if there is none. Throws std::system_error.
    explicit WriteJournal(const std::string& path);
    WriteJournal(const WriteJournal&) = delete;
    WriteJournal& operator=(const WriteJournal&) = delete;
    ~WriteJournal();

    void begin(unsigned table, unsigned index, Vel::U32 value) noexcept;
    void completed() noexcept;

    // Modulo 2^32.
    Vel::U32 completedWrites() const noexcept;

    InFlight inFlight() const noexcept { return contents_->inFlight; }

    const Register& at(unsigned table, unsigned index) const noexcept {
        return contents_->registers[table][index];
    }

    // Registers of which at least one write has completed.
    unsigned completedEntries() const noexcept;

    // The verdict of a process is there once its number is.
    void verdictIs(const Verdict& verdict) noexcept;
    bool hasVerdictOf(Vel::U32 process) const noexcept;

    const Verdict& verdict() const noexcept { return contents_->verdict; }

    // Settles a write that a killed agent left in flight: the value that was found counts as
    // written, or, if there is no entry, nothing does.
    void settle(bool present, Vel::U32 found) noexcept;

private:
    struct Contents {
        Vel::U32 completedWrites;
        InFlight inFlight;
        Verdict verdict;
        Register registers[maxTables][maxRegisters];
    };

    Contents* contents_;
};

} // namespace PciAgent
