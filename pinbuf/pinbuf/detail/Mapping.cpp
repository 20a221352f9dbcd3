#include <pinbuf/detail/Mapping.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <limits>
#include <memory>
#include <pinbuf/detail/Error.h>
#include <pinbuf/detail/Integers.h>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace pinbuf {
namespace {

struct Mapping {
    FileIdentity file;
    U64 sizeBytes;
    void* address;
    std::size_t spanBytes; // of address space, with the zeros that follow
    const Mapping* next;
};

constinit std::atomic<const Mapping*> mappings{nullptr};

const Mapping* find(const Mapping* from, const FolderFile& file) {
    while (from != nullptr &&
           (from->file != file.status().identity || from->sizeBytes != file.sizeBytes()))
        from = from->next;
    return from;
}

[[noreturn]] void throwCannotMap(U64 sizeBytes, int error) {
    throw Failure("cannot map " + std::to_string(sizeBytes) + " bytes", error);
}

// The address space that the mapping takes: the region in whole pages and one page more.
std::size_t spanFor(U64 sizeBytes) {
    const long known = ::sysconf(_SC_PAGESIZE);
    if (known <= 0) throw Failure("the size of a page is not known");
    const auto pageBytes = static_cast<U64>(known);
    const U64 spanBytes = (sizeBytes / pageBytes + 2) * pageBytes;
    if (sizeBytes > std::numeric_limits<U32>::max() ||
        spanBytes > std::numeric_limits<std::size_t>::max())
        throwCannotMap(sizeBytes, ENOMEM);
    return static_cast<std::size_t>(spanBytes);
}

// What cannot be given back stays as address space that nobody uses.
void giveBack(void* span, std::size_t spanBytes) {
    [[maybe_unused]] const int result = ::munmap(span, spanBytes);
}

// Zero pages are reserved for the whole span first and the file is laid over their beginning: what
// follows it stays.
void* mapWithZerosBehind(const FolderFile& file, std::size_t spanBytes) {
    void* const span =
        ::mmap(nullptr, spanBytes, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (span == MAP_FAILED) throwCannotMap(file.sizeBytes(), errno);
    void* const region =
        ::mmap(span, static_cast<std::size_t>(file.sizeBytes()), PROT_READ | PROT_WRITE,
               MAP_SHARED | MAP_FIXED, file.descriptor(), 0);
    if (region == MAP_FAILED) {
        const int error = errno;
        giveBack(span, spanBytes);
        throwCannotMap(file.sizeBytes(), error);
    }
    return region;
}

} // namespace

void* mapOnce(const FolderFile& file) {
    const Mapping* head = mappings.load(std::memory_order_acquire);
    if (const Mapping* known = find(head, file); known != nullptr) return known->address;
    if (file.sizeBytes() == 0) throw Failure("the region's file is empty");

    auto made = std::make_unique<Mapping>();
    made->file = file.status().identity;
    made->sizeBytes = file.sizeBytes();
    made->spanBytes = spanFor(file.sizeBytes());
    made->address = mapWithZerosBehind(file, made->spanBytes);
    made->next = head;
    while (!mappings.compare_exchange_weak(made->next, made.get(), std::memory_order_release,
                                           std::memory_order_acquire)) {
        // Another thread was faster. If it mapped the same region, its address counts and nobody
        // has seen ours.
        if (const Mapping* known = find(made->next, file); known != nullptr) {
            giveBack(made->address, made->spanBytes);
            return known->address;
        }
    }
    return made.release()->address;
}

} // namespace pinbuf
