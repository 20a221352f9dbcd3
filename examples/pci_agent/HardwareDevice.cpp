#include "HardwareDevice.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <unistd.h>

namespace PciAgent {

namespace fs = std::filesystem;
using Vel::U16;
using Vel::U32;
using Vel::U64;

namespace {

std::string firstLine(const fs::path& file) {
    std::ifstream in(file);
    std::string line;
    std::getline(in, line);
    return line;
}

unsigned long hexadecimal(const std::string& text) {
    return std::strtoul(text.c_str(), nullptr, 16);
}

// The base classes that a PCI function states in the top byte of its class code.
const char* className(unsigned long classCode) {
    static constexpr std::array names = {"old device", "storage",  "network",     "display",
                                         "multimedia", "memory",   "bridge",      "serial",
                                         "peripheral", "input",    "docking",     "processor",
                                         "serial bus", "wireless", "intelligent", "satellite",
                                         "encryption", "signal",   "accelerator", "instrument"};
    const std::size_t base = (classCode >> 16) & 0xff;
    return base < names.size() ? names[base] : "device";
}

class PciFunction final : public Device {
public:
    struct Address {
        unsigned domain, bus, device, function;

        U16 inDomain() const {
            return static_cast<U16>((bus & 0xff) << 8 | (device & 0x1f) << 3 | (function & 7));
        }
    };

    PciFunction(const fs::path& folder, Address address, std::string name, std::string description,
                unsigned registerCount)
        : Device(Brixo::DeviceId(address.inDomain()), address.domain, std::move(name),
                 std::move(description), registerCount),
          config_(::open((folder / "config").c_str(), O_RDONLY | O_CLOEXEC)) {
        if (config_ < 0) fail();
    }

    ~PciFunction() override { ::close(config_); }

    void read(std::vector<U32>& registers) const override {
        registers.assign(registerCount(),
                         0xffffffff); // what a register that does not answer reads as
        const ssize_t got = ::pread(config_, registers.data(), registers.size() * sizeof(U32), 0);
        if (got < 0) fail();
    }

    unsigned exampleRegister() const override { return 0; }

    std::string registerMeaning(unsigned registerIndex) const override {
        return registerIndex == 0 ? "device and vendor id" : "";
    }

    // Without privilege the kernel shows the standard header alone, 64 bytes.
    static unsigned readableRegisters(const fs::path& folder) {
        const int config = ::open((folder / "config").c_str(), O_RDONLY | O_CLOEXEC);
        if (config < 0) return 0;
        std::array<char, 4096> bytes;
        const ssize_t got = ::pread(config, bytes.data(), bytes.size(), 0);
        ::close(config);
        return got <= 0 ? 0 : static_cast<unsigned>(got) / sizeof(U32);
    }

    static std::unique_ptr<Device> at(const fs::path& folder) {
        Address address{};
        if (std::sscanf(folder.filename().c_str(), "%x:%x:%x.%x", &address.domain, &address.bus,
                        &address.device, &address.function) != 4)
            return nullptr;
        const unsigned count = readableRegisters(folder);
        if (count == 0) return nullptr;
        char name[32];
        std::snprintf(name, sizeof(name), "%02x:%02x.%x", address.bus, address.device,
                      address.function);
        char description[64];
        std::snprintf(description, sizeof(description), "%04lx:%04lx %s",
                      hexadecimal(firstLine(folder / "vendor")),
                      hexadecimal(firstLine(folder / "device")),
                      className(hexadecimal(firstLine(folder / "class"))));
        return std::make_unique<PciFunction>(folder, address, name, description, count);
    }

private:
    [[noreturn]] void fail() const {
        throw std::system_error(errno, std::generic_category(),
                                "cannot read the configuration space of " + name());
    }

    int config_;
};

class NetworkInterface final : public Device {
public:
    NetworkInterface(U16 index, std::string name, std::vector<fs::path> counters)
        : Device(Brixo::DeviceId(index), 0, std::move(name), "counters",
                 static_cast<unsigned>(counters.size())),
          counters_(std::move(counters)) {}

    void read(std::vector<U32>& registers) const override {
        registers.clear();
        for (const fs::path& counter : counters_)
            registers.push_back(
                static_cast<U32>(std::strtoull(firstLine(counter).c_str(), nullptr, 10)));
    }

    // What it has received; the first counter when there is no such.
    unsigned exampleRegister() const override {
        const auto received = std::ranges::find(counters_, "rx_bytes", &fs::path::filename);
        return received == counters_.end()
                   ? 0
                   : static_cast<unsigned>(std::distance(counters_.begin(), received));
    }

    std::string registerMeaning(unsigned registerIndex) const override {
        return counters_[registerIndex].filename();
    }

    static std::unique_ptr<Device> at(const fs::path& folder) {
        std::vector<fs::path> counters;
        std::error_code unreadable;
        for (const auto& counter : fs::directory_iterator(folder / "statistics", unreadable))
            counters.push_back(counter.path());
        if (counters.empty()) return nullptr;
        std::ranges::sort(counters);
        const auto index = std::strtoul(firstLine(folder / "ifindex").c_str(), nullptr, 10);
        return std::make_unique<NetworkInterface>(static_cast<U16>(index), folder.filename(),
                                                  std::move(counters));
    }

private:
    std::vector<fs::path> counters_;
};

template <class Kind>
std::vector<std::unique_ptr<Device>> devicesBelow(const fs::path& folder) {
    std::vector<fs::path> places;
    std::error_code absent;
    for (const auto& place : fs::directory_iterator(folder, absent)) places.push_back(place.path());
    std::ranges::sort(places);
    std::vector<std::unique_ptr<Device>> devices;
    for (const fs::path& place : places)
        if (auto device = Kind::at(place)) devices.push_back(std::move(device));
    return devices;
}

} // namespace

std::vector<std::unique_ptr<Device>> findDevices(const std::string& sysfs) {
    auto devices = devicesBelow<PciFunction>(sysfs + "/bus/pci/devices");
    if (devices.empty()) devices = devicesBelow<NetworkInterface>(sysfs + "/class/net");
    return devices;
}

} // namespace PciAgent
