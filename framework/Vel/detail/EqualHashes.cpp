#include <Vel/detail/EqualHashes.h>

namespace Vel::detail {

EqualHashes::EqualHashes(const HashMapVTableGeneric& vtable, U32 fold)
    : SubBuckets(fold, allBits), places_(Before{&vtable}) {}

MapLink* EqualHashes::notBehind(const void* key) const {
    auto place = places_.upper_bound(key);
    return place == places_.begin() ? nullptr : *--place;
}

} // namespace Vel::detail
