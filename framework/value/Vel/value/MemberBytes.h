// MemberBytes.h - which bytes of a value are its members', and which only stand between them.
#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

namespace Vel::detail {

template <class T>
struct BytesOf {
    unsigned char at[sizeof(T)];
};

// A constant, unless the byte belongs to no member: that one has no value.
template <class T, std::size_t byte>
constexpr bool readByte() {
    static_cast<void>(__builtin_bit_cast(BytesOf<T>, T()).at[byte] == 0);
    return true;
}

template <class T, std::size_t byte>
concept MemberByte = requires {
    typename std::bool_constant<readByte<T, byte>()>;
};

template <class T, std::size_t... byte>
constexpr std::size_t countMemberBytes(std::index_sequence<byte...> /*bytes*/) {
    return (0 + ... + (MemberByte<T, byte> ? 1 : 0));
}

// How many bytes of a T are its members'; 0 if the compiler cannot tell: it cannot make a T.
template <class T>
inline constexpr std::size_t memberBytes = [] {
    if constexpr (std::is_void_v<T>)
        return std::size_t{0};
    else if constexpr (std::is_scalar_v<T>)
        return sizeof(T);
    else if constexpr (std::is_trivially_copyable_v<T> && std::is_default_constructible_v<T>)
        return countMemberBytes<T>(std::make_index_sequence<sizeof(T)>());
    else
        return std::size_t{0};
}();

template <class T>
inline constexpr std::size_t sizeOf = sizeof(T);
template <>
inline constexpr std::size_t sizeOf<void> = 0;

// At least so many bytes of a T belong to a member that is none of the fields. A field that is void
// counts for nothing.
template <class T, class... Fields>
constexpr std::size_t bytesBeside() {
    if constexpr (std::is_empty_v<T> || (std::size_t{0} + ... + sizeOf<Fields>) == sizeof(T)) {
        return 0;
    } else {
        constexpr bool isExact =
            ((memberBytes<T> != 0) && ... && (std::is_void_v<Fields> || memberBytes<Fields> != 0));
        // Otherwise with the space that a field may need before it or behind it.
        constexpr std::size_t unit = alignof(T);
        constexpr std::size_t all = isExact ? memberBytes<T> : sizeof(T);
        constexpr std::size_t most =
            (std::size_t{0} + ... +
             (isExact ? memberBytes<Fields> : (sizeOf<Fields> + unit - 1) / unit * unit));
        return all > most ? all - most : 0;
    }
}

} // namespace Vel::detail
