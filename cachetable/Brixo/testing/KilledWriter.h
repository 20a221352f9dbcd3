// KilledWriter.h - a writer that may die at any instruction, and what its region must be like then.
// Not installed.
//
// The writer opens the table and runs numbered operations, each fixed by the seed and its number.
// It counts the completed ones in memory that its watcher shares, so that at a death every
// operation is completed, in flight, or not begun.
#pragma once

#include <Brixo/testing/Child.h>
#include <Brixo/testing/RegionFolder.h>
#include <Brixo/testing/TableModel.h>
#include <Vel/TraceHandle.h>
#include <atomic>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <optional>
#include <random>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace Brixo::Testing {

struct Shape {
    U32 size;
    U32 entrySize;
};

struct Operation {
    enum Kind { Write, Delete, Restart } kind;

    U32 key;
    std::string data;

    // Operation `number` of this seed: writes and deletes of few keys, so that slots change hands
    // and keys move, and now and then a rebuilding of the maps, which finds the duplicates that
    // come of it.
    static Operation at(U32 seed, U32 number, const Shape& shape) {
        std::minstd_rand random(seed * 65599 + number + 1);
        random.discard(3);
        const auto choice = static_cast<U32>(random() % 16);
        const auto key = static_cast<U32>(random() % (shape.size + 2)) * 0x01000001;
        std::string data;
        for (U32 i = 0; i < shape.entrySize; ++i) data += static_cast<char>(1 + random() % 255);
        return {choice == 0 ? Restart : choice < 7 ? Delete : Write, key, data};
    }

    // A new key in a full table is left out.
    void applyTo(CacheTable& table) const {
        if (kind == Restart)
            table.doRestart();
        else if (kind == Delete)
            table.entryDel(DeviceOffset(key));
        else if (table.freeIndexs() > 0 || table.entry(DeviceOffset(key)) != nullptr)
            write(table, key, data);
    }

    void applyTo(TableModel& model) const {
        if (kind == Restart)
            model.restart();
        else if (kind == Delete)
            model.del(key);
        else if (model.takes(key))
            model.write(key, data);
    }
};

// How many operations were completed; the opening of the table is the first. Outlives the writer.
class Journal {
public:
    // Shared with the processes that this one forks.
    Journal() : Journal(-1, MAP_SHARED | MAP_ANONYMOUS) {}

    // Shared with every process that opens the file, which is made if there is none.
    explicit Journal(const std::string& path)
        : Journal(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600), MAP_SHARED) {}

    ~Journal() { ::munmap(static_cast<void*>(completed_), sizeof(std::atomic<U32>)); }

    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    U32 completed() const { return completed_->load(); }

    void completedIs(U32 count) const { completed_->store(count); }

private:
    Journal(int file, int flags) {
        if (file >= 0 && ::ftruncate(file, sizeof(std::atomic<U32>)) != 0) std::abort();
        void* const place =
            ::mmap(nullptr, sizeof(std::atomic<U32>), PROT_READ | PROT_WRITE, flags, file, 0);
        if (place == MAP_FAILED) std::abort();
        if (file >= 0) ::close(file);
        completed_ = static_cast<std::atomic<U32>*>(place); // zero bytes are a zero count
    }

    std::atomic<U32>* completed_ = nullptr;
};

// The writer's whole life.
inline void runWriter(const Journal& journal, const Shape& shape, U32 seed, U32 operations) {
    const Vel::Ptr<CacheTable> table = openTable(shape.size, shape.entrySize);
    for (U32 number = 0;; ++number) {
        journal.completedIs(number + 1);
        if (number == operations) return;
        Operation::at(seed, number, shape).applyTo(*table);
    }
}

// The model as it was when the operation counted last was completed.
inline TableModel modelAfter(TableModel model, const Shape& shape, U32 seed, U32 completed) {
    if (completed > 0) model.restart();
    for (U32 number = 0; number + 1 < completed; ++number)
        Operation::at(seed, number, shape).applyTo(model);
    return model;
}

// The slots as a formatted region's bytes have them, the maps not yet rebuilt.
inline TableModel modelOf(const std::string& bytes, const Shape& shape) {
    TableModel model(shape.size, shape.entrySize);
    for (U32 i = 0; i < shape.size; ++i) {
        const std::size_t at = 8 + std::size_t{i} * (shape.entrySize + 4);
        U32 keyWord = 0;
        for (unsigned j = 4; j-- > 0;) keyWord = keyWord << 8 | static_cast<U8>(bytes[at + j]);
        model.slots[i] = {keyWord, bytes.substr(at + 4, shape.entrySize)};
    }
    return model;
}

// What an operation in flight may have made of a slot: its key word comes first, then any of its
// data.
inline bool mayBecome(const TableModel::Slot& found, const TableModel::Slot& old,
                      const TableModel::Slot& next) {
    if (found.keyWord != next.keyWord)
        return found.keyWord == old.keyWord && found.data == old.data;
    for (std::size_t i = 0; i < found.data.size(); ++i)
        if (found.data[i] != old.data[i] && found.data[i] != next.data[i]) return false;
    return true;
}

// Checks the region that a dead writer left, lets a new process recover it, and checks what that
// made of it. `before` is the region as the writer found it, null an unformatted one. Returns the
// recovered state.
inline TableModel recover(const RegionFolder& regions, const Shape& shape, const TableModel* before,
                          U32 seed, U32 completed) {
    const std::string left = regions.bytes(regionName);
    const bool isFormatted = left.substr(0, 5) == std::string("\xfe\xca\xef\xbe\x01", 5);
    TableModel expected(shape.size, shape.entrySize);
    if (isFormatted) {
        expected = modelOf(left, shape);
        const TableModel old =
            modelAfter(before != nullptr ? *before : TableModel(shape.size, shape.entrySize), shape,
                       seed, completed);
        TableModel next = old;
        std::optional<Operation> inFlight;
        if (completed > 0)
            (inFlight = Operation::at(seed, completed - 1, shape))->applyTo(next);
        else
            next.restart();
        for (U32 i = 0; i < shape.size; ++i)
            EXPECT_TRUE(mayBecome(expected.slots[i], old.slots[i], next.slots[i])) << "slot " << i;

        // Every completed write that a restart would have found is found, but for the slot and the
        // key in flight.
        TableModel restarted = old;
        restarted.restart();
        expected.restart();
        const bool writes =
            inFlight && inFlight->kind == Operation::Write && old.takes(inFlight->key);
        for (const auto& [k, slot] : restarted.used) {
            if (writes && (k == inFlight->key || slot == old.slotFor(inFlight->key))) continue;
            EXPECT_EQ(expected.used.contains(k), true) << "key " << k << " is lost";
            EXPECT_EQ(expected.slots[expected.used[k]].data, restarted.slots[slot].data) << k;
        }
    } else {
        EXPECT_EQ(completed, 0U) << "a completed opening leaves a formatted region";
        EXPECT_EQ(before, nullptr) << "a formatted region stays formatted";
    }
    const Death recovery = deathOf([&] {
        const std::string wrong = expected.difference(*openTable(shape.size, shape.entrySize));
        if (!wrong.empty()) {
            [[maybe_unused]] const ssize_t written =
                ::write(STDERR_FILENO, wrong.data(), wrong.size());
            ::_exit(1);
        }
    });
    EXPECT_EQ(recovery.status, 0) << recovery.said;
    EXPECT_EQ(regions.bytes(regionName), expected.bytes());
    return expected;
}

// Rounds of writers that `start` starts with a shape and a seed and that are killed at a random
// moment: a fresh region now and then, so that some die while they format; the others go on with
// what the last recovery left.
template <class Start>
void killWriters(const RegionFolder& regions, const Journal& journal, U32 seed, unsigned rounds,
                 unsigned longestMicroseconds, Start start) {
    std::mt19937 random(seed);
    Vel::TraceHandle::settingsAre("*/none");
    const Shape shapes[] = {{64, 16}, {13, 7}, {400, 64}, {5, 3000}};
    Shape shape = shapes[0];
    std::optional<TableModel> before;
    U64 completed = 0;
    for (unsigned round = 0; round < rounds && !::testing::Test::HasFailure(); ++round) {
        SCOPED_TRACE("seed " + std::to_string(seed) + ", round " + std::to_string(round));
        if (random() % 4 == 0) {
            shape = shapes[random() % 4];
            before.reset();
            regions.clear();
        }
        const auto roundSeed = static_cast<U32>(random() % 1000000);
        journal.completedIs(0);
        const pid_t writer = start(shape, roundSeed);
        ::usleep(static_cast<useconds_t>(random() % longestMicroseconds));
        ::kill(writer, SIGKILL);
        EXPECT_EQ(statusOf(writer), -SIGKILL) << "the writer lives until it is killed";
        completed += journal.completed();
        before =
            recover(regions, shape, before ? &*before : nullptr, roundSeed, journal.completed());
    }
    EXPECT_GT(completed, rounds) << "the writers got something done before they were killed";
}

} // namespace Brixo::Testing
