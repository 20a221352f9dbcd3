// Turn.h - openings, closings and forks happen one after the other.
//
// Order:   that in which they were asked for, so a fork has its turn also among threads that open
//          and close without a pause.
// Signals: a handler may ask for a turn. It gets none, and does not wait, while the thread that it
//          interrupted has one or waits for one.
// fork():  waits for its turn, so a child finds nothing half done by a thread that it does not
//          have.
#pragma once

namespace Ferrolog::detail {

class Turn {
public:
    // Waits until the others are through; none if the thread has one.
    static Turn waitedFor();

    // None if anybody has one.
    static Turn ifFree();

    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

    ~Turn();

    explicit operator bool() const { return isOurs_; }

    // Around a fork, in the thread that forks: before it, and after it in the parent or in the
    // child, where all who waited are gone.
    static void takeForFork();
    static void giveInParent();
    static void giveInChild();

private:
    explicit Turn(bool isOurs) : isOurs_(isOurs) {}

    bool isOurs_;
};

} // namespace Ferrolog::detail
