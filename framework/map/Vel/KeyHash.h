// KeyHash.h - the 32-bit hash of a map's key: the key is folded into a word, and the word's bits
// are reversed.
//
// Fold:   an integer of up to 32 bits or an enumerator folds to its value, zero-extended at its own
//         width; a 64-bit integer to its low word XOR its high word; a class type to what its
//         hash() gives.
// Why:    the reversal spreads small integers over the high bits, which decide a map's order.
//         Reversing loses nothing, so work that needs no order is done on the fold.
#pragma once

#include <Vel/Integers.h>
#include <Vel/bitReverse.h>
#include <concepts>
#include <type_traits>

namespace Vel {

template <class Key>
constexpr U32 keyFold(const Key& key) noexcept {
    if constexpr (std::is_enum_v<Key>) {
        return keyFold(static_cast<std::underlying_type_t<Key>>(key));
    } else if constexpr (std::same_as<Key, bool>) {
        return key ? 1 : 0;
    } else if constexpr (std::integral<Key>) {
        static_assert(sizeof(Key) <= 8);
        const auto value = static_cast<std::make_unsigned_t<Key>>(key);
        if constexpr (sizeof(Key) == 8)
            return static_cast<U32>(value) ^ static_cast<U32>(value >> 32);
        else
            return value;
    } else {
        return key.hash();
    }
}

template <class Key>
constexpr U32 keyHash(const Key& key) noexcept {
    return bitReverse(keyFold(key));
}

// 64-bit keys: two of one fold that share a word share the other, too, so the high word alone
// orders them.
template <class Key>
inline constexpr bool hasKeyRank = (std::is_enum_v<Key> || std::integral<Key>)&&sizeof(Key) == 8;

// Of keys of one fold: differs where they do, and ascends with them.
template <class Key>
constexpr U32 keyRank(const Key& key) noexcept requires hasKeyRank<Key> {
    if constexpr (std::is_enum_v<Key>) {
        return keyRank(static_cast<std::underlying_type_t<Key>>(key));
    } else {
        constexpr U32 signBit = std::is_signed_v<Key> ? 0x80000000 : 0;
        return static_cast<U32>(static_cast<U64>(key) >> 32) ^ signBit;
    }
}

// Keys that differ whenever their folds do, and only then.
template <class Key>
inline constexpr bool foldIsKey = (std::is_enum_v<Key> || std::integral<Key>)&&sizeof(Key) <=
                                  sizeof(U32);

// Whether fold `a` hashes below fold `b`: after the reversal the lowest bit in which they differ
// decides.
constexpr bool hashesBelow(U32 a, U32 b) noexcept {
    const U32 differ = a ^ b;
    return (b & (differ & (0 - differ))) != 0;
}

} // namespace Vel
