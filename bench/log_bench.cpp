// log_bench.cpp - the attribute log beside length-delimited protobuf messages.
//
// Write/WHO/TYPE writes 6400 values to memory that is there, Read/WHO/TYPE reads them back, each
// into the same variable. `protobuf` states each message's length before it on one coded stream, as
// our records do; `protobufString` makes a string of each message, the same one again, and reads it
// back alone. Times are of one value.
#include "values.h"

#include <Vel/MemoryConnection.h>
#include <Vel/NboAttrLog.h>
#include <benchmark/benchmark.h>
#include <cstring>
#include <span>
#include <string>
#include <vector>
#if BRIXO_HAVE_PROTOBUF
    #include <google/protobuf/io/coded_stream.h>
    #include <google/protobuf/io/zero_copy_stream_impl_lite.h>
    #include <google/protobuf/util/delimited_message_util.h>
#endif

namespace {

using Brixo::CacheTableIndex;
using Brixo::LogicalResourceId;
using Vel::NboAttrLog;

constexpr unsigned rounds = 100;

void countValues(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * rounds *
                            static_cast<std::int64_t>(Bench::valueCount));
}

using Bytes = std::vector<Vel::U8>;

// Writes into memory that it borrows.
class FixedMemory final : public Vel::ByteConnection::Out {
public:
    explicit FixedMemory(Bytes& room) : room_(room) {}

    void write(std::span<const Vel::U8> bytes) override {
        if (bytes.size() > room_.size() - size_) std::abort();
        std::memcpy(room_.data() + size_, bytes.data(), bytes.size());
        size_ += bytes.size();
    }

    std::size_t size() const { return size_; }

private:
    Bytes& room_;
    std::size_t size_ = 0;
};

// As much as either side needs.
Bytes room() { return Bytes(std::size_t{rounds} * Bench::valueCount * 64, 1); }

template <class T>
std::size_t writeLog(const std::vector<T>& values, Bytes& bytes) {
    const Vel::Ptr<FixedMemory> connection = new FixedMemory(bytes);
    const Vel::Ptr<NboAttrLog::Out> log = new NboAttrLog::Out(connection);
    for (unsigned round = 0; round < rounds; ++round)
        for (const T& value : values) log << value;
    log->flush();
    return connection->size();
}

template <class T>
void write(benchmark::State& state) {
    const auto values = Bench::values<T>();
    Bytes bytes = room();
    for (auto _ : state) benchmark::DoNotOptimize(writeLog(values, bytes));
    countValues(state);
}

template <class T>
void read(benchmark::State& state) {
    Bytes bytes = room();
    bytes.resize(writeLog(Bench::values<T>(), bytes));
    for (auto _ : state) {
        NboAttrLog::In log(new Vel::MemoryConnection::In(bytes));
        while (!log.atEnd()) {
            T value(&log, Vel::StreamBogon());
            benchmark::DoNotOptimize(value);
        }
    }
    countValues(state);
}

BENCHMARK(write<LogicalResourceId>)->Name("Write/ours/LogicalResourceId");
BENCHMARK(write<CacheTableIndex>)->Name("Write/ours/CacheTableIndex");
BENCHMARK(read<LogicalResourceId>)->Name("Read/ours/LogicalResourceId");
BENCHMARK(read<CacheTableIndex>)->Name("Read/ours/CacheTableIndex");

#if BRIXO_HAVE_PROTOBUF
namespace io = google::protobuf::io;
namespace util = google::protobuf::util;

template <class Message>
std::size_t writeMessages(const std::vector<Message>& messages, Bytes& bytes) {
    io::ArrayOutputStream stream(bytes.data(), static_cast<int>(bytes.size()));
    io::CodedOutputStream coded(&stream);
    for (unsigned round = 0; round < rounds; ++round)
        for (const Message& message : messages)
            util::SerializeDelimitedToCodedStream(message, &coded);
    return static_cast<std::size_t>(coded.ByteCount());
}

template <class Message>
void serialize(benchmark::State& state) {
    const auto messages = Bench::values<Message>();
    Bytes bytes = room();
    for (auto _ : state) benchmark::DoNotOptimize(writeMessages(messages, bytes));
    countValues(state);
}

template <class Message>
void parse(benchmark::State& state) {
    Bytes bytes = room();
    bytes.resize(writeMessages(Bench::values<Message>(), bytes));
    Message message;
    for (auto _ : state) {
        io::ArrayInputStream stream(bytes.data(), static_cast<int>(bytes.size()));
        io::CodedInputStream coded(&stream);
        for (bool atEnd = false; !atEnd;) {
            message.Clear();
            util::ParseDelimitedFromCodedStream(&message, &coded, &atEnd);
            benchmark::DoNotOptimize(message);
        }
    }
    countValues(state);
}

template <class Message>
void serializeToString(benchmark::State& state) {
    const auto messages = Bench::values<Message>();
    std::string bytes;
    for (auto _ : state)
        for (const Message& message : messages) {
            benchmark::DoNotOptimize(message.SerializeToString(&bytes));
            benchmark::DoNotOptimize(bytes);
        }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(messages.size()));
}

template <class Message>
void parseFromString(benchmark::State& state) {
    std::vector<std::string> all;
    for (const Message& message : Bench::values<Message>())
        all.push_back(message.SerializeAsString());
    Message message;
    for (auto _ : state)
        for (const std::string& bytes : all) {
            benchmark::DoNotOptimize(message.ParseFromString(bytes));
            benchmark::DoNotOptimize(message);
        }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(all.size()));
}

template <class Message>
void addMessage(const std::string& type) {
    benchmark::RegisterBenchmark(("Write/protobuf/" + type).c_str(), serialize<Message>);
    benchmark::RegisterBenchmark(("Read/protobuf/" + type).c_str(), parse<Message>);
    benchmark::RegisterBenchmark(("Write/protobufString/" + type).c_str(),
                                 serializeToString<Message>);
    benchmark::RegisterBenchmark(("Read/protobufString/" + type).c_str(), parseFromString<Message>);
}

[[maybe_unused]] const bool isAdded = [] {
    addMessage<peer::LogicalResourceId>("LogicalResourceId");
    addMessage<peer::CacheTableIndex>("CacheTableIndex");
    return true;
}();
#endif

} // namespace
