// Compare.h - equality and order of values, field by field in declaration order.
//
// Derived: != is not ==; a <= b is not b < a; a > b is not a <= b; a >= b is not a < b: all six are
//          consistent with a type's own == and <.
// Test: Value_test.cpp.
#pragma once

#include <Vel/value/Fields.h>

namespace Vel {

template <class T>
constexpr bool fieldsEqual(const T& a, const T& b) {
    return allFields<T>([&]<std::size_t i>() {
        constexpr auto field = attributeAt<T, i>.access;
        return a.*field == b.*field;
    });
}

// The first field that differs decides.
template <class T>
constexpr bool fieldsLess(const T& a, const T& b) {
    bool less = false;
    (void)allFields<T>([&]<std::size_t i>() {
        constexpr auto field = attributeAt<T, i>.access;
        less = a.*field < b.*field;
        return !less && a.*field == b.*field;
    });
    return less;
}

} // namespace Vel
