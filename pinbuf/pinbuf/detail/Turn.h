// Turn.h - one thread of the process at a time.
//
// Why:     the kernel's record locks keep processes apart, not the threads of one; and what the
//          library remembers between calls belongs to whoever has the turn.
// Wait:    as long as another thread has its turn; after a second a line on standard error says so.
// Fork:    a child begins with nobody's turn, whoever had it in the parent. What a thread that the
//          child has not got may have left half changed in memory is never looked at again (see
//          TurnState).
// Threads: any. One turn at a time for a thread: no turn within a turn.
#pragma once

namespace pinbuf {

class Turn {
public:
    Turn();
    ~Turn();
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

    // How many forks lie between the process and the one that loaded the library.
    static unsigned forks();

    // The number of the last of them during which another thread had its turn; 0: none.
    static unsigned lastTornFork();
};

// Something that the process remembers from turn to turn. Made when it is first asked for, and anew
// in a child that was forked while another thread had its turn: then the old one is left alone, for
// ever.
template <typename State>
class TurnState {
public:
    // Only during a turn.
    State& get() {
        if (state_ == nullptr || madeAtFork_ < Turn::lastTornFork()) {
            state_ = new State{};
            madeAtFork_ = Turn::forks();
        }
        return *state_;
    }

private:
    State* state_ = nullptr; // lives as long as the process
    unsigned madeAtFork_ = 0;
};

} // namespace pinbuf
