// instructions.cpp - does each operation a fixed number of times, for callgrind to count its
// instructions.
//
//     instructions FOLDER      regions and trace go there; scripts/instructions reads the counts
//
// Prints a line "NAME<tab>TIMES" for each operation, which is also the name of callgrind's dump of
// it. What runs between two dumps is the operation alone, for the second time: what is made on
// first use is there by then. Inputs are fixed.
#include <Brixo/Brixo.h>
#include <Ferrolog/Trace.h>
#include <Orn/Orn.h>
#include <Vel/Builtin.h>
#include <Vel/HashMap.h>
#include <Vel/Vel.h>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <valgrind/callgrind.h>
#include <vector>

namespace {

using Brixo::LogicalResourceId;
using Vel::Ptr;
using Vel::String8;
using Vel::U16;
using Vel::U32;
using Vel::U64;
using Vel::U8;

constexpr unsigned members = 1000;

// The compiler may not do without the value.
template <class T>
void keep(const T& value) {
    asm volatile("" : : "g"(&value) : "memory");
}

void need(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "instructions: %s\n", what);
    std::exit(1);
}

// Counts run(state), which does something `times` times; prepare() makes the state and is not
// counted.
template <class Prepare, class Run>
void count(const char* name, unsigned times, Prepare prepare, Run run) {
    for (const bool isCounted : {false, true}) {
        auto state = prepare();
        CALLGRIND_ZERO_STATS;
        run(state);
        if (isCounted) CALLGRIND_DUMP_STATS_AT(name);
    }
    std::printf("%s\t%u\n", name, times);
}

// Different keys in no order.
std::vector<U32> keys(U32 from) {
    std::vector<U32> all;
    for (U32 i = 0; i < members; ++i) all.push_back((from + i) * 2654435761U);
    return all;
}

const auto nothing = [] { return 0; };

class Object final : public Vel::PtrInterface {
public:
    U32 payload = 1;
};

void countObjects() {
    count(
        "Ptr copy", members, [] { return Ptr<Object>(new Object); },
        [](const Ptr<Object>& object) {
            for (unsigned i = 0; i < members; ++i) {
                const Ptr<Object> copy = object;
                keep(copy);
            }
        });
    count("object make", members, nothing, [](int) {
        for (unsigned i = 0; i < members; ++i) {
            const Ptr<Object> object = new Object;
            keep(object);
        }
    });
    count(
        "String8 append", members, [] { return String8(); },
        [](String8& text) {
            for (unsigned i = 0; i < members; ++i) text += "0123456789";
        });
}

class Node final : public Vel::MapMember<U32, U32> {
public:
    using MapMember::MapMember;
};

using Map = Vel::HashMap<Node, U32, U32>;

struct KeysAndMap {
    std::vector<U32> keys = ::keys(1);
    std::vector<U32> others = ::keys(1 + members);
    Map map;

    void fill() {
        for (const U32 key : keys) map.insert(*new Node(key, 1));
    }
};

std::unique_ptr<KeysAndMap> emptyMap() { return std::make_unique<KeysAndMap>(); }

std::unique_ptr<KeysAndMap> fullMap() {
    auto state = emptyMap();
    state->fill();
    return state;
}

void countMaps() {
    count("map insert", members, emptyMap, [](auto& state) { state->fill(); });
    count("map find", members, fullMap, [](auto& state) {
        for (const U32 key : state->keys) keep(state->map.find(key));
    });
    count("map miss", members, fullMap, [](auto& state) {
        for (const U32 key : state->others) keep(state->map.find(key));
    });
    count("map iterate", members, fullMap, [](auto& state) {
        for (auto it = state->map.begin(); it; it.advance()) keep(it->value());
    });
    count("map remove", members, fullMap, [](auto& state) {
        for (const U32 key : state->keys) state->map.remove(*state->map.find(key));
    });
    count("map take", members, fullMap, [](auto& state) {
        for (const U32 key : state->keys) keep(state->map.take(key));
    });
}

class Table {
public:
    // On a region that nothing is in.
    Table() : table_(make()) {
        for (const U32 key : keys_) table_->entryDel(Brixo::DeviceOffset(key));
        need(table_->keyToIndexs() == 0, "the table is empty");
    }

    void fill() {
        const std::array<U8, 8> data = {1, 2, 3, 4, 5, 6, 7, 8};
        for (const U32 key : keys_) table_->entryIs(Brixo::DeviceOffset(key), data.data());
    }

    void read() const {
        for (const U32 key : keys_) keep(table_->entry(Brixo::DeviceOffset(key)));
    }

    void clear() {
        for (const U32 key : keys_) table_->entryDel(Brixo::DeviceOffset(key));
    }

    // As after a restart, when nothing is known yet of what is in the region.
    void forget() {
        table_->keyToIndexDelAll();
        table_->freeIndexDelAll();
    }

    void recover() { table_->doRestart(); }

private:
    static Ptr<Brixo::CacheTable> make() {
        const Brixo::CacheTableIndex id(Brixo::DeviceId(1), Brixo::PhysicalTableId(7));
        return Brixo::cacheTableFactory(Brixo::AgentId(1), id, members, 8);
    }

    std::vector<U32> keys_ = keys(1);
    Ptr<Brixo::CacheTable> table_;
};

Table fullTable() {
    Table table;
    table.fill();
    return table;
}

Table forgottenTable() {
    Table table = fullTable();
    table.forget();
    return table;
}

void countTables() {
    count(
        "table fill", members, [] { return Table(); }, [](Table& table) { table.fill(); });
    count("table overwrite", members, fullTable, [](Table& table) { table.fill(); });
    count("table read", members, fullTable, [](Table& table) { table.read(); });
    count("table delete", members, fullTable, [](Table& table) { table.clear(); });
    count("table recover", members, forgottenTable, [](Table& table) { table.recover(); });
}

// Numbers of 1 to 20 digits.
std::vector<LogicalResourceId> ids() {
    std::mt19937_64 random(11);
    std::vector<LogicalResourceId> all;
    for (unsigned i = 0; i < members; ++i) {
        const U64 bits = random();
        all.emplace_back(i % 2 == 0 ? Brixo::ResourceType::tableResource
                                    : Brixo::ResourceType::registerResource,
                         bits >> (i % 64));
    }
    return all;
}

std::vector<String8> texts() {
    std::vector<String8> all;
    for (const LogicalResourceId& id : ids()) all.push_back(valueToStrep(id));
    return all;
}

void countValues() {
    count("id hash", members, ids, [](const auto& all) {
        for (const LogicalResourceId& id : all) keep(id.hash());
    });
    count("id print", members, ids, [](const auto& all) {
        for (const LogicalResourceId& id : all) keep(valueToStrep(id));
    });
    count("id parse", members, texts, [](const auto& all) {
        for (const String8& text : all) {
            auto at = text.begin();
            keep(LogicalResourceId(at, text.end()));
        }
    });
}

// Every second bit.
constexpr U64 halfMask = 0x5555555555555555U;

void countMasks() {
    count(
        "mask pass", 32, [] { return Orn::U64Bitmask(halfMask); },
        [](const auto& mask) {
            for (Orn::U64BitmaskIter it(mask); it; ++it) keep(it.key());
        });
    const auto dataMask = [] {
        Brixo::RequesterDataMask mask(true);
        for (U16 byte = 0; byte < 256; byte += 16) mask.maskIs(byte, 0xa5);
        return mask;
    };
    count("data mask fill", 256, dataMask, [](const Brixo::RequesterDataMask& mask) {
        std::array<U8, 256> bytes{};
        mask.fillMaskToBuf(bytes.data(), static_cast<U16>(bytes.size()));
        keep(bytes);
    });
    count(
        "data mask set", 1000, [] { return Brixo::RequesterDataMask(true); },
        [](Brixo::RequesterDataMask& mask) { mask.setBitRange(0, 999); });
}

Ptr<Vel::MemoryConnection::Out> writtenLog() {
    const Ptr<Vel::MemoryConnection::Out> bytes = new Vel::MemoryConnection::Out;
    const Ptr<Vel::NboAttrLog::Out> log = new Vel::NboAttrLog::Out(bytes);
    for (const LogicalResourceId& id : ids()) log << id;
    log->flush();
    return bytes;
}

void countLogs() {
    count("log write", members, ids, [](const auto& all) {
        const Ptr<Vel::MemoryConnection::Out> bytes = new Vel::MemoryConnection::Out;
        const Ptr<Vel::NboAttrLog::Out> log = new Vel::NboAttrLog::Out(bytes);
        for (const LogicalResourceId& id : all) log << id;
        log->flush();
    });
    count("log read", members, writtenLog, [](const Ptr<Vel::MemoryConnection::Out>& bytes) {
        Vel::NboAttrLog::In log(new Vel::MemoryConnection::In(bytes->bytes()));
        while (!log.atEnd()) keep(LogicalResourceId(&log, Vel::StreamBogon()));
    });
}

struct ReflectedStatus {
    Ptr<Vel::GenericIf> status = Brixo::DalProcessingStatus::_fwkType()->genericIf(
        Brixo::dalProcessingStatusFactory(Brixo::DalId(3)).ptr(), false);
    Ptr<Vel::GenericIf> answer = Vel::Builtin<U64>::genericIf(0);
    String8 name = "lastEnqueuedCmdIndex";
    Vel::AttributeId id = status->attributeId(name);
};

void countReflection() {
    const auto prepare = [] { return ReflectedStatus(); };
    count("attribute by id", members, prepare, [](const ReflectedStatus& state) {
        for (unsigned i = 0; i < members; ++i)
            state.status->attributeOp({state.id, Vel::AttributeOp::read}, nullptr, state.answer);
    });
    count("attribute by name", members, prepare, [](const ReflectedStatus& state) {
        for (unsigned i = 0; i < members; ++i) keep(state.status->attributeId(state.name));
    });
}

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
    explicit Watcher(const Ptr<Clock>& clock) {
        notifierIs(clock);
        isRegisteredNotifieeIs(true);
    }

    void onTick() override { keep(++ticks_); }

private:
    unsigned ticks_ = 0;
};

class WatchedClock {
public:
    WatchedClock() {
        for (unsigned i = 0; i < 64; ++i) watchers_.push_back(new Watcher(clock_));
    }

    WatchedClock(const WatchedClock&) = delete;
    WatchedClock& operator=(const WatchedClock&) = delete;

    ~WatchedClock() {
        for (const Ptr<Watcher>& watcher : watchers_) watcher->notifierIs(nullptr);
    }

    void tick() { clock_->tick(); }

private:
    Ptr<Clock> clock_ = new Clock;
    std::vector<Ptr<Watcher>> watchers_;
};

void countNotifications() {
    count(
        "notify watcher", 64, [] { return std::make_unique<WatchedClock>(); },
        [](auto& clock) { clock->tick(); });
}

void traceOften(int) {
    for (unsigned i = 0; i < members; ++i) FERROLOG("instructions", "index: ", i, " key: ", i + 1);
}

void countTraces(const std::string& folder) {
    count("trace off", members, nothing, traceOften);
    need(ferrolog_open((folder + "/trace").c_str(), 1U << 20) == 0, "the trace is open");
    count("trace on", members, nothing, traceOften);
    ferrolog_close();
}

} // namespace

int main(int argumentCount, char** arguments) {
    need(argumentCount == 2, "give a folder for regions and trace");
    const std::string folder = arguments[1];
    ::setenv("PINBUF_DIR", (folder + "/regions").c_str(), 1);
    countObjects();
    countMaps();
    countTables();
    countValues();
    countMasks();
    countLogs();
    countReflection();
    countNotifications();
    countTraces(folder);
    return 0;
}
