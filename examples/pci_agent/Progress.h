// Progress.h - watches the processing status of every DAL and prints how far they have got, from
// notifications alone.
#pragma once

#include <Brixo/DalProcessingStatusCol.h>
#include <Vel/Integers.h>
#include <Vel/Ptr.h>
#include <memory>
#include <vector>

namespace PciAgent {

// Learns of DALs as they come, and of each command that one of them has finished.
class Progress {
public:
    // Prints a line each time that the DALs together have finished `commands` more.
    Progress(const Vel::Ptr<Brixo::DalProcessingStatusCol>& dals, Vel::U64 commands);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    // One line for all: commands put on their queues, commands finished, errors; and one for each
    //                   DAL with errors.
    void printStatus() const;

private:
    class DalWatcher;
    class ColWatcher;

    void watch(Brixo::DalId dalId);
    void advanced();

    Vel::Ptr<Brixo::DalProcessingStatusCol> dals_;
    Vel::U64 commands_;
    Vel::U64 finished_ = 0;
    Vel::Ptr<ColWatcher> colWatcher_;
    std::vector<Vel::Ptr<DalWatcher>> dalWatchers_;
};

} // namespace PciAgent
