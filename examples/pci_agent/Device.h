// Device.h - something whose 32-bit registers can be read: a device of this machine, or the agent
// itself.
#pragma once

#include <Brixo/DeviceId.h>
#include <Vel/Integers.h>
#include <string>
#include <vector>

namespace PciAgent {

class Device {
public:
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;
    virtual ~Device() = default;

    // 16 bits that name the device within its domain: bus, device and function number, or the
    // interface's index.
    Brixo::DeviceId id() const noexcept { return id_; }

    // The PCI domain: 0 on all but the largest machines, and below 2^32. What is no hardware has a
    //                 domain above.
    Vel::U64 domain() const noexcept { return domain_; }

    // As people write it: "00:03.0", "eth0".
    const std::string& name() const noexcept { return name_; }

    // What it is: "1af4:1041 network", "counters".
    const std::string& description() const noexcept { return description_; }

    unsigned registerCount() const noexcept { return registerCount_; }

    // Reads every register now; registers[i] is the one at offset 4 * i. Throws std::system_error.
    virtual void read(std::vector<Vel::U32>& registers) const = 0;

    // The register to show to a person as an example, and what it says.
    virtual unsigned exampleRegister() const = 0;
    virtual std::string registerMeaning(unsigned registerIndex) const = 0;

protected:
    Device(Brixo::DeviceId id, Vel::U64 domain, std::string name, std::string description,
           unsigned registerCount)
        : id_(id), domain_(domain), name_(std::move(name)), description_(std::move(description)),
          registerCount_(registerCount) {}

private:
    Brixo::DeviceId id_;
    Vel::U64 domain_;
    std::string name_;
    std::string description_;
    unsigned registerCount_;
};

} // namespace PciAgent
