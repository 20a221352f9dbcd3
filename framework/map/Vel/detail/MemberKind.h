// MemberKind.h - what lines must know of members where that is rare: objects, asked through their
// vtable, or plain numbers.
// ABI:  layout: one pointer.
// Test: LineMap_test.cpp.
#pragma once

#include <Vel/HashMapVTable.h>
#include <Vel/Integers.h>
#include <Vel/MapLink.h>
#include <Vel/bitReverse.h>
#include <cstdint>

namespace Vel::detail {

class MemberKind {
public:
    // Numbers, whose fold is their key.
    constexpr MemberKind() noexcept = default;

    // Objects. `vtable` outlives what is asked; null is good for a map without members.
    constexpr explicit MemberKind(const HashMapVTableGeneric* vtable) noexcept : vtable_(vtable) {}

    bool isPlain() const noexcept { return vtable_ == nullptr; }

    const HashMapVTableGeneric& vtable() const noexcept { return *vtable_; }

    static MapLink* object(std::uintptr_t member) noexcept {
        return reinterpret_cast<MapLink*>(member); // NOLINT: what a map was given
    }

    U32 fold(std::uintptr_t member) const { return bitReverse(vtable_->hash(object(member))); }

    // Sets `word` to the reversed rank, if members of one fold have ranks.
    bool rankWord(std::uintptr_t member, U32& word) const {
        U32 rank = 0;
        if (isPlain() || !vtable_->keyRank(nullptr, object(member), rank)) return false;
        word = bitReverse(rank);
        return true;
    }

    // By keys, of members of one fold.
    bool isLess(std::uintptr_t a, std::uintptr_t b) const {
        return !isPlain() && vtable_->keyLessThan(nullptr, object(b), object(a));
    }

    bool isEqual(std::uintptr_t a, std::uintptr_t b) const {
        return !isLess(a, b) && !isLess(b, a);
    }

private:
    const HashMapVTableGeneric* vtable_ = nullptr;
};

} // namespace Vel::detail
