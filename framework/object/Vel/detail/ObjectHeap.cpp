#include <Vel/detail/ObjectHeap.h>

#include <Vel/detail/ProcessWide.h>
#include <Vel/detail/environment.h>
#include <algorithm>
#include <mutex>
#include <new>
#include <pthread.h>
#include <string_view>
#include <sys/mman.h>
#include <utility>

// A sanitizer watches each object if it comes from the general allocator.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    #define VEL_OBJECTS_ARE_WATCHED 1
#elif defined(__has_feature)
    #if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) ||                     \
        __has_feature(memory_sanitizer)
        #define VEL_OBJECTS_ARE_WATCHED 1
    #endif
#endif

namespace Vel::detail {

namespace {

constexpr std::size_t chunkBytes = 16 * ObjectHeap::pageBytes;

// So much of a page is made into free places at a time: what the kernel hands out at a time.
constexpr std::size_t carvedBytes = 4096;

#ifdef VEL_OBJECTS_ARE_WATCHED
constexpr bool isOffByDefault = true;
#else
constexpr bool isOffByDefault = false;
#endif

// The calling thread has handed its heap on.
constinit thread_local bool isThreadOver = false;

} // namespace

thread_local constinit ObjectPages* ObjectPages::current_ = nullptr;

// What all heaps share. Asked when a thread makes its first object, when it ends, and when a heap
// needs memory.
class ObjectHeap::Registry {
public:
    static Registry& only() { return ProcessWide<Registry>::only(); }

    bool isOff() const noexcept { return isOff_; }

    // An idle heap, or a new one.
    ObjectHeap* take() {
        const std::lock_guard lock(mutex_);
        if (ObjectHeap* const heap = idle_; heap != nullptr) {
            idle_ = std::exchange(heap->nextIdle_, nullptr);
            return heap;
        }
        return new ObjectHeap;
    }

    void giveBack(ObjectHeap* heap) noexcept {
        const std::lock_guard lock(mutex_);
        heap->nextIdle_ = std::exchange(idle_, heap);
    }

    // Hands the heap on when the calling thread ends, behind the destructors of its thread-local
    // objects. The process's first thread keeps its heap to the end, for exit-time destructors.
    // False where nobody would hand it on: it has ended already, or the C library has no key or no
    // memory for it.
    bool threadHas(ObjectHeap* heap) noexcept {
        return !isThreadOver && hasKey_ && pthread_setspecific(threadEnd_, heap) == 0;
    }

    // One more page, as the kernel gave it.
    void* page() {
        const std::lock_guard lock(mutex_);
        if (chunk_ == chunkEnd_) {
            // A page more than needed, so that aligned ones can be cut out.
            void* const memory = mmap(nullptr, chunkBytes + pageBytes, PROT_READ | PROT_WRITE,
                                      MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
            if (memory == MAP_FAILED) throw std::bad_alloc();
            auto* const start = static_cast<char*>(memory);
            const std::size_t before = -reinterpret_cast<std::uintptr_t>(start) & (pageBytes - 1);
            // What the kernel does not take back stays mapped and unused.
            if (before != 0) static_cast<void>(munmap(start, before));
            chunk_ = start + before;
            chunkEnd_ = chunk_ + chunkBytes;
            if (before != pageBytes) static_cast<void>(munmap(chunkEnd_, pageBytes - before));
            reserved_ += chunkBytes;
        }
        return std::exchange(chunk_, chunk_ + pageBytes);
    }

    std::size_t reserved() noexcept {
        const std::lock_guard lock(mutex_);
        return reserved_;
    }

private:
    friend class ProcessWide<Registry>;

    Registry() noexcept {
        const char* const setting = fromEnvironment("VEL_OBJECT_HEAP");
        const std::string_view wish = setting == nullptr ? "" : setting;
        isOff_ = isOffByDefault ? wish != "on" : wish == "off";
        if (isOff_) return;
        hasKey_ = pthread_key_create(&threadEnd_, [](void* heap) {
                      isThreadOver = true;
                      current_ = nullptr;
                      only().giveBack(static_cast<ObjectHeap*>(heap));
                  }) == 0;
    }

    void beforeFork() { mutex_.lock(); }

    void afterFork(bool /*isChild*/) { mutex_.unlock(); }

    std::mutex mutex_;
    pthread_key_t threadEnd_{}; // ours only if hasKey_
    bool hasKey_ = false;
    ObjectHeap* idle_ = nullptr;
    char* chunk_ = nullptr;
    char* chunkEnd_ = nullptr;
    std::size_t reserved_ = 0;
    bool isOff_ = false;
};

constinit ObjectHeap::Page ObjectHeap::full_ = {};

ObjectHeap::ObjectHeap() noexcept {
    for (Page*& first : roomy_) first = &full_;
}

void* ObjectPages::allocateElsewhere(std::size_t size) {
    if (size > largest) return ::operator new(size);
    const std::size_t granules = size == 0 ? 1 : granulesOf(size);
    if (current_ != nullptr) return ObjectHeap::current()->allocateSlowly(granules);
    ObjectHeap::Registry& registry = ObjectHeap::Registry::only();
    if (registry.isOff()) return ::operator new(size);
    ObjectHeap* const heap = registry.take();
    if (registry.threadHas(heap)) {
        current_ = heap;
        return heap->allocateSlowly(granules);
    }
    // The heap serves this one call: of a destructor that runs later still, or of a thread that
    // cannot keep one.
    try {
        void* const object = heap->allocateSlowly(granules);
        registry.giveBack(heap);
        return object;
    } catch (...) {
        registry.giveBack(heap);
        throw;
    }
}

void ObjectPages::deallocateElsewhere(void* object, std::size_t size) noexcept {
    if (object == nullptr) return;
    if (size > largest || (current_ == nullptr && ObjectHeap::Registry::only().isOff()))
        ::operator delete(object);
    else
        ObjectHeap::ownerOf(pageOf(object)).post(object);
}

void ObjectPages::roomMade(Page* page) noexcept { ObjectHeap::ownerOf(page).lookAfter(page); }

void* ObjectHeap::allocateSlowly(std::size_t granules) {
    emptyInbox();
    for (;;) {
        Page* const page = roomy_[granules] != &full_ ? roomy_[granules] : newPage(granules);
        if (page->free == nullptr) carve(page);
        if (page->free != nullptr) return page->take();
        unlist(page);
        page->usedAndParked = std::exchange(page->used, 1); // so that the next free tells
    }
}

void ObjectHeap::emptyInbox() noexcept {
    if (inbox_.load(std::memory_order_relaxed) == nullptr) return;
    Place* place = inbox_.exchange(nullptr, std::memory_order_acquire);
    while (place != nullptr) {
        Place* const next = place->next;
        Page* const page = pageOf(place);
        if (page->give(place)) lookAfter(page);
        place = next;
    }
}

void ObjectHeap::lookAfter(Page* page) noexcept {
    if (page->usedAndParked != 0) {
        page->used = std::exchange(page->usedAndParked, 0) - 1;
        enlist(page);
        return;
    }
    unlist(page);
    page->next = std::exchange(empty_, page);
}

ObjectHeap::Page* ObjectHeap::newPage(std::size_t granules) {
    Page* page = empty_;
    if (page != nullptr)
        empty_ = std::exchange(page->next, nullptr);
    else
        page = ::new (pageOf(Registry::only().page())) Page{.owner = this};
    layOut(page, granules);
    enlist(page);
    return page;
}

void ObjectHeap::layOut(Page* page, std::size_t granules) noexcept {
    char* const header = reinterpret_cast<char*>(page); // NOLINT: the page's bytes
    page->free = nullptr;
    page->fresh = header + headerBytes;
    page->end = header + pageBytes - reinterpret_cast<std::uintptr_t>(header) % pageBytes;
    page->granules = static_cast<U32>(granules);
}

// Free places from the front of what was never used, in the order of their addresses; none if there
// is no room.
void ObjectHeap::carve(Page* page) noexcept {
    const std::size_t bytes = page->granules * granule;
    const std::size_t room = static_cast<std::size_t>(page->end - page->fresh) / bytes;
    Place** end = &page->free;
    for (std::size_t left = std::min(room, carvedBytes / bytes); left > 0; --left) {
        *end = ::new (page->fresh) Place{nullptr};
        end = &(*end)->next;
        page->fresh += bytes;
    }
}

// Behind the first page, whose places are in use: it keeps its mark.
void ObjectHeap::enlist(Page* page) noexcept {
    Page*& first = roomy_[page->granules];
    if (first == &full_) {
        first = page;
        ++page->used;
        return;
    }
    page->previous = first;
    page->next = std::exchange(first->next, page);
    if (page->next != nullptr) page->next->previous = page;
}

void ObjectHeap::unlist(Page* page) noexcept {
    Page* const next = std::exchange(page->next, nullptr);
    Page* const previous = std::exchange(page->previous, nullptr);
    if (next != nullptr) next->previous = previous;
    if (previous != nullptr) {
        previous->next = next;
        return;
    }
    --page->used;
    roomy_[page->granules] = next != nullptr ? next : &full_;
    if (next != nullptr) ++next->used;
}

std::size_t ObjectHeap::reservedBytes() noexcept { return Registry::only().reserved(); }

void ObjectHeap::collect() noexcept {
    if (current_ != nullptr) current()->emptyInbox();
}

} // namespace Vel::detail
