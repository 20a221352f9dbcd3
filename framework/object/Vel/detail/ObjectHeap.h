// ObjectHeap.h - memory for counted objects: per thread, by size, without a lock or a header an
// object.
//
// Pages:   64 KiB each, aligned, so that an object's address names its page. A page holds objects
//          of one size and its own list of free places: what is made one after another lies
//          together, also after a teardown. An empty page starts afresh, for any size; only the
//          first page of each size stays, empty or not, so that a lone object that comes and goes
//          costs no page each time. A full page is parked, in no list, until something in it is
//          freed.
// Heaps:   each thread has one and alone touches its pages. A place that another thread frees goes
//          to the owning heap's inbox, one atomic exchange; the owner empties it when a list of
//          free places runs out. A thread that ends leaves its heap behind, objects and all, and
//          the next new thread takes it over: pages never change hands, and heaps live as long as
//          the process.
// No key:  where the C library has no key left that tells of a thread's end, heaps serve one call
//          at a time: slower, one lock an object, and the rest as it is.
// Sizes:   multiples of 8 bytes up to `largest`; what is larger comes from ::operator new. A place
//          is aligned to 8 bytes, and to 16 if its size is a multiple of 16: enough for every type
//          whose alignment new respects.
// Memory:  comes from the kernel in pieces of 1 MiB and stays with the process.
// Off:     VEL_OBJECT_HEAP=off in the environment, read once, sends everything to ::operator new:
//          for tools that watch each object. A library built with a sanitizer does so unless the
//          environment says VEL_OBJECT_HEAP=on.
// Threads: any thread may free what any other has allocated. fork() is safe; the child keeps the
//          forking thread's heap.
// Source:  free lists sharded by page after D. Leijen, B. Zorn, L. de Moura, "Mimalloc: Free List
//          Sharding in Action", 2019; whole heaps are handed on instead of pages.
#pragma once

#include <Vel/detail/ObjectPages.h>
#include <atomic>

namespace Vel::detail {

// allocate() and deallocate() are those of ObjectPages.
class VEL_API ObjectHeap : public ObjectPages {
public:
    // Bytes that the kernel has given to all heaps together.
    static std::size_t reservedBytes() noexcept;

    // Takes back what other threads have freed of the calling thread's objects. An allocation does
    // so when it must.
    static void collect() noexcept;

private:
    friend class ObjectPages;
    class Registry;

    ObjectHeap() noexcept;

    static ObjectHeap* current() noexcept { return static_cast<ObjectHeap*>(current_); }

    static ObjectHeap& ownerOf(Page* page) noexcept {
        return *static_cast<ObjectHeap*>(page->owner);
    }

    // Any thread: puts a place into the inbox.
    void post(void* object) noexcept {
        auto* const place = ::new (object) Place{inbox_.load(std::memory_order_relaxed)};
        while (!inbox_.compare_exchange_weak(place->next, place, std::memory_order_release,
                                             std::memory_order_relaxed)) {}
    }

    void* allocateSlowly(std::size_t granules);
    void emptyInbox() noexcept;
    void lookAfter(Page* page) noexcept;
    Page* newPage(std::size_t granules);
    void enlist(Page* page) noexcept;
    void unlist(Page* page) noexcept;
    static void layOut(Page* page, std::size_t granules) noexcept;
    static void carve(Page* page) noexcept;

    static constinit Page full_; // stands where a size has no page

    Page* empty_ = nullptr; // pages without objects
    std::atomic<Place*> inbox_ = nullptr;
    ObjectHeap* nextIdle_ = nullptr;
};

} // namespace Vel::detail
