#include <Brixo/detail/RegionUse.h>

#include <mutex>
#include <unistd.h>

namespace Brixo::detail {

namespace {

constinit std::mutex mutex;
constinit RegionUse* first = nullptr;

} // namespace

std::optional<CacheTableIndex> RegionUse::begin(const void* region) {
    end();
    const pid_t process = ::getpid();
    const std::lock_guard lock(mutex);
    std::optional<CacheTableIndex> other;
    for (const RegionUse* use = first; use != nullptr && !other; use = use->next_)
        if (use->region_ == region && use->process_ == process) other = use->user_;
    region_ = region;
    process_ = process;
    next_ = first;
    first = this;
    return other;
}

void RegionUse::end() noexcept {
    if (region_ == nullptr) return;
    const std::lock_guard lock(mutex);
    RegionUse** place = &first;
    while (*place != this) place = &(*place)->next_;
    *place = next_;
    region_ = nullptr;
}

} // namespace Brixo::detail
