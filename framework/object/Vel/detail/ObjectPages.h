// ObjectPages.h - what the birth and the death of a counted object touch: the thread's pages that
// have free places, by size.
//
// ABI:  clients have this code compiled in. Whether a thread has such pages at all is the library's
//       decision alone, so that clients built with a sanitizer, or without, go with any libVel.
// Heap: how pages come and go says ObjectHeap.h.
#pragma once

#include <Vel/Export.h>
#include <Vel/Integers.h>
#include <cstddef>
#include <cstdint>
#include <new>

namespace Vel::detail {

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
        U32 used = 0; // objects, and one more for the first page of its size; of a parked page: 1
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

    // Where a page's header lies: a line of the cache further in each of 32 pages that follow, or
    // all headers would fall into the same few sets of the cache.
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

} // namespace Vel::detail
