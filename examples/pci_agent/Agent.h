// Agent.h - mirrors the registers of every device of the machine into cache tables, one table per device.
//
// A table's key is the register's offset, its entry the register's 4 bytes. A restarted agent finds its tables again:
// the constructor recovers them, and refresh() goes on where the killed one stopped.
//
// Each device has a DAL, numbered in the order of the devices. A command of it is to write all registers of the device once;
// its status counts commands, and failures to read by their errno.
#pragma once

#include "HardwareDevice.h"
#include "WriteJournal.h"
#include <Brixo/AgentId.h>
#include <Brixo/CacheTable.h>
#include <Brixo/DalProcessingStatusCol.h>
#include <Vel/Ptr.h>
#include <memory>
#include <string>
#include <vector>

namespace PciAgent {

// One table and the device that it mirrors.
struct MirroredDevice {
    std::unique_ptr<HardwareDevice> device;
    Vel::Ptr<Brixo::CacheTable> table;
    Vel::Ptr<Brixo::DalProcessingStatus> status; // of the DAL that mirrors it
    unsigned recovered;                          // entries that the table held when it was opened

    static constexpr Vel::U32 registerBytes = 4;

    static Brixo::DeviceOffset key(unsigned registerIndex) {
        return Brixo::DeviceOffset(registerIndex * registerBytes);
    }

    // The value that the table holds for a register. False when it has no entry for it.
    bool mirrored(unsigned registerIndex, Vel::U32& value) const;
};

class Agent {
public:
    // Opens the table of every device. `journal` outlives the agent.
    Agent(Brixo::AgentId id, WriteJournal& journal);

    const std::vector<MirroredDevice>& devices() const noexcept { return devices_; }

    Brixo::AgentId id() const noexcept { return id_; }

    // The status of every DAL; whoever wants to watch registers there.
    const Vel::Ptr<Brixo::DalProcessingStatusCol>& dals() const noexcept { return dals_; }

    // The name of a device's region, as the table made it.
    std::string regionName(const MirroredDevice& mirrored) const;

    // Reads every register of every device once, and writes each device's registers into its table `writes` times over. Reading
    // hardware takes far longer than writing memory: with many writes a kill is likely to interrupt one. A device that cannot
    // be read is left out this time, and its error counted.
    void refresh(unsigned writes);

private:
    bool read(const MirroredDevice& mirrored);
    void mirror(unsigned table);

    Brixo::AgentId id_;
    WriteJournal* journal_;
    Vel::Ptr<Brixo::DalProcessingStatusCol> dals_ = new Brixo::DalProcessingStatusCol;
    std::vector<MirroredDevice> devices_;
    std::vector<Vel::U32> registers_;
};

} // namespace PciAgent
