#include <pinbuf/detail/Turn.h>

#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <pinbuf/detail/TestSupport.h>
#include <string>
#include <thread>

namespace pinbuf {
namespace {

using test::inChild;
using test::StandardError;

// A thread that has its turn for as long as this lives.
class Taker {
public:
    Taker() {
        thread_ = std::thread([this] {
            const Turn turn;
            hasIt_ = true;
            while (!isOver_) std::this_thread::yield();
        });
        while (!hasIt_) std::this_thread::yield();
    }

    ~Taker() {
        isOver_ = true;
        thread_.join();
    }

    Taker(const Taker&) = delete;
    Taker& operator=(const Taker&) = delete;

private:
    std::atomic<bool> hasIt_{false};
    std::atomic<bool> isOver_{false};
    std::thread thread_;
};

TEST(Turn, IsOneThreadsAtATime) {
    int changes = 0;
    const auto changeOften = [&] {
        for (int i = 0; i < 1000; ++i) {
            const Turn turn;
            const int seen = __atomic_load_n(&changes, __ATOMIC_RELAXED);
            if (i % 10 == 0) std::this_thread::yield();
            __atomic_store_n(&changes, seen + 1, __ATOMIC_RELAXED);
        }
    };
    std::thread other(changeOften);
    changeOften();
    other.join();
    EXPECT_EQ(changes, 2000);
}

TEST(Turn, SaysAfterAWhileThatItWaits) {
    const StandardError standardError;
    {
        auto taker = std::make_unique<Taker>();
        std::thread waiter([] { const Turn turn; });
        while (standardError.text().empty()) std::this_thread::yield();
        taker.reset();
        waiter.join();
    }
    EXPECT_EQ(standardError.text(),
              "pinbuf: waiting for another thread of this process, which is in a call\n");
}

TEST(Turn, IsNobodysInAForkedChild) {
    const Taker taker;
    EXPECT_EQ(inChild([] {
                  const Turn turn;
                  return 0;
              }),
              0);
}

TEST(TurnState, StaysFromTurnToTurn) {
    static constinit TurnState<int> state;
    {
        const Turn turn;
        state.get() = 7;
    }
    const Turn turn;
    EXPECT_EQ(state.get(), 7);
}

TEST(TurnState, IsInheritedByAChildThatFindsItWhole) {
    static constinit TurnState<int> state;
    {
        const Turn turn;
        state.get() = 7;
    }
    EXPECT_EQ(inChild([] {
                  const Turn turn;
                  return state.get();
              }),
              7);
}

TEST(TurnState, IsMadeAnewInAChildThatMayFindItHalfChanged) {
    static constinit TurnState<int> state;
    {
        const Turn turn;
        state.get() = 7;
    }
    const auto change = [](int value) {
        const Turn turn;
        const int before = state.get();
        state.get() = value;
        return before;
    };
    const Taker taker;
    EXPECT_EQ(inChild([&] {
                  if (change(8) != 0) return 1;
                  if (change(9) != 8) return 2;
                  return inChild([&] { return change(10) == 9 ? 0 : 3; });
              }),
              0);
}

} // namespace
} // namespace pinbuf
