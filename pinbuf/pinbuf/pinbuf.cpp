#include <pinbuf/pinbuf.h>

#include <exception>
#include <optional>
#include <pinbuf/detail/Backend.h>
#include <pinbuf/detail/Error.h>
#include <pinbuf/detail/RegionName.h>
#include <pinbuf/detail/Undisturbed.h>
#include <vector>

namespace {

// Runs one call of the face: nothing is thrown across it, and a failure becomes its line and the
// answer `onFailure`.
template <typename Result, typename Step>
Result answer(const char* call, const char* name, Result onFailure, Step step) noexcept {
    pinbuf::Undisturbed undisturbed;
    pinbuf::clearError();
    try {
        return step();
    } catch (const std::exception& failure) { // a Failure, or out of memory
        undisturbed.takeSignalBack();
        pinbuf::report(call, name, failure.what());
        return onFailure;
    }
}

void requireVisitor(pinbuf_visitor visitor) {
    if (visitor == nullptr) throw pinbuf::Failure("the visitor is null");
}

int visit(const pinbuf::RegionInfo& region, pinbuf_visitor visitor, void* context) {
    const pinbuf_region seen{region.name.c_str(), region.owner.c_str(), region.address,
                             region.sizeBytes, region.isMade ? 1 : 0};
    return visitor(&seen, context);
}

} // namespace

unsigned pinbuf_alloc_func(const char* name, unsigned size, const char* owner) {
    return answer("pinbuf_alloc_func", name, 0U, [&]() -> unsigned {
        const pinbuf::RegionName regionName(name);
        if (size == 0) throw pinbuf::Failure("a region of 0 bytes is asked for");
        return pinbuf::chosenBackend().alloc(regionName, size, owner == nullptr ? "" : owner);
    });
}

void* pinbuf_map(const char* name, int platform0, int platform1, int platform2) {
    return answer("pinbuf_map", name, static_cast<void*>(nullptr), [&] {
        const pinbuf::RegionName regionName(name);
        return pinbuf::chosenBackend().map(regionName, {{platform0, platform1, platform2}});
    });
}

int pinbuf_hold(const char* name, pinbuf_holder* holder) {
    return answer("pinbuf_hold", name, -1, [&] {
        const pinbuf::RegionName regionName(name);
        const pinbuf::RegionHolder found = pinbuf::chosenBackend().hold(regionName);
        if (holder != nullptr) {
            *holder = {found.process, {}};
            found.owner.copy(holder->owner, sizeof holder->owner - 1);
        }
        return found.isNew ? 1 : 0;
    });
}

const char* pinbuf_error() { return pinbuf::lastError(); }

// Both look at all that they need before the first visit: the folder is unlocked again then, and a
// visitor may make regions.
int pinbuf_find(const char* name, pinbuf_visitor visitor, void* context) {
    std::optional<pinbuf::RegionInfo> region;
    const bool isLookedFor = answer("pinbuf_find", name, false, [&] {
        const pinbuf::RegionName regionName(name);
        requireVisitor(visitor);
        region = pinbuf::chosenBackend().find(regionName);
        return true;
    });
    if (!isLookedFor) return -1;
    if (!region) return 0;
    visit(*region, visitor, context);
    return 1;
}

int pinbuf_list(pinbuf_visitor visitor, void* context) {
    std::vector<pinbuf::RegionInfo> regions;
    const bool isListed = answer("pinbuf_list", nullptr, false, [&] {
        requireVisitor(visitor);
        regions = pinbuf::chosenBackend().list();
        return true;
    });
    if (!isListed) return -1;

    int visits = 0;
    for (const pinbuf::RegionInfo& region : regions) {
        ++visits;
        if (visit(region, visitor, context) != 0) break;
    }
    return visits;
}
