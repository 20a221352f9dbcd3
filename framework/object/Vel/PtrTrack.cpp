#include <Vel/PtrTrack.h>

#include <Vel/PtrInterface.h>
#include <Vel/detail/ProcessWide.h>
#include <mutex>
#include <set>

namespace Vel {

constinit bool PtrTrack::ptrifTrackOn_ = false;

namespace {

struct Tracked {
    void beforeFork() { mutex.lock(); }

    void afterFork(bool /*isChild*/) { mutex.unlock(); }

    std::mutex mutex;
    std::set<const void*> alive;
    std::set<const void*> leaked;
};

Tracked& tracked() { return detail::ProcessWide<Tracked>::only(); }

} // namespace

void PtrTrack::ptrifNew(void* object) {
    Tracked& all = tracked();
    const std::lock_guard lock(all.mutex);
    all.alive.insert(object);
}

void PtrTrack::ptrifDel(void* object) noexcept {
    Tracked& all = tracked();
    const std::lock_guard lock(all.mutex);
    all.alive.erase(object);
    all.leaked.erase(object);
}

// The object is known by the address of its memory, which is that of its most derived class.
void PtrTrack::ptrifLeak(const PtrInterface* object) {
    Tracked& all = tracked();
    const std::lock_guard lock(all.mutex);
    const void* memory = dynamic_cast<const void*>(object);
    if (all.alive.erase(memory) != 0) all.leaked.insert(memory);
}

std::size_t PtrTrack::alive() {
    Tracked& all = tracked();
    const std::lock_guard lock(all.mutex);
    return all.alive.size();
}

std::size_t PtrTrack::leaked() {
    Tracked& all = tracked();
    const std::lock_guard lock(all.mutex);
    return all.leaked.size();
}

void PtrTrack::clear() {
    Tracked& all = tracked();
    const std::lock_guard lock(all.mutex);
    all.alive.clear();
    all.leaked.clear();
}

} // namespace Vel
