// strepToValue.h - a whole text as one value, of a value type or an enumeration.
//
//     Net::DeviceId device;
//     Vel::strepToValue(Vel::String8("7"), &device);
//
// Errors: RangeException: what the type's own reader throws, or "junk at column %lld deserializing
//         %s" if something is left. What throws leaves *value alone. A text that names a collection
//         is a fatal assertion: docs/text-form.md.
#pragma once

#include <Vel/String8.h>
#include <Vel/detail/readValue.h>
#include <Vel/needString.h>
#include <utility>

namespace Vel {

template <class T>
void strepToValue(const String8& text, T* value) {
    String8::IteratorConst pos = text.begin();
    T read{};
    detail::readValue(pos, text.end(), &read);
    needEnd(pos, text.end(), text);
    *value = std::move(read);
}

} // namespace Vel
