// String8.h - 8-bit string whose data is shared between copies and counts its own references.
//
// Owns:      one reference to its data. The empty string shares one data object, nullStringData_,
//            which is neither counted nor freed.
// Layout:    the data's first word is its count (masked with 0x5fffffff, as in PtrInterface); the
//            characters follow the header in the same allocation and end with a NUL that the length
//            does not count.
// Copying:   one increment. A string is written only while nobody shares its data: appending copies
//            shared data first.
// Memory:    data of up to 512 bytes come from the per-thread lists of detail/ObjectHeap.h, as
//            objects do.
// Cost:      appending is amortised O(1) a character: capacity doubles.
// Threads:   as for Ptr: one String8 belongs to one thread; data may be shared between threads only
//            while VFPtrInterface::enableThreadSafePointers is set.
// Iterators: IteratorConst stays valid while any string that shares the data lives and none
//            appends.
#pragma once

#include <Vel/Export.h>
#include <Vel/Integers.h>
#include <Vel/VFPtrInterface.h>
#include <atomic>
#include <compare>
#include <cstddef>
#include <cstring>
#include <iosfwd>
#include <iterator>
#include <new>
#include <string_view> // and std::hash
#include <utility>

namespace Vel {

template <class Char>
class VEL_API StringN {
    static_assert(sizeof(Char) == 1, "one byte a character");

public:
    class Data;
    class IteratorConst;

    // The empty string's data. Nobody counts its references, so that threads may share it in either
    // counting mode.
    static Data nullStringData_;

    StringN() noexcept : data_(&nullStringData_) {}

    // Copies the characters up to the NUL. `text` is not null.
    StringN(const char* text) : StringN(std::string_view(text)) {}

    StringN(std::string_view text) : data_(filled(text, text.size())) {}

    StringN(const StringN& other) noexcept : data_(other.data_) { data_->referencesInc(); }

    StringN(StringN&& other) noexcept : StringN() { swap(other); }

    ~StringN() { data_->referencesDec(); }

    StringN& operator=(const StringN& other) noexcept {
        StringN copy(other);
        swap(copy);
        return *this;
    }

    StringN& operator=(StringN&& other) noexcept {
        swap(other);
        return *this;
    }

    // A string of `length` characters that the caller writes at `*place`, before it copies or
    // changes the string; until then they are not initialised.
    static StringN uninitialised(std::size_t length, char** place) {
        StringN text(filled({}, length));
        if (length != 0) text.data_->lengthIs(length);
        *place = text.data_->chars();
        return text;
    }

    // A string of at most `most` characters, more than 0: `write` is given the place of the first
    // and returns where it stopped. It has room for `most`.
    template <class Write>
    static StringN written(std::size_t most, Write write) {
        StringN text(Data::make(most));
        char* const chars = text.data_->chars();
        text.data_->lengthIs(static_cast<std::size_t>(write(chars) - chars));
        return text;
    }

    // A string of data that live as long as the process and are never counted, so that copies cost
    // nothing and threads may share them in either counting mode: for names that were known when
    // the program was written, see value/EnumNames.h.
    static StringN ofEternal(const Data* data) noexcept {
        asm("" : "+r"(data)); // the characters go on behind the object, which GCC would not believe
        return StringN(const_cast<Data*>(data));
    }

    // Makes the string `length` characters of `text`, which may be its own, with room for
    // `capacity` before the next growth. `length` <= `capacity`; `text` may be null if `length` is
    // 0.
    void init(const char* text, std::size_t length, std::size_t capacity) {
        StringN fresh(filled({text, length}, capacity));
        swap(fresh);
    }

    // The characters, followed by a NUL; borrowed until the string changes or goes.
    const char* charPtr() const noexcept { return data_->chars(); }

    std::size_t length() const noexcept { return data_->length(); }

    bool empty() const noexcept { return length() == 0; }

    std::string_view view() const noexcept { return {charPtr(), length()}; }

    operator std::string_view() const noexcept { return view(); }

    Char operator[](std::size_t index) const noexcept {
        return static_cast<Char>(charPtr()[index]);
    }

    StringN& operator+=(const StringN& other) { return append(other.view()); }

    StringN& operator+=(const char* text) { return append(text); }

    StringN& append(std::string_view text);
    // Room for `capacity` characters in all before the next growth; the text stays as it is.
    void reserve(std::size_t capacity);

    friend StringN operator+(const StringN& a, const StringN& b) {
        return joined(a.view(), b.view());
    }

    friend StringN operator+(const StringN& a, const char* b) { return joined(a.view(), b); }

    friend StringN operator+(const char* a, const StringN& b) { return joined(a, b.view()); }

    // A sum under construction grows in place.
    friend StringN operator+(StringN&& a, const StringN& b) { return std::move(a += b); }

    friend StringN operator+(StringN&& a, const char* b) { return std::move(a += b); }

    friend bool operator==(const StringN& a, const StringN& b) noexcept {
        return a.data_ == b.data_ || a.view() == b.view();
    }

    friend bool operator==(const StringN& a, const char* b) noexcept { return a.view() == b; }

    friend bool operator==(const StringN& a, std::string_view b) noexcept { return a.view() == b; }

    // By bytes, as unsigned numbers.
    friend std::strong_ordering operator<=>(const StringN& a, const StringN& b) noexcept {
        return a.view() <=> b.view();
    }

    // One-at-a-time mix of the bytes; the same in every process and word size.
    U32 hash() const noexcept;

    IteratorConst begin() const noexcept { return IteratorConst(charPtr(), charPtr()); }

    IteratorConst end() const noexcept { return IteratorConst(charPtr(), charPtr() + length()); }

    // How many strings share the data, 0 for the empty string's. For tests and tools.
    U32 references() const noexcept { return data_->references(); }

    // How many characters fit before the next growth, those that are there included.
    std::size_t capacity() const noexcept { return data_->capacity(); }

    void swap(StringN& other) noexcept { std::swap(data_, other.data_); }

private:
    explicit StringN(Data* adopted) noexcept : data_(adopted) {}

    // New data that holds `text` and has room for `capacity` characters; the null data if that is
    // none.
    static Data* filled(std::string_view text, std::size_t capacity);
    static StringN joined(std::string_view a, std::string_view b);

    Data* data_;
};

// The shared data: count, length, capacity, then the characters.
template <class Char>
class VEL_API StringN<Char>::Data {
public:
    static constexpr U32 referencesMask = 0x5fffffffU;
    static constexpr std::size_t capacityMax = 0x7fffffff;
    // What a string that grows gets at least: with it, the data fill two 16-byte units.
    static constexpr std::size_t capacityGrown = 19;

    // How many characters stand within the object; more follow behind it.
    static constexpr std::size_t charsWithin = 4;

    // `text` gives the characters within, as far as it goes.
    // Always inline: GCC 12 emits no constexpr constructor for the explicit instantiation below.
    [[gnu::always_inline]] constexpr Data(U32 references, U32 length, U32 capacity,
                                          std::string_view text = {}) noexcept
        : references_(references), length_(length), capacity_(capacity) {
        for (std::size_t i = 0; i < charsWithin && i < text.size(); ++i) chars_[i] = text[i];
    }

    Data(const Data&) = delete;
    Data& operator=(const Data&) = delete;

    // New data with room for `capacity` characters and the NUL, empty, with count 1.
    static Data* make(std::size_t capacity);

    void referencesInc() noexcept {
        if (isEternal()) return;
        if (VFPtrInterface::enableThreadSafePointers) [[unlikely]]
            count().fetch_add(1);
        else
            ++references_;
    }

    // Plain delete gives the memory back to where make() has it from.
    static void operator delete(Data* data, std::destroying_delete_t) noexcept;

    // Frees the data with plain delete when the count reaches 0.
    void referencesDec() noexcept {
        if (isEternal()) return;
        const U32 left =
            VFPtrInterface::enableThreadSafePointers ? count().fetch_sub(1) - 1 : --references_;
        if ((left & referencesMask) == 0) {
            // By another way, or GCC warns of freeing nullStringData_ wherever it sees that a
            // string may hold it: of its capacity, which forbids that, it knows nothing.
            Data* data = this;
            asm("" : "+r"(data));
            delete data;
        }
    }

    // Nobody counts or frees the data, and nobody writes it: it has no room.
    bool isEternal() const noexcept { return capacity_ == 0; }

    // An answer of 1 comes after everything that former sharers in other threads read from the
    // data: the only owner left may write it.
    U32 references() noexcept { return count().load(std::memory_order_acquire) & referencesMask; }

    std::size_t length() const noexcept { return length_; }

    std::size_t capacity() const noexcept { return capacity_; }

    // From the start of the allocation: the characters go on past the member that says where.
    char* chars() noexcept { return reinterpret_cast<char*>(this) + offsetof(Data, chars_); }

    const char* chars() const noexcept {
        return reinterpret_cast<const char*>(this) + offsetof(Data, chars_);
    }

    void lengthIs(std::size_t length) noexcept {
        length_ = static_cast<U32>(length);
        chars()[length] = '\0';
    }

private:
    static std::size_t bytesOf(std::size_t capacity) noexcept {
        return offsetof(Data, chars_) +
               (capacity < charsWithin ? charsWithin : capacity + 1); // with the NUL
    }

    std::atomic_ref<U32> count() noexcept { return std::atomic_ref<U32>(references_); }

    U32 references_;
    U32 length_;
    U32 capacity_;
    char chars_[charsWithin] = {}; // as many as the allocation holds; always at least the NUL
};

// IteratorConst - a read cursor on a string; every parser takes one and leaves it behind what it
// consumed. It knows where its text begins, so that errors can name a column.
template <class Char>
class StringN<Char>::IteratorConst {
public:
    using iterator_concept = std::random_access_iterator_tag;
    using iterator_category = std::random_access_iterator_tag;
    using value_type = Char;
    using difference_type = std::ptrdiff_t;
    using pointer = const Char*;
    using reference = Char;

    constexpr IteratorConst() noexcept = default;

    constexpr IteratorConst(const char* textBegin, const char* position) noexcept
        : begin_(textBegin), pos_(position) {}

    // Characters between the start of the text and the cursor.
    constexpr S64 column() const noexcept { return pos_ - begin_; }

    constexpr const char* charPtr() const noexcept { return pos_; }

    constexpr Char operator*() const noexcept { return static_cast<Char>(*pos_); }

    constexpr Char operator[](difference_type n) const noexcept {
        return static_cast<Char>(pos_[n]);
    }

    constexpr IteratorConst& operator++() noexcept { return *this += 1; }

    constexpr IteratorConst& operator--() noexcept { return *this += -1; }

    constexpr IteratorConst operator++(int) noexcept { return std::exchange(*this, *this + 1); }

    constexpr IteratorConst operator--(int) noexcept { return std::exchange(*this, *this - 1); }

    constexpr IteratorConst& operator+=(difference_type n) noexcept {
        pos_ += n;
        return *this;
    }

    constexpr IteratorConst& operator-=(difference_type n) noexcept { return *this += -n; }

    friend constexpr IteratorConst operator+(IteratorConst it, difference_type n) noexcept {
        return it += n;
    }

    friend constexpr IteratorConst operator+(difference_type n, IteratorConst it) noexcept {
        return it += n;
    }

    friend constexpr IteratorConst operator-(IteratorConst it, difference_type n) noexcept {
        return it -= n;
    }

    friend constexpr difference_type operator-(IteratorConst a, IteratorConst b) noexcept {
        return a.pos_ - b.pos_;
    }

    friend constexpr bool operator==(IteratorConst a, IteratorConst b) noexcept {
        return a.pos_ == b.pos_;
    }

    friend constexpr std::strong_ordering operator<=>(IteratorConst a, IteratorConst b) noexcept {
        return a.pos_ <=> b.pos_;
    }

private:
    const char* begin_ = nullptr;
    const char* pos_ = nullptr;
};

extern template class VEL_API StringN<unsigned char>;
using String8 = StringN<unsigned char>;

// Writes the characters as they are.
VEL_API std::ostream& operator<<(std::ostream& out, const String8& text);

} // namespace Vel

template <>
struct std::hash<Vel::String8> {
    std::size_t operator()(const Vel::String8& text) const noexcept { return text.hash(); }
};
