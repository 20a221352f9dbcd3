// VFPtrInterface.h - what every counted object has before its count: a virtual table, the counting
// mode, its memory.
//
// Memory:  birth and death are inline down to the thread's list of free places; ObjectPages is what they touch there. How
//          the heap behind it works says detail/ObjectHeap.h.
// Threads: enableThreadSafePointers is read by every reference operation, without synchronisation.
//          Set it before the first object is shared between threads and leave it set.
#pragma once

#include <Vel/Export.h>
#include <Vel/Integers.h>
#include <Vel/PtrTrack.h>
#include <cstddef>
#include <cstdint>
#include <new>

namespace Vel {

namespace detail {

// A thread's pages that have free places, by size. Part of the ABI: clients have the code below compiled in. Whether a
// thread has such pages at all is the library's decision alone, so that clients built with a sanitizer, or without, go
// with any libVel.
class VEL_API ObjectPages {
public:
    static constexpr std::size_t pageBytes = 65536;
    static constexpr std::size_t granule = 8;
    static constexpr std::size_t largest = 512;

    ObjectPages(const ObjectPages&) = delete;
    ObjectPages& operator=(const ObjectPages&) = delete;

    // Throws std::bad_alloc. A size of 0 is as good as 1.
    static void* allocate(std::size_t size) {
        const ObjectPages* const pages = current_;
        if (size <= largest && pages != nullptr) [[likely]] {
            Page* const page = pages->roomy_[granulesOf(size)];
            if (page->free != nullptr) [[likely]]
                return page->take();
        }
        return allocateElsewhere(size);
    }

    // `size` is what allocate() was given.
    static void deallocate(void* object, std::size_t size) noexcept {
        const ObjectPages* const pages = current_;
        if (size > largest || pages == nullptr) [[unlikely]]
            return deallocateElsewhere(object, size);
        Page* const page = pageOf(object);
        if (page->owner != pages) [[unlikely]]
            return deallocateElsewhere(object, size);
        if (page->give(object)) [[unlikely]]
            roomMade(page);
    }

protected:
    struct Place { // what lies in a place while it is free
        Place* next;
    };

    struct Page {
        ObjectPages* owner = nullptr;
        Page* next = nullptr; // in a list of the heap
        Page* previous = nullptr;
        Place* free = nullptr;
        char* fresh = nullptr; // from here on nothing was ever used
        char* end = nullptr;
        U32 used =
            0; // objects, and one more while the page is the first of its size; 1 while the page is parked
        U32 granules = 0;      // the size of a place
        U32 usedAndParked = 0; // a full page that is in no list: its objects; else 0

        // Precondition: free != nullptr.
        void* take() noexcept {
            Place* const place = free;
            free = place->next;
            __builtin_prefetch(place->next, 1); // the next object will want it
            ++used;
            return place;
        }

        // Whether the heap must look after the page: nothing is used any more, or it was parked.
        [[nodiscard]] bool give(void* object) noexcept {
            free = ::new (object) Place{free};
            return --used == 0;
        }
    };

    static constexpr std::size_t classes = largest / granule + 1;
    static constexpr std::size_t headerBytes = 64;
    static_assert(sizeof(Page) <= headerBytes);

    ObjectPages() noexcept = default;
    ~ObjectPages() = default;

    static constexpr std::size_t granulesOf(std::size_t size) noexcept {
        return (size + granule - 1) / granule;
    }

    // Where a page's header lies: a line of the cache further in each of 32 pages that follow, or all headers would fall
    // into the same few sets of the cache.
    static constexpr std::uintptr_t headerOf(std::uintptr_t page) noexcept {
        return page + page / pageBytes % 32 * headerBytes;
    }

    static Page* pageOf(void* object) noexcept {
        const auto address = reinterpret_cast<std::uintptr_t>(object);
        const std::uintptr_t page =
            address & ~(pageBytes - 1);                 // what the alignment of pages is for
        return reinterpret_cast<Page*>(headerOf(page)); // NOLINT
    }

    // The calling thread's; null before its first object, after its end, and when switched off.
    static thread_local constinit ObjectPages* current_ __attribute__((tls_model("initial-exec")));

    Page* roomy_[classes]; // by size: pages that may have room, or one page that never has

private:
    static void* allocateElsewhere(std::size_t size);
    static void deallocateElsewhere(void* object, std::size_t size) noexcept;
    static void roomMade(Page* page) noexcept;
};

} // namespace detail

class VEL_API VFPtrInterface {
public:
    VFPtrInterface(const VFPtrInterface&) = default;
    VFPtrInterface& operator=(const VFPtrInterface&) = default;
    virtual ~VFPtrInterface() = default;

    // Clear (the default): counts are plain words. Set: every increment and decrement is an atomic
    // read-modify-write.
    static bool enableThreadSafePointers;

    // Memory for an object of exactly `size` bytes, from per-thread lists by size class. Throws std::bad_alloc.
    static void* operator new(std::size_t size) {
        void* const object = detail::ObjectPages::allocate(size);
        if (PtrTrack::ptrifTrackOn_) [[unlikely]]
            PtrTrack::ptrifNew(object);
        return object;
    }

    static void* operator new(std::size_t, void* place) noexcept { return place; }

    // Gives an object back to these lists. `size` is the object's exact size; the virtual destructor supplies it. Any
    // thread may free what another made.
    static void operator delete(void* object, std::size_t size) noexcept {
        if (PtrTrack::ptrifTrackOn_) [[unlikely]]
            PtrTrack::ptrifDel(object);
        detail::ObjectPages::deallocate(object, size);
    }

    static void operator delete(void*, void*) noexcept {} // pairs with placement, frees nothing

protected:
    VFPtrInterface() = default;
};

static_assert(sizeof(bool) == 1);

} // namespace Vel
