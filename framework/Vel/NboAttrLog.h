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
// Cost:    a field is a compare, a byte swap and a store; the connection is called once per 64 KiB.
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
#include <memory>
#include <span>
#include <type_traits>

namespace Vel {

class NboAttrLog {
public:
    class In;
    class Out;

    NboAttrLog() = delete; // the name that holds the two ends together

    // Bytes of a record's length, and the longest payload that is written or believed.
    static constexpr std::size_t lengthSize = 4;
    static constexpr std::size_t payloadMax = std::size_t{16} << 20;
};

// NboAttrLog::Out - the writing end.
//
// Buffer: whole records are gathered and handed on when 64 KiB of them are there, by flush(), and
//         by the destructor. The destructor cannot report that the connection failed: flush() first
//         where that matters.
class VEL_API NboAttrLog::Out : public PtrInterface {
public:
    class Record;

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
        if (static_cast<std::size_t>(limit_ - pos_) < sizeof value) [[unlikely]]
            makeRoom(sizeof value);
        storeNetworkOrdered(pos_, value);
        pos_ += sizeof value;
    }

    // Starts a record: leaves room for its length.
    void begin() {
        if (pos_ >= flushMark_) [[unlikely]]
            flush();
        recordOffset_ = offset();
        pos_ += lengthSize;
        limit_ = end_;
    }

    // Ends the record and states its length.
    void end() {
        const std::size_t length = offset() - recordOffset_ - lengthSize;
        if (length > payloadMax) [[unlikely]]
            tooLong();
        storeNetworkOrdered(buffer_.get() + recordOffset_, static_cast<U32>(length));
        limit_ = pos_;
    }

    std::size_t offset() const noexcept { return static_cast<std::size_t>(pos_ - buffer_.get()); }

    // Provides `size` bytes between pos_ and limit_ or throws. No record open is an assertion.
    void makeRoom(std::size_t size);
    void capacityIs(std::size_t capacity);
    [[noreturn]] static void tooLong();

    Ptr<ByteConnection::Out> connection_;
    std::unique_ptr<U8[]> buffer_;
    U8* pos_ = nullptr;       // where the next field goes
    U8* limit_ = nullptr;     // how far fields may go: pos_ while no record is open
    U8* end_ = nullptr;       // of the buffer
    U8* flushMark_ = nullptr; // a record does not begin here or behind it
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
    explicit Record(Out& out) : out_(out) {
        if (out.depth_ == 0) out.begin();
        ++out.depth_;
        start_ = out.offset();
    }

    ~Record() {
        if (closed_) return;
        out_.pos_ = out_.buffer_.get() + start_;
        if (--out_.depth_ != 0) return;
        out_.pos_ -= lengthSize;
        out_.limit_ = out_.pos_;
    }

    Record(const Record&) = delete;
    Record& operator=(const Record&) = delete;

    // Once, after the last field. Throws, as if nothing had been written, when the payload is longer
    // than payloadMax.
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

// NboAttrLog::In - the reading end.
//
// Resuming: a malformed record is left behind as a whole: the next value comes from the next
//           record. A log that ends inside a record can be read on when its connection has grown.
class VEL_API NboAttrLog::In : public PtrInterface {
public:
    class Record;

    explicit In(const Ptr<ByteConnection::In>& connection);
    ~In() override;
    In(const In&) = delete;
    In& operator=(const In&) = delete;

    // Whether the connection has no byte more, after a whole record. May wait for the connection.
    // Not while a record is open.
    bool atEnd();

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
    std::size_t remaining() const noexcept { return static_cast<std::size_t>(limit_ - pos_); }

    // For types: the open record is not what they write. `reason` completes the sentence
    //     attribute log record at byte 36 is malformed: <reason>
    // where byte 36 is the place of the record's length in the log.
    [[noreturn]] void malformed(const String8& reason) const;

private:
    template <class T>
    T next() {
        if (remaining() < sizeof(T)) [[unlikely]]
            tooShort(sizeof(T));
        const T value = loadNetworkOrdered<T>(pos_);
        pos_ += sizeof(T);
        return value;
    }

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
    std::unique_ptr<U8[]> buffer_;
    std::size_t capacity_;
    const U8* pos_;       // the next field, or the next record's length
    const U8* limit_;     // end of the open record; pos_ while none is open
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

} // namespace Vel
