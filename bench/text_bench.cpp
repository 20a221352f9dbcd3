// text_bench.cpp - text forms beside fmt, sscanf, a JSON parser and protobuf's text format.
//
// Print/WHO/TYPE makes the text of a value, Parse/WHO/TYPE reads it back; 64 values in turn. fmt
// and sscanf are given the one format that fits; sscanf's caller still looks the enumerator up.
// JSON holds the same fields without the type's name. NameToEnumerator and EnumeratorToName: beside
// std::unordered_map, and beside a copy of the name. Times are of one value.
#include "values.h"

#include <Vel/String8.h>
#include <array>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstring>
#include <string>
#include <unordered_map>
#include <vector>
#if BRIXO_HAVE_FMT
    #include <fmt/format.h>
#endif
#if BRIXO_HAVE_JSON
    #include <nlohmann/json.hpp>
#endif
#if BRIXO_HAVE_PROTOBUF
    #include <google/protobuf/text_format.h>
#endif

namespace {

using Brixo::CacheTableIndex;
using Brixo::LogicalResourceId;
using Brixo::ResourceType;
using Vel::String8;
using Vel::U64;

// Runs an operation on each of 64 subjects in turn.
template <class Subjects, class Operation>
void each(benchmark::State& state, const Subjects& subjects, Operation operation) {
    for (auto _ : state)
        for (const auto& subject : subjects) benchmark::DoNotOptimize(operation(subject));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(subjects.size()));
}

template <class T>
std::vector<String8> texts() {
    std::vector<String8> all;
    for (const T& value : Bench::values<T>()) all.push_back(valueToStrep(value));
    return all;
}

template <class T>
void print(benchmark::State& state) {
    each(state, Bench::values<T>(), [](const T& value) { return valueToStrep(value); });
}

template <class T>
void parse(benchmark::State& state) {
    each(state, texts<T>(), [](const String8& text) {
        String8::IteratorConst pos = text.begin();
        return T(pos, text.end());
    });
}

BENCHMARK(print<LogicalResourceId>)->Name("Print/ours/LogicalResourceId");
BENCHMARK(print<CacheTableIndex>)->Name("Print/ours/CacheTableIndex");
BENCHMARK(parse<LogicalResourceId>)->Name("Parse/ours/LogicalResourceId");
BENCHMARK(parse<CacheTableIndex>)->Name("Parse/ours/CacheTableIndex");

const char* nameOf(ResourceType type) {
    switch (type) {
    case ResourceType::tableResource: return "tableResource";
    case ResourceType::registerResource: return "registerResource";
    case ResourceType::invalidResource: break;
    }
    return "invalidResource";
}

ResourceType typeNamed(const char* name) {
    if (std::strcmp(name, "tableResource") == 0) return ResourceType::tableResource;
    if (std::strcmp(name, "registerResource") == 0) return ResourceType::registerResource;
    return ResourceType::invalidResource;
}

#if BRIXO_HAVE_FMT
void fmtResourceId(benchmark::State& state) {
    each(state, Bench::values<LogicalResourceId>(), [](const LogicalResourceId& value) {
        return fmt::format("Value('Brixo::LogicalResourceId', ** {{'type': '{}', 'id': {}}})",
                           nameOf(value.type()), value.id());
    });
}

void fmtTableIndex(benchmark::State& state) {
    each(state, Bench::values<CacheTableIndex>(), [](const CacheTableIndex& value) {
        return fmt::format("Value('Brixo::CacheTableIndex', ** {{'devId': {}, 'resourceId': "
                           "Value('Brixo::PhysicalResourceId', ** {{'type': '{}', 'id': {}}})}})",
                           value.devId().value(), nameOf(value.resourceId().type()),
                           value.resourceId().id());
    });
}

BENCHMARK(fmtResourceId)->Name("Print/fmt/LogicalResourceId");
BENCHMARK(fmtTableIndex)->Name("Print/fmt/CacheTableIndex");
#endif

void sscanfResourceId(benchmark::State& state) {
    each(state, texts<LogicalResourceId>(), [](const String8& text) {
        std::array<char, 32> type{};
        unsigned long long id = 0;
        if (std::sscanf(text.charPtr(),
                        "Value('Brixo::LogicalResourceId', ** {'type': '%31[^']', 'id': %llu})",
                        type.data(), &id) != 2)
            std::abort();
        return LogicalResourceId(typeNamed(type.data()), id);
    });
}

void sscanfTableIndex(benchmark::State& state) {
    each(state, texts<CacheTableIndex>(), [](const String8& text) {
        std::array<char, 32> type{};
        unsigned long long id = 0;
        unsigned short device = 0;
        if (std::sscanf(text.charPtr(),
                        "Value('Brixo::CacheTableIndex', ** {'devId': %hu, 'resourceId': "
                        "Value('Brixo::PhysicalResourceId', ** {'type': '%31[^']', 'id': %llu})})",
                        &device, type.data(), &id) != 3)
            std::abort();
        return CacheTableIndex(Brixo::DeviceId(device),
                               Brixo::PhysicalResourceId(typeNamed(type.data()), id));
    });
}

BENCHMARK(sscanfResourceId)->Name("Parse/sscanf/LogicalResourceId");
BENCHMARK(sscanfTableIndex)->Name("Parse/sscanf/CacheTableIndex");

#if BRIXO_HAVE_JSON
void jsonResourceId(benchmark::State& state) {
    std::vector<std::string> all;
    for (const auto& value : Bench::values<LogicalResourceId>())
        all.push_back(nlohmann::json{{"type", nameOf(value.type())}, {"id", value.id()}}.dump());
    each(state, all, [](const std::string& text) {
        const auto parsed = nlohmann::json::parse(text);
        return LogicalResourceId(typeNamed(parsed["type"].get_ref<const std::string&>().c_str()),
                                 parsed["id"].get<U64>());
    });
}

void jsonTableIndex(benchmark::State& state) {
    std::vector<std::string> all;
    for (const auto& value : Bench::values<CacheTableIndex>()) {
        const nlohmann::json resource{{"type", nameOf(value.resourceId().type())},
                                      {"id", value.resourceId().id()}};
        all.push_back(
            nlohmann::json{{"devId", value.devId().value()}, {"resourceId", resource}}.dump());
    }
    each(state, all, [](const std::string& text) {
        const auto parsed = nlohmann::json::parse(text);
        const auto& resource = parsed["resourceId"];
        return CacheTableIndex(
            Brixo::DeviceId(parsed["devId"].get<Vel::U16>()),
            Brixo::PhysicalResourceId(
                typeNamed(resource["type"].get_ref<const std::string&>().c_str()),
                resource["id"].get<U64>()));
    });
}

BENCHMARK(jsonResourceId)->Name("Parse/json/LogicalResourceId");
BENCHMARK(jsonTableIndex)->Name("Parse/json/CacheTableIndex");
#endif

#if BRIXO_HAVE_PROTOBUF
using google::protobuf::TextFormat;

template <class Message>
std::string messageText(const Message& message) {
    std::string text;
    TextFormat::PrintToString(message, &text);
    return text;
}

template <class Message>
void printMessage(benchmark::State& state) {
    each(state, Bench::values<Message>(), messageText<Message>);
}

template <class Message>
void parseMessage(benchmark::State& state) {
    std::vector<std::string> all;
    for (const Message& message : Bench::values<Message>()) all.push_back(messageText(message));
    each(state, all, [](const std::string& text) {
        Message message;
        if (!TextFormat::ParseFromString(text, &message)) std::abort();
        return message;
    });
}

BENCHMARK(printMessage<peer::LogicalResourceId>)->Name("Print/protobuf/LogicalResourceId");
BENCHMARK(printMessage<peer::CacheTableIndex>)->Name("Print/protobuf/CacheTableIndex");
BENCHMARK(parseMessage<peer::LogicalResourceId>)->Name("Parse/protobuf/LogicalResourceId");
BENCHMARK(parseMessage<peer::CacheTableIndex>)->Name("Parse/protobuf/CacheTableIndex");
#endif

constexpr std::array resourceTypes{ResourceType::invalidResource, ResourceType::tableResource,
                                   ResourceType::registerResource};

template <class String>
std::vector<String> names() {
    std::vector<String> all;
    for (const ResourceType type : resourceTypes) all.emplace_back(nameOf(type));
    return all;
}

void nameToEnumerator(benchmark::State& state) {
    each(state, names<String8>(),
         [](const String8& name) { return Brixo::ResourceTypeInstance(name); });
}

void nameToEnumeratorByMap(benchmark::State& state) {
    std::unordered_map<std::string, ResourceType> byName;
    for (const ResourceType type : resourceTypes) byName.emplace(nameOf(type), type);
    each(state, names<std::string>(),
         [&byName](const std::string& name) { return byName.find(name)->second; });
}

void enumeratorToName(benchmark::State& state) {
    each(state, resourceTypes, [](ResourceType type) { return stringValue(type); });
}

void enumeratorToNameByCopy(benchmark::State& state) {
    const auto all = names<std::string>();
    each(state, resourceTypes,
         [&all](ResourceType type) { return std::string(all[static_cast<unsigned>(type)]); });
}

BENCHMARK(nameToEnumerator)->Name("NameToEnumerator/ours/ResourceType");
BENCHMARK(nameToEnumeratorByMap)->Name("NameToEnumerator/std/ResourceType");
BENCHMARK(enumeratorToName)->Name("EnumeratorToName/ours/ResourceType");
BENCHMARK(enumeratorToNameByCopy)->Name("EnumeratorToName/std/ResourceType");

} // namespace
