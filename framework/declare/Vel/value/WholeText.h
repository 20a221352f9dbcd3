// WholeText.h - a whole text as one value of any type that reflection knows, and back.
//
// Test: Builtin_test.cpp.
#pragma once

#include <Vel/RangeException.h>
#include <Vel/String8.h>
#include <Vel/format.h>
#include <Vel/sequenceToValue.h>
#include <Vel/shownName.h>
#include <Vel/textErrors.h>
#include <Vel/textReading.h>
#include <Vel/value/EnumFunctions.h>
#include <Vel/value/Parse.h>
#include <Vel/value/TypeOf.h>
#include <Vel/value/WriteStrep.h>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace Vel {

template <class T>
String8 wholeText(const T& value) {
    if constexpr (std::is_pointer_v<T>)
        return value == nullptr ? String8("None")
                                : format("0x%llx", 0ULL + reinterpret_cast<std::uintptr_t>(value));
    else
        return strepOf(value);
}

namespace detail {

// An integer that has to fit: a builtin keeps every digit or refuses.
template <class T>
T wholeInteger(const String8& text) {
    String8::IteratorConst pos = text.begin();
    const auto number = sequenceToValue(pos, text.end(), static_cast<ScalarNumber<T>*>(nullptr));
    needEnd(pos, text.end(), text);
    const T value = static_cast<T>(number);
    if (static_cast<ScalarNumber<T>>(value) != number)
        throwRangeException(shownName(text) + " is out of range for " +
                            String8(typeOf<T>()->name()));
    return value;
}

} // namespace detail

// Throws Vel::RangeException: what the type's own reader throws, or "junk at column %lld
// deserializing %s".
template <class T, CollectionText collections = CollectionText::asserted>
T valueOfWholeText(const String8& text) {
    if constexpr (std::is_pointer_v<T>) {
        if (text != String8("None")) cannotConvert(text.begin(), text.end(), typeid(T));
        return nullptr;
    } else if constexpr (DeclaredEnum<T>) {
        T value{};
        strepToValue(text, &value);
        return value;
    } else if constexpr (std::is_same_v<T, bool>) {
        String8::IteratorConst pos = text.begin();
        const bool value = sequenceToValue(pos, text.end(), static_cast<bool*>(nullptr));
        needEnd(pos, text.end(), text);
        return value;
    } else if constexpr (std::is_integral_v<T>) {
        return detail::wholeInteger<T>(text);
    } else {
        return parseWhole<T, collections>(text);
    }
}

} // namespace Vel
