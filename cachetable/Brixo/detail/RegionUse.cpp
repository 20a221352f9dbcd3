#include <Brixo/detail/RegionUse.h>

#include <Vel/Integers.h>
#include <atomic>
#include <sys/types.h>
#include <unistd.h>

namespace Brixo::detail {

struct RegionUse::Entry {
    const CacheTableIndex user;
    const void* const region;
    const pid_t process;
    std::atomic<Vel::U32> tables{0};
    Entry* next = nullptr;

    bool isOf(const void* otherRegion, pid_t otherProcess) const {
        return region == otherRegion && process == otherProcess;
    }
};

namespace {

constinit std::atomic<void*> newest{nullptr}; // an entry; all of them are reached from it

} // namespace

RegionUse::Entry& RegionUse::entryOf(const CacheTableIndex& user, const void* region) {
    const pid_t process = ::getpid();
    void* head = newest.load();
    for (auto* entry = static_cast<Entry*>(head); entry != nullptr; entry = entry->next)
        if (entry->isOf(region, process) && entry->user == user) return *entry;
    auto* const entry = new Entry{user, region, process};
    do {
        entry->next = static_cast<Entry*>(head);
    } while (!newest.compare_exchange_weak(head, entry));
    return *entry;
}

std::optional<CacheTableIndex> RegionUse::begin(const CacheTableIndex& user, const void* region) {
    end();
    entry_ = &entryOf(user, region);
    if (entry_->tables.fetch_add(1) != 0) return user;
    for (auto* other = static_cast<Entry*>(newest.load()); other != nullptr; other = other->next)
        if (other != entry_ && other->isOf(region, entry_->process) && other->tables.load() != 0)
            return other->user;
    return std::nullopt;
}

void RegionUse::end() noexcept {
    if (entry_ != nullptr) entry_->tables.fetch_sub(1);
    entry_ = nullptr;
}

} // namespace Brixo::detail
