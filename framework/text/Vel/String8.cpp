#include <Vel/String8.h>

#include <Vel/Assert.h>
#include <Vel/byteMix.h>
#include <algorithm>
#include <new>
#include <ostream>

namespace Vel {

template <class Char>
constinit typename StringN<Char>::Data StringN<Char>::nullStringData_{0, 0, 0};

template <class Char>
typename StringN<Char>::Data* StringN<Char>::Data::make(std::size_t capacity) {
    VEL_ASSERT(capacity <= capacityMax, capacity);
    return ::new (detail::ObjectPages::allocate(bytesOf(capacity)))
        Data(1, 0, static_cast<U32>(capacity));
}

template <class Char>
void StringN<Char>::Data::operator delete(Data* data, std::destroying_delete_t) noexcept {
    detail::ObjectPages::deallocate(data, bytesOf(data->capacity()));
}

template <class Char>
typename StringN<Char>::Data* StringN<Char>::filled(std::string_view text, std::size_t capacity) {
    VEL_ASSERT(text.size() <= capacity, text.size(), capacity);
    if (capacity == 0) return &nullStringData_;
    Data* data = Data::make(capacity);
    if (!text.empty()) std::memcpy(data->chars(), text.data(), text.size());
    data->lengthIs(text.size());
    return data;
}

template <class Char>
void StringN<Char>::reserve(std::size_t capacity) {
    if (capacity < length()) capacity = length();
    const bool shared = data_->references() != 1;
    if (!shared && data_->capacity() >= capacity) return;
    StringN roomy(filled(view(), capacity));
    swap(roomy);
}

template <class Char>
StringN<Char>& StringN<Char>::append(std::string_view text) {
    if (text.empty()) return *this;
    const std::size_t oldLength = length();
    const std::size_t newLength = oldLength + text.size();
    // `text` may lie in our own data, so that keeps a reference until the characters are copied.
    StringN old;
    if (data_->capacity() < newLength || data_->references() != 1) {
        old = *this;
        reserve(
            std::max({newLength, std::min(2 * oldLength, Data::capacityMax), Data::capacityGrown}));
    }
    std::memcpy(data_->chars() + oldLength, text.data(), text.size());
    data_->lengthIs(newLength);
    return *this;
}

template <class Char>
StringN<Char> StringN<Char>::joined(std::string_view a, std::string_view b) {
    StringN result;
    result.reserve(a.size() + b.size());
    result.append(a);
    result.append(b);
    return result;
}

template <class Char>
U32 StringN<Char>::hash() const noexcept {
    ByteMix mix;
    for (const char c : view()) mix.add(static_cast<U8>(c));
    return mix.value();
}

template class StringN<unsigned char>;

std::ostream& operator<<(std::ostream& out, const String8& text) { return out << text.view(); }

} // namespace Vel
