// reflection_bench.cpp - one 64-bit attribute through reflection, beside protobuf's Reflection and
// GObject's properties.
//
// ById/WHO/(get|set) has looked the attribute up before; ByName/WHO/(get|set) looks it up by its
// name each time. Each side uses what it keeps between calls: we an adapter for the answer, the
// peers nothing. GObject knows properties by name alone: its ById figure is the same call.
// ByText/ours/get is Any, which makes an adapter for each answer.
#include <Brixo/DalProcessingStatus.h>
#include <Vel/Any.h>
#include <Vel/Builtin.h>
#include <Vel/value/ObjectType.h>
#include <Vel/value/ValueGenericIf.h>
#include <benchmark/benchmark.h>
#if BRIXO_HAVE_PROTOBUF
    #include "values.pb.h"
#endif
#if BRIXO_HAVE_GOBJECT
    #include <glib-object.h>
#endif

namespace {

using Vel::AttributeOp;
using Vel::GenericIf;
using Vel::Ptr;
using Number = Vel::ValueGenericIf<Vel::U64>;

constexpr char name[] = "lastEnqueuedCmdIndex";

Ptr<GenericIf> newStatus() {
    return Brixo::DalProcessingStatus::_fwkType()->genericIf(
        Brixo::dalProcessingStatusFactory(Brixo::DalId(3)).ptr(), false);
}

template <bool byName>
void get(benchmark::State& state) {
    const Ptr<GenericIf> status = newStatus();
    const Ptr<GenericIf> result = Vel::Builtin<Vel::U64>::genericIf(0);
    const Vel::String8 text = name;
    const Vel::AttributeId id = status->attributeId(text);
    for (auto _ : state) {
        status->attributeOp({byName ? status->attributeId(text) : id, AttributeOp::read}, nullptr,
                            result);
        benchmark::DoNotOptimize(static_cast<Number&>(*result).val());
    }
}

template <bool byName>
void set(benchmark::State& state) {
    const Ptr<GenericIf> status = newStatus();
    const Ptr<GenericIf> value = Vel::Builtin<Vel::U64>::genericIf(0);
    const Vel::String8 text = name;
    const Vel::AttributeId id = status->attributeId(text);
    Vel::U64 number = 0;
    for (auto _ : state) {
        static_cast<Number&>(*value).valIs(++number);
        status->attributeOp(
            {byName ? status->attributeId(text) : id, AttributeOp::set, value.ptr()}, nullptr,
            nullptr);
    }
}

void getByText(benchmark::State& state) {
    const Vel::Any status(newStatus());
    for (auto _ : state) benchmark::DoNotOptimize(status.get(name).as<Vel::U64>());
}

BENCHMARK(get<false>)->Name("ById/ours/get");
BENCHMARK(set<false>)->Name("ById/ours/set");
BENCHMARK(get<true>)->Name("ByName/ours/get");
BENCHMARK(set<true>)->Name("ByName/ours/set");
BENCHMARK(getByText)->Name("ByText/ours/get");

#if BRIXO_HAVE_PROTOBUF
template <bool byName>
void protobufGet(benchmark::State& state) {
    const peer::LogicalResourceId message;
    const auto* const descriptor = message.GetDescriptor();
    const auto* const reflection = message.GetReflection();
    const std::string field = "id";
    const auto* const known = descriptor->FindFieldByName(field);
    for (auto _ : state)
        benchmark::DoNotOptimize(
            reflection->GetUInt64(message, byName ? descriptor->FindFieldByName(field) : known));
}

template <bool byName>
void protobufSet(benchmark::State& state) {
    peer::LogicalResourceId message;
    const auto* const descriptor = message.GetDescriptor();
    const auto* const reflection = message.GetReflection();
    const std::string field = "id";
    const auto* const known = descriptor->FindFieldByName(field);
    std::uint64_t number = 0;
    for (auto _ : state)
        reflection->SetUInt64(&message, byName ? descriptor->FindFieldByName(field) : known,
                              ++number);
}

BENCHMARK(protobufGet<false>)->Name("ById/protobuf/get");
BENCHMARK(protobufSet<false>)->Name("ById/protobuf/set");
BENCHMARK(protobufGet<true>)->Name("ByName/protobuf/get");
BENCHMARK(protobufSet<true>)->Name("ByName/protobuf/set");
#endif

#if BRIXO_HAVE_GOBJECT
struct Counter {
    GObject parent;
    guint64 index;
};

void initClass(void* klass, void* /*data*/) {
    auto* const objectClass = static_cast<GObjectClass*>(klass);
    objectClass->get_property = [](GObject* object, guint, GValue* value, GParamSpec*) {
        g_value_set_uint64(value, reinterpret_cast<Counter*>(object)->index);
    };
    objectClass->set_property = [](GObject* object, guint, const GValue* value, GParamSpec*) {
        reinterpret_cast<Counter*>(object)->index = g_value_get_uint64(value);
    };
    g_object_class_install_property(
        objectClass, 1,
        g_param_spec_uint64("index", nullptr, nullptr, 0, ~guint64{0}, 0, G_PARAM_READWRITE));
}

GObject* newCounter() {
    static const GType type =
        g_type_register_static_simple(G_TYPE_OBJECT, "Counter", sizeof(GObjectClass), initClass,
                                      sizeof(Counter), nullptr, static_cast<GTypeFlags>(0));
    return static_cast<GObject*>(g_object_new(type, nullptr));
}

void gobjectGet(benchmark::State& state) {
    GObject* const counter = newCounter();
    for (auto _ : state) {
        guint64 number = 0;
        g_object_get(counter, "index", &number, nullptr);
        benchmark::DoNotOptimize(number);
    }
    g_object_unref(counter);
}

void gobjectSet(benchmark::State& state) {
    GObject* const counter = newCounter();
    guint64 number = 0;
    for (auto _ : state) g_object_set(counter, "index", ++number, nullptr);
    g_object_unref(counter);
}

BENCHMARK(gobjectGet)->Name("ById/gobject/get");
BENCHMARK(gobjectSet)->Name("ById/gobject/set");
BENCHMARK(gobjectGet)->Name("ByName/gobject/get");
BENCHMARK(gobjectSet)->Name("ByName/gobject/set");
#endif

} // namespace
