// deserializeAttr.h - reads the value of one attribute, and says which attribute when that fails.
#pragma once

#include <Vel/String8.h>
#include <Vel/detail/readValue.h>
#include <Vel/textErrors.h>
#include <string_view>

namespace Vel {

// Reads one T at the cursor and stores it: through sequenceToValue(it, end, T*), found by argument
// lookup for types of other namespaces, or else through T's parsing constructor T(it, end).
// A RangeException is thrown anew with the attribute's name; `*value` is as before then. Whatever
// else is thrown passes through.
template <class T>
void deserializeAttr(String8::IteratorConst& it, const String8::IteratorConst& end, T* value,
                     std::string_view attributeName) {
    try {
        detail::readValue(it, end, value);
    } catch (const RangeException& failure) {
        rethrowFromDeserializeAttr(failure, String8(attributeName));
    }
}

} // namespace Vel
