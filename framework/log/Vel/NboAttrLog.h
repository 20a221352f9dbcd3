// NboAttrLog.h - attribute log: values written field by field, in network byte order, as records.
//
//     Ptr<NboAttrLog::Out> out = new NboAttrLog::Out(connection);
//     out << value;                     // one record
//     out->flush();
//
//     NboAttrLog::In in(connection);
//     while (!in.atEnd()) values.push_back(Value(&in, StreamBogon()));
//
// Bytes:   a record is the length of its payload (U32), then the payload. The payload is the fields
//          in the order in which they were written, without types, names or padding.
//          docs/attribute-log.md.
// Records: a value opens a record around its fields; values within the value open it once more and
//          so write into the same record. The length is what lets a reader find the end of a
//          collection that stands last in a record, and the next record after a malformed one.
// Errors:  Exception with Id::connection: what the connection throws, a log that ends inside a
//          record, a record that holds more or less than its value. Nothing is read behind the end
//          of a record. Using the fields' functions while no record is open is an assertion.
// Cost:    a field is a compare, a byte swap and a store; fields that together have a length known
//          beforehand share one compare (Fixed). The connection is called once per 64 KiB.
// Threads: one log belongs to one thread.
#pragma once

#include <Vel/ByteConnection.h>
#include <Vel/Export.h>
#include <Vel/Integers.h>
#include <Vel/Ptr.h>
#include <Vel/PtrInterface.h>
#include <Vel/String8.h>
#include <Vel/networkByteOrder.h>
#include <cstddef>
#include <span>
#include <utility>

namespace Vel {

class NboAttrLog {
public:
    class In;
    class Out;

    NboAttrLog() = delete; // the name that holds the two ends together

    // Bytes of a record's length, and the longest payload that is written or believed.
    static constexpr std::size_t lengthSize = 4;
    static constexpr std::size_t payloadMax = std::size_t{16} << 20;

    // The most bytes that a Fixed takes at once.
    static constexpr std::size_t fixedMax = 4096;
};

// NboAttrLog::Out - the writing end.
//
// Buffer: whole records are gathered and handed on when 64 KiB of them are there, by flush(), and
//         by the destructor. The destructor cannot report that the connection failed: flush() first
//         where that matters.
class VEL_API NboAttrLog::Out : public PtrInterface {
public:
    class Record;
    class Fixed;

    explicit Out(const Ptr<ByteConnection::Out>& connection);
    ~Out() override;
    Out(const Out&) = delete;
    Out& operator=(const Out&) = delete;

    // One field each. A bool is a byte, 0 or 1; a negative number is its two's complement.
    void writeU8(U8 value) { write(value); }

    void writeU16(U16 value) { write(value); }

    void writeU32(U32 value) { write(value); }

    void writeU64(U64 value) { write(value); }

    void writeS32(S32 value) { write(static_cast<U32>(value)); }

    void writeS64(S64 value) { write(static_cast<U64>(value)); }

    void writeBool(bool value) { write(static_cast<U8>(value)); }

    // The number of its bytes (U32), then the bytes.
    void writeString8(const String8& value);
    // The bytes alone.
    void writeBytes(std::span<const U8> bytes);

    // Hands the records on to the connection. Not while a record is open. If the connection throws,
    // they stay here.
    void flush();

private:
    template <class T>
    void write(T value) {
        if (limit_ - pos_ < static_cast<std::ptrdiff_t>(sizeof value)) [[unlikely]]
            makeRoom(sizeof value);
        storeNetworkOrdered(pos_, value);
        pos_ += sizeof value;
    }

    // Starts a record: leaves room for its length. `expected` bytes of fields will come, or more.
    void begin(std::size_t expected) {
        if (flushMark_ - pos_ <= static_cast<std::ptrdiff_t>(expected)) [[unlikely]]
            flush();
        recordOffset_ = offset();
        pos_ += lengthSize;
        limit_ = end_;
        takeMark_ = pos_;
    }

    // Ends the record and states its length.
    void end() {
        const std::size_t length = offset() - recordOffset_ - lengthSize;
        if (length > payloadMax) [[unlikely]]
            tooLong();
        storeNetworkOrdered(buffer_ + recordOffset_, static_cast<U32>(length));
        closed();
    }

    // No record is open any more.
    void closed() noexcept {
        limit_ = pos_;
        takeMark_ = flushMark_;
    }

    // Room for a record of `size` bytes, its length stated; the caller writes them before it does
    // anything else. Null, and nothing taken, while a record is open and where there is no room.
    U8* take(std::size_t size) noexcept {
        U8* const start = pos_;
        if (takeMark_ - start <= static_cast<std::ptrdiff_t>(size)) [[unlikely]]
            return nullptr;
        // limit_ now lies before pos_. While no record is open that means the same as lying at it:
        // no field has room.
        pos_ = start + lengthSize + size;
        storeNetworkOrdered(start, static_cast<U32>(size));
        return start + lengthSize;
    }

    std::size_t offset() const noexcept { return static_cast<std::size_t>(pos_ - buffer_); }

    // Provides `size` bytes between pos_ and limit_ or throws. No record open is an assertion.
    void makeRoom(std::size_t size);
    void capacityIs(std::size_t capacity);
    [[noreturn]] static void tooLong();

    Ptr<ByteConnection::Out> connection_;
    // Owned. Raw, because <memory> is a tenth of what the header of each value costs to compile.
    U8* buffer_ = nullptr;
    U8* pos_ = nullptr;       // where the next field goes
    U8* limit_ = nullptr;     // how far fields may go: not behind pos_ while no record is open
    U8* end_ = nullptr;       // of the buffer
    U8* flushMark_ = nullptr; // a record does not begin here or behind it
    U8* takeMark_ = nullptr;  // the same while no record is open; then one does not begin at all
    std::size_t recordOffset_ = 0;
    U32 depth_ = 0; // records open within each other
};

// A value between its first and its last field. Only the outermost of several makes a record.
//
//     Ptr<NboAttrLog::Out> const& operator<<(Ptr<NboAttrLog::Out> const& out, Range value) {
//         NboAttrLog::Out::Record record(*out);
//         out->writeU16(value.first);
//         out->writeU16(value.last);
//         record.close();
//         return out;
//     }
//
// What is not closed, because something threw, leaves no byte in the log.
class NboAttrLog::Out::Record {
public:
    // Where `expected` bytes of fields do not fit behind the records that wait, these are handed on
    // first.
    explicit Record(Out& out, std::size_t expected = 0) : out_(out) {
        if (out.depth_ == 0) out.begin(expected);
        ++out.depth_;
        start_ = out.offset();
    }

    ~Record() {
        if (closed_) return;
        out_.pos_ = out_.buffer_ + start_;
        if (--out_.depth_ != 0) return;
        out_.pos_ -= lengthSize;
        out_.closed();
    }

    Record(const Record&) = delete;
    Record& operator=(const Record&) = delete;

    // Once, after the last field. Throws, as if nothing had been written, when the payload is
    // longer than payloadMax.
    void close() {
        if (out_.depth_ == 1) out_.end();
        --out_.depth_;
        closed_ = true;
    }

private:
    Out& out_;
    std::size_t start_; // offset of the first field
    bool closed_ = false;
};

// The fields of a value that has the same number of bytes always, at most fixedMax: their room is
// checked once, and their length is stated before the first of them.
//
//     if (NboAttrLog::Out::Fixed fields(*out, 2 * sizeof(U16)); fields) {
//         fields.writeU16(value.first);
//         fields.writeU16(value.last);
//     } else {
//         NboAttrLog::Out::Record record(*out, 2 * sizeof(U16));
//         ...
class NboAttrLog::Out::Fixed {
public:
    Fixed(Out& out, std::size_t size) noexcept : at_(out.take(size)) {}

    // Whether there is a record of its own for them: the caller writes `size` bytes before it uses
    // the log again. Otherwise nothing has happened.
    explicit operator bool() const noexcept { return at_ != nullptr; }

    void writeU8(U8 value) noexcept { write(value); }

    void writeU16(U16 value) noexcept { write(value); }

    void writeU32(U32 value) noexcept { write(value); }

    void writeU64(U64 value) noexcept { write(value); }

    void writeS32(S32 value) noexcept { write(static_cast<U32>(value)); }

    void writeBool(bool value) noexcept { write(static_cast<U8>(value)); }

private:
    template <class T>
    void write(T value) noexcept {
        storeNetworkOrdered(at_, value);
        at_ += sizeof value;
    }

    U8* at_;
};

// NboAttrLog::In - the reading end.
//
// Resuming: a malformed record is left behind as a whole: the next value comes from the next
//           record. A log that ends inside a record can be read on when its connection has grown.
class VEL_API NboAttrLog::In : public PtrInterface {
public:
    class Record;
    class Fixed;

    explicit In(const Ptr<ByteConnection::In>& connection);
    ~In() override;
    In(const In&) = delete;
    In& operator=(const In&) = delete;

    // Whether the connection has no byte more, after a whole record. May wait for the connection.
    // Not while a record is open.
    bool atEnd() {
        if (depth_ == 0 && pos_ != end_) [[likely]]
            return false;
        return nothingLeft();
    }

    // One field each, as the writer of the same name wrote it. A bool that is neither 0 nor 1 is
    // malformed.
    U8 nextU8() { return next<U8>(); }

    U16 nextU16() { return next<U16>(); }

    U32 nextU32() { return next<U32>(); }

    U64 nextU64() { return next<U64>(); }

    S32 nextS32() { return static_cast<S32>(next<U32>()); }

    S64 nextS64() { return static_cast<S64>(next<U64>()); }

    bool nextBool() {
        const U8 byte = next<U8>();
        if (byte > 1) [[unlikely]]
            noTruthValue(byte);
        return byte != 0;
    }

    String8 nextString8();
    // Borrowed until the record is left.
    std::span<const U8> nextBytes(std::size_t size);

    // Bytes of the open record that no field has taken yet; 0 while no record is open. A collection
    // that stands last in its record learns from it how many entries there are.
    std::size_t remaining() const noexcept {
        return limit_ > pos_ ? static_cast<std::size_t>(limit_ - pos_) : 0;
    }

    // For types: the open record is not what they write. `reason` completes the sentence
    //     attribute log record at byte 36 is malformed: <reason>
    // where byte 36 is the place of the record's length in the log.
    [[noreturn]] void malformed(const String8& reason) const;

private:
    template <class T>
    T next() {
        if (limit_ - pos_ < static_cast<std::ptrdiff_t>(sizeof(T))) [[unlikely]]
            tooShort(sizeof(T));
        const T value = loadNetworkOrdered<T>(pos_);
        pos_ += sizeof(T);
        return value;
    }

    // The fields of the next record, which has `size` bytes of them. Null, and nothing taken, while
    // a record is open, and unless the whole record is in the buffer and its length is right.
    const U8* take(std::size_t size) noexcept {
        const U8* const start = pos_;
        if (depth_ != 0 || static_cast<std::size_t>(end_ - start) < lengthSize + size ||
            loadNetworkOrdered<U32>(start) != size) [[unlikely]]
            return nullptr;
        record_ = start;
        // limit_ now lies before pos_. While no record is open that means the same as lying at it:
        // no field is left.
        pos_ = start + lengthSize + size;
        return start + lengthSize;
    }

    bool nothingLeft();

    std::size_t buffered() const noexcept { return static_cast<std::size_t>(end_ - pos_); }

    // Opens the next record: pos_ and limit_ enclose its payload. Leaves everything as it is when
    // the record cannot be had.
    void begin() {
        if (buffered() < lengthSize) [[unlikely]]
            fetch(lengthSize);
        const std::size_t length = loadNetworkOrdered<U32>(pos_);
        if (buffered() - lengthSize < length) [[unlikely]]
            fetch(lengthSize + length);
        record_ = pos_;
        pos_ += lengthSize;
        limit_ = pos_ + length;
    }

    // Leaves the record, wherever in it the fields stopped.
    void end() noexcept { pos_ = limit_; }

    // Provides the first `size` bytes of the next record from pos_ on, or throws.
    void fetch(std::size_t size);
    // Reads once from the connection, behind what is buffered, on the way to `wanted` bytes. Says
    // whether anything came.
    bool readMore(std::size_t wanted);
    // Where in the log a byte of the buffer stands.
    U64 place(const U8* byte) const noexcept;
    [[noreturn]] void tooShort(std::size_t wanted) const;
    [[noreturn]] void noTruthValue(U8 byte) const;
    [[noreturn]] void leftOver() const;

    Ptr<ByteConnection::In> connection_;
    U8* buffer_; // owned
    std::size_t capacity_;
    const U8* pos_;       // the next field, or the next record's length
    const U8* limit_;     // end of the open record; not behind pos_ while none is open
    const U8* end_;       // of what is buffered
    const U8* record_;    // length of the open record
    U64 bufferPlace_ = 0; // bytes of the log that came before the buffer
    U32 depth_ = 0;       // records open within each other
};

// A value between its first and its last field. Only the outermost of several is a record.
//
//     Range::Range(NboAttrLog::In* in, StreamBogon) {
//         NboAttrLog::In::Record record(*in);
//         first = in->nextU16();
//         last = in->nextU16();
//         record.close();
//     }
//
// What is not closed, because something threw, leaves the record behind as a whole.
class NboAttrLog::In::Record {
public:
    explicit Record(In& in) : in_(in) {
        if (in.depth_ == 0) in.begin();
        ++in.depth_;
    }

    ~Record() {
        if (closed_) return;
        if (--in_.depth_ == 0) in_.end();
    }

    Record(const Record&) = delete;
    Record& operator=(const Record&) = delete;

    // Once, after the last field. Bytes of the record that are left over make it malformed.
    void close() {
        if (in_.depth_ == 1 && in_.remaining() != 0) [[unlikely]]
            in_.leftOver();
        closed_ = true;
        --in_.depth_;
    }

private:
    In& in_;
    bool closed_ = false;
};

// The fields of a value that has the same number of bytes always: their room is checked once. When
// it is not there, the record is read as any other, which says what is wrong with it.
class NboAttrLog::In::Fixed {
public:
    Fixed(In& in, std::size_t size) noexcept : in_(in), at_(in.take(size)) {}

    // Whether the fields are there: the caller reads `size` bytes of them. Otherwise nothing is
    // taken.
    explicit operator bool() const noexcept { return at_ != nullptr; }

    U8 nextU8() noexcept { return next<U8>(); }

    U16 nextU16() noexcept { return next<U16>(); }

    U32 nextU32() noexcept { return next<U32>(); }

    U64 nextU64() noexcept { return next<U64>(); }

    S32 nextS32() noexcept { return static_cast<S32>(next<U32>()); }

    bool nextBool() {
        const U8 byte = next<U8>();
        if (byte > 1) [[unlikely]]
            in_.noTruthValue(byte);
        return byte != 0;
    }

private:
    template <class T>
    T next() noexcept {
        const T value = loadNetworkOrdered<T>(at_);
        at_ += sizeof(T);
        return value;
    }

    In& in_;
    const U8* at_;
};

} // namespace Vel
