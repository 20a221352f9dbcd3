#include <Vel/detail/ObjectHeap.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <pthread.h>
#include <random>
#include <set>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace Vel::detail {
namespace {

constexpr std::size_t pageBytes = ObjectHeap::pageBytes;

// A library built with a sanitizer leaves its heap off otherwise. The setting is read at the first
// object.
[[gnu::constructor]] void switchOn() { ::setenv("VEL_OBJECT_HEAP", "on", 0); }

std::uintptr_t address(const void* object) { return reinterpret_cast<std::uintptr_t>(object); }

std::uintptr_t pageOf(const void* object) { return address(object) / pageBytes; }

std::vector<void*> allocated(std::size_t count, std::size_t size) {
    std::vector<void*> objects(count);
    for (void*& object : objects) object = ObjectHeap::allocate(size);
    return objects;
}

void free(const std::vector<void*>& objects, std::size_t size) {
    for (void* object : objects) ObjectHeap::deallocate(object, size);
}

TEST(ObjectHeap, GivesRoomThatNobodyElseHas) {
    const unsigned seed = 20261121;
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);

    struct Object {
        unsigned char* bytes;
        std::size_t size;
        unsigned char mark;
    };

    std::vector<Object> objects;
    for (int step = 0; step < 100'000; ++step) {
        if (objects.size() < 1000 && random() % 8 < 5) {
            const std::size_t size = 1 + random() % 600 + (random() % 50 == 0 ? 5000 : 0);
            const auto mark = static_cast<unsigned char>(random());
            auto* const bytes = static_cast<unsigned char*>(ObjectHeap::allocate(size));
            ASSERT_EQ(address(bytes) % (size % 16 == 0 ? 16 : 8), 0u);
            std::memset(bytes, mark, size);
            objects.push_back({bytes, size, mark});
        } else if (!objects.empty()) {
            const std::size_t at = random() % objects.size();
            const Object object = objects[at];
            objects[at] = objects.back();
            objects.pop_back();
            ASSERT_TRUE(std::all_of(object.bytes, object.bytes + object.size,
                                    [&](unsigned char byte) { return byte == object.mark; }));
            ObjectHeap::deallocate(object.bytes, object.size);
        }
    }
    for (const Object& object : objects) ObjectHeap::deallocate(object.bytes, object.size);
}

TEST(ObjectHeap, WhatIsMadeTogetherLiesTogether) {
    std::thread([] { // a heap of its own
        std::vector<void*> objects = allocated(20'000, 24);
        std::mt19937 random(1);
        std::shuffle(objects.begin(), objects.end(), random);
        free(objects, 24);
        objects = allocated(20'000, 24);
        std::size_t neighbours = 0;
        for (std::size_t i = 1; i < objects.size(); ++i)
            neighbours += address(objects[i]) == address(objects[i - 1]) + 24;
        EXPECT_GT(neighbours, objects.size() * 8 / 10) << "also after a teardown in any order";
        free(objects, 24);
    })
        .join();
}

TEST(ObjectHeap, EmptyPagesServeEverySize) {
    std::thread([] {
        free(allocated(200'000, 40), 40);
        const std::size_t before = ObjectHeap::reservedBytes();
        for (const std::size_t size : {8UL, 200UL, 512UL})
            free(allocated(7'000'000 / size, size), size);
        EXPECT_EQ(ObjectHeap::reservedBytes(), before);
    }).join();
}

TEST(ObjectHeap, OneObjectThatComesAndGoesFindsItsPlace) {
    void* const first = ObjectHeap::allocate(72);
    ObjectHeap::deallocate(first, 72);
    for (int count = 0; count < 1000; ++count) {
        void* const object = ObjectHeap::allocate(72);
        EXPECT_EQ(object, first);
        ObjectHeap::deallocate(object, 72);
    }
}

TEST(ObjectHeap, FullPagesServeAgainOnceSomethingInThemIsFree) {
    std::thread([] {
        std::vector<void*> objects = allocated(10 * pageBytes / 128, 128);
        const std::size_t before = ObjectHeap::reservedBytes();
        for (std::size_t round = 0; round < 3; ++round) {
            for (std::size_t i = round; i < objects.size(); i += 100)
                ObjectHeap::deallocate(objects[i], 128);
            for (std::size_t i = round; i < objects.size(); i += 100)
                objects[i] = ObjectHeap::allocate(128);
        }
        EXPECT_EQ(ObjectHeap::reservedBytes(), before);
        EXPECT_EQ(std::set<void*>(objects.begin(), objects.end()).size(), objects.size());
        free(objects, 128);
    }).join();
}

TEST(ObjectHeap, LargeObjectsComeFromTheGeneralAllocator) {
    const std::size_t before = ObjectHeap::reservedBytes();
    free(allocated(5000, ObjectHeap::largest + 1), ObjectHeap::largest + 1);
    EXPECT_EQ(ObjectHeap::reservedBytes(), before);
}

TEST(ObjectHeap, WhatAnotherThreadFreesComesHome) {
    std::vector<void*> objects = allocated(10'000, 48);
    std::thread([&] { free(objects, 48); }).join();
    const std::set<std::uintptr_t> pages = [&] {
        std::set<std::uintptr_t> found;
        for (const void* object : objects) found.insert(pageOf(object));
        return found;
    }();
    ObjectHeap::collect();
    const std::size_t before = ObjectHeap::reservedBytes();
    objects = allocated(10'000, 48);
    EXPECT_EQ(ObjectHeap::reservedBytes(), before);
    for (const void* object : objects) EXPECT_TRUE(pages.contains(pageOf(object)));
    free(objects, 48);
}

TEST(ObjectHeap, ObjectsOutliveTheirThread) {
    std::vector<void*> objects;
    std::thread([&] {
        objects = allocated(5000, 32);
        for (void* object : objects) std::memset(object, 0x5a, 32);
    }).join();
    for (void* object : objects) EXPECT_EQ(static_cast<unsigned char*>(object)[31], 0x5a);
    free(objects, 32);
    const std::size_t before = ObjectHeap::reservedBytes();
    std::thread([&] { // takes the idle heap over, with what was freed meanwhile
        objects = allocated(5000, 32);
    })
        .join();
    EXPECT_EQ(ObjectHeap::reservedBytes(), before);
    free(objects, 32);
}

TEST(ObjectHeap, ThreadsAllocateAndFreeAcrossEachOther) {
    constexpr std::size_t slots = 256;
    std::vector<std::atomic<void*>> shared(slots);
    std::vector<std::thread> threads;
    for (unsigned thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&shared, thread] {
            std::mt19937 random(thread);
            for (int step = 0; step < 20'000; ++step) {
                void* const made = ObjectHeap::allocate(64);
                std::memset(made, static_cast<int>(thread), 64);
                void* const taken = shared[random() % slots].exchange(made);
                if (taken == nullptr) continue;
                const auto* const bytes = static_cast<unsigned char*>(taken);
                EXPECT_TRUE(std::all_of(bytes, bytes + 64,
                                        [&](unsigned char byte) { return byte == bytes[0]; }));
                ObjectHeap::deallocate(taken, 64);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (std::atomic<void*>& object : shared)
        if (object != nullptr) ObjectHeap::deallocate(object, 64);
}

TEST(ObjectHeap, ServesAThreadThatHasEndedAlready) {
    static int calls = 0;
    static pthread_key_t key; // its destructor runs twice, the second time behind every other
    pthread_key_create(&key, [](void* kept) {
        ObjectHeap::deallocate(kept, 56);
        void* const late = ObjectHeap::allocate(56);
        std::memset(late, 1, 56);
        if (++calls < 2) {
            pthread_setspecific(key, late);
        } else {
            ObjectHeap::deallocate(late, 56);
        }
    });
    std::thread([] { pthread_setspecific(key, ObjectHeap::allocate(56)); }).join();
    pthread_key_delete(key);
    EXPECT_EQ(calls, 2);
}

TEST(ObjectHeap, SurvivesAFork) {
    std::atomic<bool> isDone = false;
    std::thread other([&] {
        while (!isDone) std::thread([] { free(allocated(10, 16), 16); }).join();
    });
    for (int round = 0; round < 20; ++round) {
        const pid_t child = ::fork();
        if (child == 0) {
            free(allocated(1000, 16), 16);
            ::_exit(ObjectHeap::reservedBytes() > 0 ? 0
                                                    : 1); // what threads share is not left locked
        }
        int status = -1;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    isDone = true;
    other.join();
}

// What the calling thread has under every key there is.
std::vector<void*> keptValues() {
    std::vector<void*> values;
    for (pthread_key_t key = 0; key < PTHREAD_KEYS_MAX; ++key)
        values.push_back(pthread_getspecific(key));
    return values;
}

// Objects of this thread, some freed by another; each holds what was written into it.
bool objectsWorkInThisThread(unsigned char mark) {
    const std::vector<void*> before = keptValues();
    const std::vector<void*> mine = allocated(2000, 48);
    for (void* object : mine) std::memset(object, mark, 48);
    const bool areWhole = std::ranges::all_of(mine, [mark](const void* object) {
        const auto* const bytes = static_cast<const unsigned char*>(object);
        return std::all_of(bytes, bytes + 48, [mark](unsigned char byte) { return byte == mark; });
    });
    free({mine.begin(), mine.begin() + 1000}, 48);
    std::thread([&mine] { free({mine.begin() + 1000, mine.end()}, 48); }).join();
    return areWhole && keptValues() == before;
}

// For a process that has made no object: takes every key there is first.
bool worksWithoutAKey() {
    pthread_key_t key{};
    while (pthread_key_create(&key, nullptr) == 0) pthread_setspecific(key, &key);
    std::atomic<bool> isWell = objectsWorkInThisThread(1);
    for (int round = 0; round < 20; ++round) {
        std::vector<std::thread> threads;
        for (unsigned char mark = 2; mark < 6; ++mark)
            threads.emplace_back([mark, &isWell] {
                if (!objectsWorkInThisThread(mark)) isWell = false;
            });
        for (std::thread& thread : threads) thread.join();
    }
    // All rounds together made 7.8 MB of objects, and no more than 0.4 MB at a time.
    return isWell && ObjectHeap::reservedBytes() > 0 && ObjectHeap::reservedBytes() < 4'000'000;
}

TEST(ObjectHeapDeathTest, LeavesTheKeysOfOthersAloneWhenNoneIsLeft) {
    testing::FLAGS_gtest_death_test_style = "threadsafe"; // a key is asked for once in a process
    EXPECT_EXIT(::_exit(worksWithoutAKey() ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST(ObjectHeapDeathTest, CanBeSwitchedOff) {
    testing::FLAGS_gtest_death_test_style =
        "threadsafe"; // a process of its own: the setting is read once
    ::setenv("VEL_OBJECT_HEAP", "off", 1);
    EXPECT_EXIT(
        {
            free(allocated(1000, 24), 24);
            ::_exit(ObjectHeap::reservedBytes() == 0 ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
    ::setenv("VEL_OBJECT_HEAP", "on", 1);
}

} // namespace
} // namespace Vel::detail
