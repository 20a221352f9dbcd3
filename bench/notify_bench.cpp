// notify_bench.cpp - a notification pass beside a bare loop of virtual calls, boost::signals2 and
// GObject's notify.
//
// Pass/WHO/LISTENERS: one pass to 1, 8 and 64 listeners, each of which adds one to a counter of its
//                     own.
#include <Vel/Notifiee.h>
#include <Vel/Notifier.h>
#include <benchmark/benchmark.h>
#include <memory>
#include <vector>
#if BRIXO_HAVE_BOOST
    #include <boost/signals2/signal.hpp>
#endif
#if BRIXO_HAVE_GOBJECT
    #include <glib-object.h>
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

// Nobody makes one, which no compiler knows: with Counter alone it would call nobody and count in
// the loop itself.
class Sleeper final : public Listener {};

std::vector<std::unique_ptr<Listener>> makeListeners(const benchmark::State& state) {
    std::vector<std::unique_ptr<Listener>> listeners;
    for (auto left = state.range(0); left > 0; --left)
        listeners.push_back(std::make_unique<Counter>());
    if (state.range(0) > 1'000'000) listeners.push_back(std::make_unique<Sleeper>());
    return listeners;
}

void bareLoop(benchmark::State& state) {
    const auto listeners = makeListeners(state);
    for (auto _ : state)
        for (const auto& listener : listeners) listener->onTick();
}

BENCHMARK(ours)->Name("Pass/ours")->Arg(1)->Arg(8)->Arg(64);
BENCHMARK(bareLoop)->Name("Pass/bareLoop")->Arg(1)->Arg(8)->Arg(64);

#if BRIXO_HAVE_BOOST
void signals2(benchmark::State& state) {
    boost::signals2::signal<void()> signal;
    const auto listeners = makeListeners(state);
    for (const auto& listener : listeners)
        signal.connect([called = listener.get()] { called->onTick(); });
    for (auto _ : state) signal();
}

BENCHMARK(signals2)->Name("Pass/signals2")->Arg(1)->Arg(8)->Arg(64);
#endif

#if BRIXO_HAVE_GOBJECT
// A class with one property, "index", that notifies.
GParamSpec* indexSpec = nullptr;

void initClass(void* klass, void* /*data*/) {
    auto* const objectClass = static_cast<GObjectClass*>(klass);
    objectClass->get_property = [](GObject*, guint, GValue*, GParamSpec*) {};
    indexSpec = g_param_spec_uint64("index", nullptr, nullptr, 0, ~guint64{0}, 0, G_PARAM_READABLE);
    g_object_class_install_property(objectClass, 1, indexSpec);
}

GType tickerType() {
    static const GType type =
        g_type_register_static_simple(G_TYPE_OBJECT, "Ticker", sizeof(GObjectClass), initClass,
                                      sizeof(GObject), nullptr, static_cast<GTypeFlags>(0));
    return type;
}

void onNotify(GObject* /*ticker*/, GParamSpec* /*property*/, void* listener) {
    static_cast<Listener*>(listener)->onTick();
}

void gobject(benchmark::State& state) {
    auto* const ticker = static_cast<GObject*>(g_object_new(tickerType(), nullptr));
    const auto listeners = makeListeners(state);
    for (const auto& listener : listeners)
        g_signal_connect_data(ticker, "notify::index", reinterpret_cast<GCallback>(onNotify),
                              listener.get(), nullptr, static_cast<GConnectFlags>(0));
    for (auto _ : state) g_object_notify_by_pspec(ticker, indexSpec);
    g_object_unref(ticker);
}

BENCHMARK(gobject)->Name("Pass/gobject")->Arg(1)->Arg(8)->Arg(64);
#endif

} // namespace
