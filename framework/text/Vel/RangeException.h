// RangeException.h - thrown for a number or name outside what a type admits, and for every text
// that cannot be read.
#pragma once

#include <Vel/Exception.h>

namespace Vel {

class VEL_API RangeException : public Exception {
public:
    // Id::range is always among its ids.
    RangeException(String8 text, IdBitArray ids);

    explicit RangeException(String8 text) : RangeException(std::move(text), IdBitArray()) {}

    ~RangeException() override;
};

[[noreturn]] VEL_API void throwRangeException(const String8& text);
[[noreturn]] VEL_API void throwRangeException(const char* text);

} // namespace Vel
