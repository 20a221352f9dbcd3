// notify_bench.cpp - a notification pass beside a bare loop of virtual calls and boost::signals2.
//
// Pass/WHO/LISTENERS: one pass to 1, 8 and 64 listeners, each of which adds one to a counter of its own.
#include <Vel/Notifiee.h>
#include <Vel/Notifier.h>
#include <benchmark/benchmark.h>
#include <memory>
#include <vector>
#if BRIXO_HAVE_BOOST
    #include <boost/signals2/signal.hpp>
#endif

namespace {

class Clock : public Vel::Notifier<Clock> {
public:
    class NotifieeConst : public Vel::Notifiee<Clock> {
    public:
        virtual void onTick() {}
    };

    void tick() {
        notify(131, [](NotifieeConst& notifiee) { notifiee.onTick(); });
    }
};

class Watcher final : public Clock::NotifieeConst {
public:
    void onTick() override { benchmark::DoNotOptimize(++count_); }

private:
    unsigned count_ = 0;
};

void ours(benchmark::State& state) {
    const Vel::Ptr<Clock> clock = new Clock;
    std::vector<Vel::Ptr<Watcher>> watchers;
    for (auto left = state.range(0); left > 0; --left) {
        watchers.push_back(new Watcher);
        watchers.back()->notifierIs(clock);
        watchers.back()->isRegisteredNotifieeIs(true);
    }
    for (auto _ : state) clock->tick();
    for (const auto& watcher : watchers) watcher->notifierIs(nullptr);
}

// Two classes, so that no compiler guesses which one is called.
class Listener {
public:
    virtual ~Listener() = default;

    virtual void onTick() {}
};

class Counter final : public Listener {
public:
    void onTick() override { benchmark::DoNotOptimize(++count_); }

private:
    unsigned count_ = 0;
};

void bareLoop(benchmark::State& state) {
    std::vector<std::unique_ptr<Listener>> listeners;
    for (auto left = state.range(0); left > 0; --left)
        listeners.push_back(std::make_unique<Counter>());
    for (auto _ : state)
        for (const auto& listener : listeners) {
            Listener* called = listener.get();
            benchmark::DoNotOptimize(called); // the class is not known
            called->onTick();
        }
}

BENCHMARK(ours)->Name("Pass/ours")->Arg(1)->Arg(8)->Arg(64);
BENCHMARK(bareLoop)->Name("Pass/bareLoop")->Arg(1)->Arg(8)->Arg(64);

#if BRIXO_HAVE_BOOST
void signals2(benchmark::State& state) {
    boost::signals2::signal<void()> signal;
    std::vector<std::unique_ptr<Listener>> listeners;
    for (auto left = state.range(0); left > 0; --left) {
        listeners.push_back(std::make_unique<Counter>());
        signal.connect([listener = listeners.back().get()] { listener->onTick(); });
    }
    for (auto _ : state) signal();
}

BENCHMARK(signals2)->Name("Pass/signals2")->Arg(1)->Arg(8)->Arg(64);
#endif

} // namespace
