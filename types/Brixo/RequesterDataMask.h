// RequesterDataMask.h - which bits of a resource's data a requester touches: a sparse bit string
// and whether it counts.
//
// Bits:   bit n is weight 2^(n & 7) of the byte with index n >> 3; indices are 16 bits, so bits go
//         from 0 to 65535. A byte without an entry counts as 0; an entry of 0 is an entry all the
//         same.
// Text:   prints "None" for the bytes, whatever they are; a text that names `mask` cannot be read.
// Log:    valid, then index and byte of each entry in the map's order, then a signed 32-bit 0.
// Order:  by valid, then by the entries in the map's order.
// Copies: copy the bytes.
#pragma once

#include <Brixo/Export.h>
#include <Vel/CollectionAttribute.h>
#include <Vel/Integers.h>
#include <Vel/KeyedCollection.h>
#include <Vel/MapMember.h>
#include <Vel/Ptr.h>
#include <Vel/Value.h>

namespace Brixo {

class BRIXO_API RequesterDataMask : public Vel::Value<RequesterDataMask> {
public:
    // One byte of the mask.
    class BRIXO_API VelMask final : public Vel::MapMember<Vel::U16, Vel::U8> {
    public:
        using MapMember::MapMember;
    };

    using Mask = Vel::KeyedCollection<VelMask>;

    VEL_VALUE(RequesterDataMask)

    RequesterDataMask() noexcept = default;

    explicit RequesterDataMask(bool valid) noexcept : valid_(valid) {}

    bool valid() const noexcept { return valid_; }

    void validIs(bool valid) noexcept { valid_ = valid; }

    // The bytes that were ever written, under their index; 0 where there is no entry.
    VEL_COLLECTION_READERS(mask, Mask);

    Vel::Ptr<VelMask> newMask(Vel::U16 index, Vel::U8 byte) { return mask_.create(index, byte); }

    void maskIs(Vel::U16 index, Vel::U8 byte) { mask_.set(index, byte); }

    void maskDelAll() noexcept { mask_.delAll(); }

    // Sets the bits from `start` to `end`, both included; nothing if start > end. The counter has
    // 16 bits, so an `end` of 65535 never ends: callers keep it below. One look-up and one store a
    // bit.
    void setBitRange(Vel::U16 start, Vel::U16 end);
    // Sets `len` bits from `start` on; nothing if `len` is 0, nor if the last bit would be behind
    // 65535. A last bit of 65535 itself does not end, as above.
    void setBitOffsetAndLength(Vel::U16 start, Vel::U16 len);
    // Writes the first `size` bytes of the mask to `buf`, which has room for them.
    void fillMaskToBuf(Vel::BytePtr buf, Vel::U16 size) const;

    static constexpr auto schema() {
        return Vel::valueSchema<RequesterDataMask>("Brixo::RequesterDataMask")
            .stored(2, "valid", &RequesterDataMask::valid_, &RequesterDataMask::validIs)
            .collection(3, "mask", &RequesterDataMask::mask_)
            .function(4, "setBitRange", &RequesterDataMask::setBitRange, "start", "end")
            .function(5, "setBitOffsetAndLength", &RequesterDataMask::setBitOffsetAndLength,
                      "start", "len")
            .function(6, "fillMaskToBuf", &RequesterDataMask::fillMaskToBuf, "buf", "size")
            .constructedFrom("valid");
    }

private:
    bool valid_ = false;
    Mask mask_;
};

VEL_VALUE_FUNCTIONS(BRIXO_API, RequesterDataMask);

} // namespace Brixo
