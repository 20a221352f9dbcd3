// ObjectHeap.h - memory for counted objects: per thread, by size, without a lock or a header an object.
//
// Pages:   64 KiB each, aligned, so that an object's address names its page. A page holds objects of one size and its own
//          list of free places: what is made one after another lies together, also after a teardown. An empty page starts
//          afresh, for any size; only the first page of each size stays, empty or not, so that a lone object that comes
//          and goes costs no page each time.
// Heaps:   each thread has one and alone touches its pages. A place that another thread frees goes to the owning heap's
//          inbox, one atomic exchange; the owner empties it when a page runs out. A thread that ends leaves its heap
//          behind, objects and all, and the next new thread takes it over: pages never change hands, and heaps live as
//          long as the process.
// Sizes:   multiples of 8 bytes up to `largest`; what is larger comes from ::operator new. A place is aligned to 8 bytes,
//          and to 16 if its size is a multiple of 16: enough for every type whose alignment new respects.
// Memory:  comes from the kernel in pieces of 1 MiB and stays with the process.
// Off:     VEL_OBJECT_HEAP=off in the environment, read once, sends everything to ::operator new: for tools that watch
//          each object. A build with a sanitizer does so by itself (VFPtrInterface.cpp).
// Threads: any thread may free what any other has allocated. fork() is safe; the child keeps the forking thread's heap.
// Source:  free lists sharded by page after D. Leijen, B. Zorn, L. de Moura, "Mimalloc: Free List Sharding in Action",
//          2019; whole heaps are handed on instead of pages.
#pragma once

#include <Vel/Export.h>
#include <Vel/Integers.h>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace Vel::detail {

class VEL_API ObjectHeap {
public:
    static constexpr std::size_t pageBytes = 65536;
    static constexpr std::size_t granule = 8;
    static constexpr std::size_t largest = 512;

    // Throws std::bad_alloc. A size of 0 is as good as 1.
    static void* allocate(std::size_t size) {
        ObjectHeap* const heap = current_;
        if (heap == nullptr || size > largest) [[unlikely]]
            return allocateElsewhere(size);
        return heap->allocateHere((size + granule - 1) / granule);
    }

    // `size` is what allocate() was given.
    static void deallocate(void* object, std::size_t size) noexcept {
        ObjectHeap* const heap = current_;
        if (heap == nullptr || size > largest) [[unlikely]]
            return deallocateElsewhere(object, size);
        Page* const page = pageOf(object);
        if (page->owner == heap) [[likely]]
            heap->deallocateHere(page, object);
        else
            page->owner->post(static_cast<Place*>(object));
    }

    // Bytes that the kernel has given to all heaps together.
    static std::size_t reservedBytes() noexcept;

    // Takes back what other threads have freed of the calling thread's objects. An allocation does so when it must.
    static void collect() noexcept;

    ObjectHeap(const ObjectHeap&) = delete;
    ObjectHeap& operator=(const ObjectHeap&) = delete;

private:
    struct Place { // what lies in a place while it is free
        Place* next;
    };

    struct Page {
        ObjectHeap* owner;
        Page* next; // in a list of the heap
        Page* previous;
        Place* free;
        char* fresh; // from here on nothing was ever used
        char* end;
        U32 used;      // objects, and one more while the page is the first of its size
        U32 granules;  // the size of a place
        bool isListed; // among its size's pages with room
    };

    static constexpr std::size_t classes = largest / granule + 1;
    static constexpr std::size_t headerBytes = 64;
    static_assert(sizeof(Page) <= headerBytes);

    class Registry;

    ObjectHeap() noexcept = default;

    // Where a page's header lies: a line of the cache further in each of 32 pages that follow, or all headers would fall
    // into the same few sets of the cache.
    static std::uintptr_t headerOf(std::uintptr_t page) noexcept {
        return page + page / pageBytes % 32 * headerBytes;
    }

    static Page* pageOf(void* object) noexcept {
        const auto address = reinterpret_cast<std::uintptr_t>(object);
        const std::uintptr_t page =
            address & ~(pageBytes - 1);                 // what the alignment of pages is for
        return reinterpret_cast<Page*>(headerOf(page)); // NOLINT
    }

    static void* allocateElsewhere(std::size_t size);
    static void deallocateElsewhere(void* object, std::size_t size) noexcept;

    void* allocateHere(std::size_t granules) {
        Page* const page = roomy_[granules];
        if (page != nullptr) [[likely]] {
            if (Place* const place = page->free; place != nullptr) {
                page->free = place->next;
                __builtin_prefetch(place->next, 1); // the next object will want it
                ++page->used;
                return place;
            }
            char* const place = page->fresh;
            const std::size_t bytes = granules * granule;
            if (static_cast<std::size_t>(page->end - place) >= bytes) [[likely]] {
                page->fresh = place + bytes;
                ++page->used;
                return place;
            }
        }
        return allocateSlowly(granules);
    }

    void deallocateHere(Page* page, void* object) noexcept {
        auto* const place = static_cast<Place*>(object);
        place->next = page->free;
        page->free = place;
        if (--page->used == 0 || !page->isListed) [[unlikely]]
            roomMade(page);
    }

    // Any thread: puts a place into the inbox.
    void post(Place* place) noexcept {
        Place* seen = inbox_.load(std::memory_order_relaxed);
        do place->next = seen;
        while (!inbox_.compare_exchange_weak(seen, place, std::memory_order_release,
                                             std::memory_order_relaxed));
    }

    void* allocateSlowly(std::size_t granules);
    void emptyInbox() noexcept;
    void roomMade(Page* page) noexcept;
    Page* newPage(std::size_t granules);
    void enlist(Page* page) noexcept;
    void unlist(Page* page) noexcept;
    static void layOut(Page* page, std::size_t granules) noexcept;

    // The calling thread's; null before its first object, after its end, and when switched off.
    static thread_local constinit ObjectHeap* current_ __attribute__((tls_model("initial-exec")));

    Page* roomy_[classes] = {}; // by size: pages that may have room
    Page* empty_ = nullptr;     // pages without objects
    std::atomic<Place*> inbox_ = nullptr;
    ObjectHeap* nextIdle_ = nullptr;
};

} // namespace Vel::detail
