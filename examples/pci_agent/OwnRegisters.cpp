#include "OwnRegisters.h"

#include <array>
#include <unistd.h>

namespace PciAgent {

using Vel::U32;
using Vel::U64;

OwnRegisters::OwnRegisters()
    : Device(Brixo::DeviceId(0), U64{1} << 32, "agent", "synthetic: its own state", count) {}

void OwnRegisters::read(std::vector<U32>& registers) const {
    registers = {static_cast<U32>(::getpid()), life_, round_};
}

std::string OwnRegisters::registerMeaning(unsigned registerIndex) const {
    static constexpr std::array<const char*, count> meanings = {"written by process", "in life",
                                                                "in round"};
    return meanings.at(registerIndex);
}

void OwnRegisters::goOnFrom(U32 foundLife, U32 foundRound) {
    life_ = foundLife + 1;
    round_ = foundRound;
}

} // namespace PciAgent
