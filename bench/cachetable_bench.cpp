// cachetable_bench.cpp - the cache table beside the table that one would write by hand, and beside
// LMDB.
//
// WHAT/WHO/ENTRY/KEYS/SIZE: tables of SIZE slots with ENTRY bytes of data each. Fill writes every
// key into an empty table; Lookup asks for each key, Overwrite writes it again, DeleteInsert
// replaces it by another key, all in random order; Recover rebuilds the maps of a full region,
// RecoverEmpty those of an empty one. `hand` is std::unordered_map, slots in a region of the same
// kind and layout, and a stack of free slots; `flat` is the same on absl::flat_hash_map. `scan`
// only reads the key words of the region, `set` fills a std::unordered_set with the slot numbers;
// Reserved: the peer asked for its room beforehand. LMDB works in memory, unsynchronised, in one
//           transaction a pass. Times are of one operation.
#include "keys.h"

#include <Brixo/CacheTable.h>
#include <Brixo/RegionLayout.h>
#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <pinbuf/pinbuf.h>
#include <random>
#include <string>
#include <system_error>
#include <unistd.h>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>
#if BRIXO_HAVE_ABSL
    #include <absl/container/flat_hash_map.h>
#endif
#if BRIXO_HAVE_LMDB
    #include <lmdb.h>
#endif

namespace {

using Vel::BytePtr;
using Vel::U32;
using Vel::U64;

namespace Layout = Brixo::RegionLayout;

struct Shape {
    U32 entryBytes;
    U32 slots;
};

// The regions of this process, gone with it.
class RegionFolder {
public:
    RegionFolder() {
        std::string pattern = "/dev/shm/cachetable-bench-XXXXXX";
        if (::mkdtemp(pattern.data()) == nullptr) std::abort();
        path_ = pattern;
        ::setenv("PINBUF_DIR", (path_ + "/regions").c_str(), 1);
    }

    RegionFolder(const RegionFolder&) = delete;
    RegionFolder& operator=(const RegionFolder&) = delete;

    ~RegionFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

const RegionFolder regionFolder;

class Ours {
public:
    static constexpr const char* name = "ours";

    explicit Ours(Shape shape) : shape_(shape) { clear(); }

    // A new table on an empty region.
    void clear() {
        if (!table_) open();
        table_->pinbufPtr()[offsetof(Layout::Header, formatted)] = 0;
        table_ = nullptr;
        open();
    }

    BytePtr find(U32 key) const { return table_->entry(Brixo::DeviceOffset(key)); }

    void put(U32 key, const unsigned char* data) {
        table_->entryIs(Brixo::DeviceOffset(key), data);
    }

    void erase(U32 key) { table_->entryDel(Brixo::DeviceOffset(key)); }

    // What a process knows of the region before it looks into it: nothing.
    void forget() {
        table_->keyToIndexDelAll();
        table_->freeIndexDelAll();
    }

    U32 recover() {
        table_->doRestart();
        return table_->keyToIndexs();
    }

    void begin(bool /*writes*/) {}

    void end() {}

private:
    void open() {
        const auto agent = static_cast<Vel::U16>(shape_.slots % 65521); // a region for each shape
        const Brixo::CacheTableIndex id(
            Brixo::DeviceId(1),
            Brixo::PhysicalResourceId(Brixo::ResourceType::tableResource, shape_.entryBytes));
        table_ =
            Brixo::cacheTableFactory(Brixo::AgentId(agent), id, shape_.slots, shape_.entryBytes);
    }

    Shape shape_;
    Vel::Ptr<Brixo::CacheTable> table_;
};

template <class Map>
class TableByHand {
public:
    explicit TableByHand(Shape shape)
        : shape_(shape), slotBytes_(Layout::slotBytes(shape.entryBytes)) {
        const std::string region = Map::name + std::string("-") + std::to_string(shape.slots) +
                                   "-" + std::to_string(shape.entryBytes);
        const U32 bytes = Layout::regionBytes(shape.entryBytes, shape.slots);
        if (pinbuf_alloc_func(region.c_str(), bytes, "bench") == 0) std::abort();
        first_ = static_cast<BytePtr>(pinbuf_map(region.c_str(), 1, 0, 0)) + Layout::headerBytes;
        clear();
    }

    void clear() {
        forget();
        for (U32 i = 0; i < shape_.slots; ++i) Layout::writeKeyWord(slot(i), Layout::unusedKeyWord);
        recover();
    }

    BytePtr find(U32 key) const {
        const auto found = slotOfKey_.find(key);
        return found != slotOfKey_.end() ? slot(found->second) + Layout::keyWordBytes : nullptr;
    }

    void put(U32 key, const unsigned char* data) {
        const auto [found, isNew] = slotOfKey_.try_emplace(key);
        if (isNew) {
            found->second = freeSlots_.back();
            freeSlots_.pop_back();
        }
        const BytePtr at = slot(found->second);
        Layout::writeKeyWord(at, key);
        std::memcpy(at + Layout::keyWordBytes, data, shape_.entryBytes);
    }

    void erase(U32 key) {
        const auto found = slotOfKey_.find(key);
        freeSlots_.push_back(found->second);
        slotOfKey_.erase(found);
    }

    void forget() {
        slotOfKey_ = {};
        freeSlots_ = {};
    }

    void reserve() { slotOfKey_.reserve(shape_.slots); }

    U32 recover() {
        freeSlots_.reserve(shape_.slots);
        for (U32 i = shape_.slots; i-- > 0;) {
            const U32 key = Layout::readKeyWord(slot(i));
            if (key == Layout::unusedKeyWord)
                freeSlots_.push_back(i);
            else
                slotOfKey_[key] = i; // the lowest slot wins
        }
        return static_cast<U32>(slotOfKey_.size());
    }

    U32 scan() const {
        U32 used = 0;
        for (U32 i = 0; i < shape_.slots; ++i)
            if (Layout::readKeyWord(slot(i)) != Layout::unusedKeyWord) ++used;
        return used;
    }

    void begin(bool /*writes*/) {}

    void end() {}

private:
    BytePtr slot(U32 index) const { return first_ + std::size_t{index} * slotBytes_; }

    Shape shape_;
    U32 slotBytes_;
    BytePtr first_ = nullptr;
    Map slotOfKey_;
    std::vector<U32> freeSlots_; // the last is given away first
};

struct StdMap : std::unordered_map<U32, U32> {
    static constexpr const char* name = "hand";
};

class Hand : public TableByHand<StdMap> {
public:
    static constexpr const char* name = StdMap::name;
    using TableByHand::TableByHand;
};

#if BRIXO_HAVE_ABSL
struct FlatMap : absl::flat_hash_map<U32, U32> {
    static constexpr const char* name = "flat";
};

class Flat : public TableByHand<FlatMap> {
public:
    static constexpr const char* name = FlatMap::name;
    using TableByHand::TableByHand;
};
#endif

#if BRIXO_HAVE_LMDB
class Lmdb {
public:
    static constexpr const char* name = "lmdb";

    explicit Lmdb(Shape shape) : shape_(shape) { clear(); }

    Lmdb(const Lmdb&) = delete;
    Lmdb& operator=(const Lmdb&) = delete;

    ~Lmdb() { close(); }

    void clear() {
        close();
        const std::string path = regionFolder.path() + "/lmdb";
        std::filesystem::remove(path);
        const std::size_t room =
            (std::size_t{1} << 24) + std::size_t{6} * shape_.slots * (shape_.entryBytes + 16);
        need(mdb_env_create(&env_));
        need(mdb_env_set_mapsize(env_, room));
        need(mdb_env_open(env_, path.c_str(),
                          MDB_NOSUBDIR | MDB_NOSYNC | MDB_NOMETASYNC | MDB_WRITEMAP | MDB_NOLOCK,
                          0600));
        begin(true);
        need(mdb_dbi_open(txn_, nullptr, MDB_INTEGERKEY, &table_));
        end();
    }

    BytePtr find(U32 key) const {
        MDB_val keyed{sizeof key, &key};
        MDB_val data{};
        return mdb_get(txn_, table_, &keyed, &data) == 0 ? static_cast<BytePtr>(data.mv_data)
                                                         : nullptr;
    }

    void put(U32 key, const unsigned char* data) {
        MDB_val keyed{sizeof key, &key};
        MDB_val value{shape_.entryBytes, nullptr};
        need(mdb_put(txn_, table_, &keyed, &value, MDB_RESERVE));
        std::memcpy(value.mv_data, data, shape_.entryBytes);
    }

    void erase(U32 key) {
        MDB_val keyed{sizeof key, &key};
        need(mdb_del(txn_, table_, &keyed, nullptr));
    }

    // Around each pass.
    void begin(bool writes) { need(mdb_txn_begin(env_, nullptr, writes ? 0 : MDB_RDONLY, &txn_)); }

    void end() { need(mdb_txn_commit(txn_)); }

private:
    static void need(int error) {
        if (error == 0) return;
        std::fprintf(stderr, "lmdb: %s\n", mdb_strerror(error));
        std::abort();
    }

    void close() {
        if (env_ != nullptr) mdb_env_close(env_);
    }

    Shape shape_;
    MDB_env* env_ = nullptr;
    MDB_txn* txn_ = nullptr;
    MDB_dbi table_ = 0;
};
#endif

enum class Keys { random, stride4 };

// `2 * slots` distinct keys; a table holds half of them.
std::vector<U32> makeKeys(Keys kind, U32 slots) {
    std::vector<U32> keys(std::size_t{2} * slots);
    for (U32 i = 0; i < keys.size(); ++i)
        keys[i] = kind == Keys::random ? Bench::scattered(i) : i * 4;
    return keys;
}

std::vector<U32> shuffled(std::vector<U32> keys) {
    std::mt19937 random(7);
    std::ranges::shuffle(keys, random);
    return keys;
}

constexpr std::array<unsigned char, 64> entryData{1, 2, 3, 4, 5, 6, 7, 8};

template <class Table>
void fill(Table& table, const std::vector<U32>& keys, U32 slots) {
    table.begin(true);
    for (U32 i = 0; i < slots; ++i) table.put(keys[i], entryData.data());
    table.end();
}

void countOperations(benchmark::State& state, U32 slots) {
    state.SetItemsProcessed(state.iterations() * slots);
}

template <class Table>
void runFill(benchmark::State& state, Keys kind, Shape shape) {
    const auto keys = makeKeys(kind, shape.slots);
    Table table(shape);
    for (auto _ : state) {
        fill(table, keys, shape.slots);
        state.PauseTiming();
        table.clear();
        state.ResumeTiming();
    }
    countOperations(state, shape.slots);
}

template <class Table>
void runLookup(benchmark::State& state, Keys kind, Shape shape) {
    auto keys = makeKeys(kind, shape.slots);
    Table table(shape);
    fill(table, keys, shape.slots);
    keys.resize(shape.slots);
    keys = shuffled(keys);
    for (auto _ : state) {
        table.begin(false);
        for (const U32 key : keys) benchmark::DoNotOptimize(table.find(key));
        table.end();
    }
    countOperations(state, shape.slots);
}

template <class Table>
void runOverwrite(benchmark::State& state, Keys kind, Shape shape) {
    auto keys = makeKeys(kind, shape.slots);
    Table table(shape);
    fill(table, keys, shape.slots);
    keys.resize(shape.slots);
    keys = shuffled(keys);
    for (auto _ : state) fill(table, keys, shape.slots);
    countOperations(state, shape.slots);
}

template <class Table>
void runDeleteInsert(benchmark::State& state, Keys kind, Shape shape) {
    auto keys = shuffled(makeKeys(kind, shape.slots));
    Table table(shape);
    fill(table, keys, shape.slots);
    for (auto _ : state) {
        table.begin(true);
        for (U32 i = 0; i < shape.slots; ++i) {
            table.erase(keys[i]);
            std::swap(keys[i], keys[shape.slots + i]);
            table.put(keys[i], entryData.data());
        }
        table.end();
    }
    countOperations(state, shape.slots);
}

template <class Table>
void runRecover(benchmark::State& state, Keys kind, Shape shape, bool isFull, bool reserves) {
    Table table(shape);
    if (isFull) fill(table, makeKeys(kind, shape.slots), shape.slots);
    for (auto _ : state) {
        state.PauseTiming();
        table.forget();
        state.ResumeTiming();
        if constexpr (requires { table.reserve(); })
            if (reserves) table.reserve();
        if (table.recover() != (isFull ? shape.slots : 0)) state.SkipWithError("entries are lost");
    }
    countOperations(state, shape.slots);
}

void runScan(benchmark::State& state, Keys kind, Shape shape, bool isFull) {
    Hand table(shape);
    if (isFull) fill(table, makeKeys(kind, shape.slots), shape.slots);
    for (auto _ : state) benchmark::DoNotOptimize(table.scan());
    countOperations(state, shape.slots);
}

void runSet(benchmark::State& state, Shape shape, bool reserves) {
    for (auto _ : state) {
        auto set = std::make_unique<std::unordered_set<U32>>();
        if (reserves) set->reserve(shape.slots);
        for (U32 i = 0; i < shape.slots; ++i) set->insert(i);
        state.PauseTiming();
        set.reset();
        state.ResumeTiming();
    }
    countOperations(state, shape.slots);
}

template <class Run>
void add(const std::string& what, const std::string& who, const std::string& tail, Run run) {
    benchmark::RegisterBenchmark((what + "/" + who + tail).c_str(), run)
        ->Unit(benchmark::kMicrosecond);
}

template <class Table>
void addOperations(const std::string& tail, Keys k, Shape s) {
    add("Fill", Table::name, tail, [=](auto& state) { runFill<Table>(state, k, s); });
    add("Lookup", Table::name, tail, [=](auto& state) { runLookup<Table>(state, k, s); });
    add("Overwrite", Table::name, tail, [=](auto& state) { runOverwrite<Table>(state, k, s); });
    add("DeleteInsert", Table::name, tail,
        [=](auto& state) { runDeleteInsert<Table>(state, k, s); });
}

template <class Table>
void addRecovery(const std::string& tail, Keys k, Shape s, bool reserves) {
    const std::string who = std::string(Table::name) + (reserves ? "Reserved" : "");
    add("Recover", who, tail, [=](auto& state) { runRecover<Table>(state, k, s, true, reserves); });
    add("RecoverEmpty", who, tail,
        [=](auto& state) { runRecover<Table>(state, k, s, false, reserves); });
}

void addTables(Keys k, const char* kindName, Shape s) {
    const std::string tail =
        "/" + std::to_string(s.entryBytes) + "/" + kindName + "/" + std::to_string(s.slots);
    addOperations<Ours>(tail, k, s);
    addOperations<Hand>(tail, k, s);
    addRecovery<Ours>(tail, k, s, false);
    addRecovery<Hand>(tail, k, s, false);
    addRecovery<Hand>(tail, k, s, true);
    add("Recover", "scan", tail, [=](auto& state) { runScan(state, k, s, true); });
    add("RecoverEmpty", "scan", tail, [=](auto& state) { runScan(state, k, s, false); });
    add("RecoverEmpty", "set", tail, [=](auto& state) { runSet(state, s, false); });
    add("RecoverEmpty", "setReserved", tail, [=](auto& state) { runSet(state, s, true); });
#if BRIXO_HAVE_ABSL
    if (k == Keys::random) addOperations<Flat>(tail, k, s);
#endif
#if BRIXO_HAVE_LMDB
    if (k == Keys::random) addOperations<Lmdb>(tail, k, s);
#endif
}

[[maybe_unused]] const bool isAdded = [] {
    for (const U32 slots : {1000U, 100000U, 1000000U}) {
        addTables(Keys::random, "random", {8, slots});
        addTables(Keys::random, "random", {64, slots});
        addTables(Keys::stride4, "stride4", {8, slots});
    }
    return true;
}();

} // namespace
