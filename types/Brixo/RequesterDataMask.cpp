#include <Brixo/RequesterDataMask.h>

#include <Vel/value/Define.h>
#include <cstring>

namespace Brixo {

using Vel::U16;
using Vel::U8;

VEL_DEFINE_VALUE(RequesterDataMask)

void RequesterDataMask::setBitRange(U16 start, U16 end) {
    if (start > end) return;
    U16 bit = start;
    do {
        const auto index = static_cast<U16>(bit >> 3);
        const auto weight = static_cast<U8>(1U << (bit & 7));
        if (VelMask* entry = mask_.find(index))
            entry->valueIs(static_cast<U8>(entry->value() | weight));
        else
            newMask(index, weight);
        ++bit;
    } while (end >= bit);
}

void RequesterDataMask::setBitOffsetAndLength(U16 start, U16 len) {
    if (len == 0) return;
    setBitRange(start, static_cast<U16>(start + len - 1));
}

// By bytes or by entries, whichever are fewer.
void RequesterDataMask::fillMaskToBuf(Vel::BytePtr buf, U16 size) const {
    if (masks() > size) {
        for (U16 index = 0; index < size; ++index) buf[index] = mask(index);
        return;
    }
    if (size != 0) std::memset(buf, 0, size);
    mask_.forEach([buf, size](const VelMask& entry) {
        if (entry.key() < size) buf[entry.key()] = entry.value();
    });
}

} // namespace Brixo
