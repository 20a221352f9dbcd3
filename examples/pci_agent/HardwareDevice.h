// HardwareDevice.h - the devices of this machine.
//
// Two kinds: a PCI function, whose registers are its configuration space; and, on a machine without
//            a PCI bus, a network
// interface, whose registers are the low halves of its counters in the order of their names.
#pragma once

#include "Device.h"
#include <memory>
#include <string>
#include <vector>

namespace PciAgent {

// Every PCI function below `sysfs`, commonly "/sys", in ascending order, or, if there is none,
// every network interface.
std::vector<std::unique_ptr<Device>> findDevices(const std::string& sysfs);

} // namespace PciAgent
