#include <Vel/RangeException.h>

#include <utility>

namespace Vel {

namespace {
Exception::IdBitArray withRange(Exception::IdBitArray ids) noexcept {
    ids.add(Exception::Id::range);
    return ids;
}
} // namespace

RangeException::RangeException(String8 text, IdBitArray ids)
    : Exception(std::move(text), withRange(ids)) {}

RangeException::~RangeException() = default;

void throwRangeException(const String8& text) { throw RangeException(text); }

void throwRangeException(const char* text) { throw RangeException(String8(text)); }

} // namespace Vel
