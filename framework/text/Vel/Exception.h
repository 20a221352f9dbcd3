// Exception.h - what the framework throws: a text, a set of exception ids, and whether somebody
// expected it.
//
// Text:    what() and text() give the same words.
// Copying: shares the text; never throws.
#pragma once

#include <Vel/Export.h>
#include <Vel/Integers.h>
#include <Vel/String8.h>
#include <exception>

namespace Vel {

class VEL_API Exception : public std::exception {
public:
    // The kinds of failure that code can announce with Expect. An exception may be of several.
    enum class Id : U8 {
        range,        // a number, name or text outside what a type admits
        type,         // an argument of another type than the one asked for
        constant,     // a write through something constant
        attribute,    // an attribute that does not exist or does not take an index
        operation,    // an operation that the attribute does not have
        connection,   // a log or a connection that ended early or holds a malformed record
        notification, // thrown out of a notifiee's handler
    };

    // A set of ids. One word, copied freely.
    class IdBitArray {
    public:
        constexpr IdBitArray() noexcept = default;

        constexpr IdBitArray(Id id) noexcept { add(id); }

        constexpr void add(Id id) noexcept { bits_ |= bit(id); }

        constexpr bool has(Id id) const noexcept { return (bits_ & bit(id)) != 0; }

        constexpr bool hasAnyOf(IdBitArray other) const noexcept {
            return (bits_ & other.bits_) != 0;
        }

        constexpr bool operator==(const IdBitArray&) const noexcept = default;

    private:
        static constexpr U32 bit(Id id) noexcept { return U32{1} << static_cast<unsigned>(id); }

        U32 bits_ = 0;
    };

    // `expected` is set when an Expect of the throwing thread names one of `ids`.
    Exception(String8 text, IdBitArray ids);
    Exception(const Exception&) noexcept = default;
    Exception& operator=(const Exception&) noexcept = default;
    ~Exception() override;

    const char* what() const noexcept override { return text_.charPtr(); }

    const String8& text() const noexcept { return text_; }

    // Other words for the same failure: what is caught can be thrown on with more said.
    void textIs(const String8& text) noexcept { text_ = text; }

    IdBitArray ids() const noexcept { return ids_; }

    // Whether the block that threw had declared, by Expect, that this may happen.
    bool expected() const noexcept { return expected_; }

private:
    String8 text_;
    IdBitArray ids_;
    bool expected_;
};

} // namespace Vel
