// Name.h - the name of a type, an attribute or an argument.
//
// Lifetime: borrowed: it views a string literal or other characters that live as long as the
//           process. Not NUL-terminated.
// Test: VelType_test.cpp.
#pragma once

#include <Vel/Integers.h>
#include <bit>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace Vel {

using Name = std::string_view;

// NameKey - a name as a table of a type's own names looks it up: both ends, eight characters each,
// and the length. Names of up to 16 characters are their key; longer ones are compared between the
// ends, too.
class NameKey {
public:
    constexpr NameKey() noexcept = default;

    explicit NameKey(Name name) noexcept : chars_(name.data()), size_(name.size()) {
        if (size_ >= sizeof(U64)) {
            head_ = word<U64>(0);
            tail_ = word<U64>(size_ - sizeof(U64));
        } else if (size_ >= sizeof(U32)) {
            head_ = word<U32>(0);
            tail_ = word<U32>(size_ - sizeof(U32));
        } else if (size_ != 0) { // the first, the middle and the last: all that there are
            head_ = static_cast<U8>(chars_[0]);
            tail_ = static_cast<U32>(static_cast<U8>(chars_[size_ / 2])) << 8 |
                    static_cast<U8>(chars_[size_ - 1]);
        }
    }

    // The high bits are the best. Not kept anywhere and not the same in every build.
    U32 hash() const noexcept {
        const U64 ends = head_ ^ std::rotl(tail_, 29);
        return (static_cast<U32>(ends) ^ static_cast<U32>(ends >> 32) ^ static_cast<U32>(size_)) *
               0x9e3779b1U;
    }

    bool operator==(const NameKey& other) const noexcept {
        if (size_ != other.size_ || head_ != other.head_ || tail_ != other.tail_) return false;
        for (std::size_t at = sizeof(U64); at + sizeof(U64) < size_; at += sizeof(U64))
            if (word<U64>(at) != other.word<U64>(at)) return false;
        return true;
    }

private:
    template <class Word>
    Word word(std::size_t at) const noexcept {
        Word bytes;
        std::memcpy(&bytes, chars_ + at, sizeof bytes);
        return bytes;
    }

    const char* chars_ = nullptr; // borrowed, as the name
    std::size_t size_ = 0;
    U64 head_ = 0;
    U64 tail_ = 0;
};

} // namespace Vel
