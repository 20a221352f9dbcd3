// HashOf.h - the hash of a value, as its schema says. 32 bits, the same in every process and word
// size.
//
// Test: Value_test.cpp.
#pragma once

#include <Vel/byteMix.h>
#include <Vel/value/Fields.h>
#include <type_traits>

namespace Vel {

namespace detail {

// The bytes of a field, least significant first; a nested value's fields in turn.
template <class Field>
constexpr void mixField(ByteMix& mix, const Field& field) {
    if constexpr (std::is_same_v<Field, bool>) {
        mix.add(static_cast<U8>(field));
    } else if constexpr (std::is_enum_v<Field>) {
        mix.add(static_cast<U32>(field));
    } else if constexpr (std::is_integral_v<Field>) {
        mix.add(static_cast<std::make_unsigned_t<Field>>(field));
    } else {
        forEachField<Field>(
            [&]<std::size_t i>() { mixField(mix, field.*(attributeAt<Field, i>.access)); });
    }
}

} // namespace detail

template <class T>
constexpr U32 hashByFields(const T& value) {
    if constexpr (schemaOf<T>.hash == Hash::byteMix) {
        ByteMix mix;
        detail::mixField(mix, value);
        return mix.value();
    } else {
        static_assert(schemaOf<T>.hash == Hash::plainValue || schemaOf<T>.hash == Hash::xorFold);
        const U64 field = value.*(attributeAt<T, scalarField<T>>.access);
        return static_cast<U32>(field) ^ static_cast<U32>(field >> 32);
    }
}

} // namespace Vel
