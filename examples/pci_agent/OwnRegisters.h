// OwnRegisters.h - the agent's own registers. They are synthetic: no hardware has them, the agent
// makes them up.
//
// Hardware's registers hardly change. These do, in each round: who reads them sees which process
// wrote them, and when.
#pragma once

#include "Device.h"

namespace PciAgent {

class OwnRegisters final : public Device {
public:
    enum Index : unsigned { // of the registers
        writer,             // the process that wrote the registers
        life,               // how many processes have done so, one after the other
        round,              // how often all registers were written, by all of them together
        count
    };

    OwnRegisters();

    void read(std::vector<Vel::U32>& registers) const override;

    unsigned exampleRegister() const override { return round; }

    std::string registerMeaning(unsigned registerIndex) const override;

    // Goes on where another process stopped, by what was found of its registers.
    void goOnFrom(Vel::U32 foundLife, Vel::U32 foundRound);

    void nextRound() noexcept { ++round_; }

private:
    Vel::U32 life_ = 1;
    Vel::U32 round_ = 0;
};

} // namespace PciAgent
