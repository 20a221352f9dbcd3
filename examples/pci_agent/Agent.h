// Agent.h - mirrors its own registers and those of every device of the machine into cache tables,
// one table per device.
//
// A table's key is the register's offset, its entry the register's 4 bytes. A restarted agent finds
// its tables again: the constructor recovers them, and refresh() goes on where the killed one
// stopped, with the round that it had reached.
//
// Each device has a DAL, numbered in the order of the devices. A command of it is to write all
// registers of the device once; its status counts commands, and failures to read by their errno.
#pragma once

#include "Device.h"
#include "OwnRegisters.h"
#include "WriteJournal.h"
#include <Brixo/AgentId.h>
#include <Brixo/CacheTable.h>
#include <Brixo/DalProcessingStatusCol.h>
#include <Vel/Ptr.h>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace PciAgent {

// One table and the device that it mirrors.
struct MirroredDevice {
    std::unique_ptr<Device> device;
    Vel::Ptr<Brixo::CacheTable> table;
    Vel::Ptr<Brixo::DalProcessingStatus> status; // of the DAL that mirrors it
    unsigned recovered;                          // entries that the table held when it was opened
    std::vector<Vel::U32> registers;             // as they were read last

    static constexpr Vel::U32 registerBytes = 4;

    static Brixo::DeviceOffset key(unsigned registerIndex) {
        return Brixo::DeviceOffset(registerIndex * registerBytes);
    }

    // The value that the table holds for a register. False when it has no entry for it.
    bool mirrored(unsigned registerIndex, Vel::U32& value) const;
};

class Agent {
public:
    // Opens the table of every device below `sysfs`. `journal` outlives the agent.
    Agent(Brixo::AgentId id, const std::string& sysfs, WriteJournal& journal);

    // The agent's own registers first, then the hardware.
    const std::vector<MirroredDevice>& devices() const noexcept { return devices_; }

    Brixo::AgentId id() const noexcept { return id_; }

    // The status of every DAL; whoever wants to watch registers there.
    const Vel::Ptr<Brixo::DalProcessingStatusCol>& dals() const noexcept { return dals_; }

    // The name of a device's region, as the table made it.
    std::string regionName(const MirroredDevice& mirrored) const;

    // Of all tables together.
    unsigned registerCount() const noexcept;

    // Spreads what is left of the first fill over this time, so that a person can watch it and a
    // kill can hit it: each write of an entry that is not there yet waits a little before.
    void spreadFillOver(std::chrono::microseconds whole);

    // Reads every register of every device once, then writes all of them into their tables,
    // `rounds` times over. Reading hardware takes far longer than writing memory: with many rounds
    // a kill is likely to interrupt a write. A device that cannot be read is left out this time,
    // and its error counted.
    void refresh(unsigned rounds);

private:
    void open(std::unique_ptr<Device> device);
    static bool read(MirroredDevice& mirrored);
    void mirror(unsigned table);

    Brixo::AgentId id_;
    WriteJournal* journal_;
    Vel::Ptr<Brixo::DalProcessingStatusCol> dals_ = new Brixo::DalProcessingStatusCol;
    std::vector<MirroredDevice> devices_;
    OwnRegisters* own_; // devices_[0]
    std::chrono::microseconds pauseBeforeNewEntry_{0};
};

} // namespace PciAgent
