#include <Vel/shownName.h>

#include <cstddef>

namespace Vel {

String8 shownName(Name written) {
    constexpr std::size_t mostBytes = 64;
    return written.size() <= mostBytes ? String8(written)
                                       : String8(written.substr(0, mostBytes)) + "...";
}

} // namespace Vel
