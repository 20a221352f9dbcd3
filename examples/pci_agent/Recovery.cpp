#include "Recovery.h"

#include <unistd.h>

namespace PciAgent {

using Vel::U32;

namespace {

Fate fateOf(const WriteJournal::InFlight& write, const WriteJournal::Register& before, bool present,
            U32 found) {
    if (!present) return Fate::absent;
    if (before.completed == 0) {
        if (found == write.value) return Fate::whole;
        return found == 0 ? Fate::keyAlone : Fate::torn;
    }
    if (found == write.value) return found == before.value ? Fate::unchanged : Fate::whole;
    return found == before.value ? Fate::before : Fate::torn;
}

} // namespace

Recovery recoveryOf(const Agent& agent, WriteJournal& journal) {
    Recovery recovery{};
    Verdict& verdict = recovery.verdict;
    verdict.process = static_cast<U32>(::getpid());
    verdict.registers = agent.registerCount();
    recovery.write = journal.inFlight();
    const WriteJournal::InFlight& write = recovery.write;
    unsigned explained = 0; // entries that somebody has written, wholly or not
    for (unsigned t = 0; t < agent.devices().size(); ++t) {
        const MirroredDevice& mirrored = agent.devices()[t];
        verdict.found += mirrored.recovered;
        for (unsigned i = 0; i < mirrored.device->registerCount(); ++i) {
            U32 found = 0;
            const bool present = mirrored.mirrored(i, found);
            const WriteJournal::Register& written = journal.at(t, i);
            if (write.active != 0 && write.table == t && write.index == i) {
                verdict.inFlight = fateOf(write, written, present, found);
                recovery.foundOfWrite = found;
                explained += present;
                journal.settle(present, found);
                continue;
            }
            if (written.completed == 0) continue;
            explained += present;
            ++verdict.completed;
            if (present && found == written.value)
                ++verdict.equal;
            else
                recovery.lost.push_back({t, i, written.value, present, found});
        }
    }
    verdict.unexpected = verdict.found - explained;
    return recovery;
}

} // namespace PciAgent
