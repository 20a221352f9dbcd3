#include <Vel/detail/ZeroedMemory.h>

#include <cstring>
#include <new>
#include <sys/mman.h>

namespace Vel::detail {

namespace {

constexpr std::size_t mappedFromBytes = 65536;
constexpr std::align_val_t alignment{64};

bool isMapped(std::size_t bytes) noexcept { return bytes >= mappedFromBytes; }

// What is asked for at random would cost a walk through page tables nearly each time. Where the
// kernel has no large pages to give, nothing changes.
void askForLargePages(void* pages, std::size_t bytes) noexcept {
    constexpr std::size_t fromBytes = std::size_t{4} << 20;
    if (bytes >= fromBytes) (void)madvise(pages, bytes, MADV_HUGEPAGE);
}

// Not mapped.
void* alignedMemory(std::size_t bytes) noexcept {
    return ::operator new(bytes, alignment, std::nothrow);
}

} // namespace

void* zeroedMemory(std::size_t bytes) noexcept {
    if (isMapped(bytes)) {
        void* pages =
            mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (pages == MAP_FAILED) return nullptr;
        askForLargePages(pages, bytes);
        return pages;
    }
    void* array = alignedMemory(bytes);
    if (array != nullptr) std::memset(array, 0, bytes);
    return array;
}

void* zeroedMemoryGrown(void* array, std::size_t bytes, std::size_t newBytes) noexcept {
    if (isMapped(bytes)) {
        void* pages = mremap(array, bytes, newBytes, MREMAP_MAYMOVE);
        if (pages == MAP_FAILED) return nullptr;
        askForLargePages(pages, newBytes);
        return pages;
    }
    void* grown = isMapped(newBytes) ? zeroedMemory(newBytes) : alignedMemory(newBytes);
    if (grown == nullptr) return nullptr;
    std::memcpy(grown, array, bytes);
    if (!isMapped(newBytes)) std::memset(static_cast<char*>(grown) + bytes, 0, newBytes - bytes);
    zeroedMemoryDel(array, bytes);
    return grown;
}

void zeroedMemoryDel(void* array, std::size_t bytes) noexcept {
    if (array == nullptr) return;
    if (isMapped(bytes))
        munmap(array, bytes);
    else
        ::operator delete(array, alignment);
}

} // namespace Vel::detail
