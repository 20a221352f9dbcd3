#include <pinbuf/pinbuf.h>

#include <exception>
#include <pinbuf/detail/Backend.h>
#include <pinbuf/detail/Error.h>
#include <pinbuf/detail/RegionName.h>
#include <vector>

namespace {

// Runs one call of the face: nothing is thrown across it, and a failure becomes its line and the
// answer `onFailure`.
template <typename Result, typename Step>
Result answer(const char* call, const char* name, Result onFailure, Step step) noexcept {
    pinbuf::clearError();
    try {
        return step();
    } catch (const std::exception& failure) { // a Failure, or out of memory
        pinbuf::report(call, name, failure.what());
        return onFailure;
    }
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

const char* pinbuf_error() { return pinbuf::lastError(); }

int pinbuf_list(pinbuf_visitor visitor, void* context) {
    // The folder is unlocked again before the first visit: a visitor may allocate regions.
    std::vector<pinbuf::RegionInfo> regions;
    const bool isListed = answer("pinbuf_list", nullptr, false, [&] {
        if (visitor == nullptr) throw pinbuf::Failure("the visitor is null");
        regions = pinbuf::chosenBackend().list();
        return true;
    });
    if (!isListed) return -1;

    int visits = 0;
    for (const pinbuf::RegionInfo& region : regions) {
        const pinbuf_region seen{region.name.c_str(), region.owner.c_str(), region.address,
                                 region.sizeBytes};
        ++visits;
        if (visitor(&seen, context) != 0) break;
    }
    return visits;
}
