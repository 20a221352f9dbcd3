// LogFields.h - the fields of a value in the attribute log, in declaration order. Form:
// docs/attribute-log.md.
//
// Collection: its entries in the map's order, key then value, then a signed 32-bit 0. Nothing in
//             the bytes tells the end mark from an entry, so a collection stands last in its record
//             and the record's length says how many there are.
// Test: Value_test.cpp.
#pragma once

#include <Vel/NboAttrLog.h>
#include <Vel/format.h>
#include <Vel/value/Enum.h>
#include <Vel/value/Fields.h>
#include <concepts>
#include <type_traits>

namespace Vel {

namespace detail {

inline constexpr std::size_t endMarkBytes = 4;

// Out, In: the log itself, or its Fixed.
template <class Out, class Field>
[[gnu::always_inline]] inline void logField(Out& out, const Field& field) {
    if constexpr (std::same_as<Field, bool>)
        out.writeBool(field);
    else if constexpr (std::is_enum_v<Field>)
        out.writeS32(static_cast<S32>(field));
    else if constexpr (std::same_as<Field, U8>)
        out.writeU8(field);
    else if constexpr (std::same_as<Field, U16>)
        out.writeU16(field);
    else if constexpr (std::same_as<Field, U32>)
        out.writeU32(field);
    else if constexpr (std::same_as<Field, U64>)
        out.writeU64(field);
    else if constexpr (std::same_as<Field, S32>)
        out.writeS32(field);
    else
        logFields(out, field);
}

template <class In, class Field>
void readLogField(In& in, Field& field) {
    if constexpr (std::same_as<Field, bool>)
        field = in.nextBool();
    else if constexpr (std::is_enum_v<Field>)
        field = static_cast<Field>(in.nextS32());
    else if constexpr (std::same_as<Field, U8>)
        field = in.nextU8();
    else if constexpr (std::same_as<Field, U16>)
        field = in.nextU16();
    else if constexpr (std::same_as<Field, U32>)
        field = in.nextU32();
    else if constexpr (std::same_as<Field, U64>)
        field = in.nextU64();
    else if constexpr (std::same_as<Field, S32>)
        field = in.nextS32();
    else
        readLogFields(in, field);
}

template <class Collection>
void logCollection(NboAttrLog::Out& out, const Collection& collection) {
    for (const auto& [key, value] : collection) {
        logField(out, key);
        logField(out, value);
    }
    out.writeS32(0);
}

template <class Collection>
void readLogCollection(NboAttrLog::In& in, Collection& collection) {
    using Key = typename Collection::Key;
    using Mapped = typename Collection::Value;
    constexpr std::size_t entryBytes = sizeof(Key) + sizeof(Mapped);
    static_assert(std::integral<Key> && std::integral<Mapped>);
    if (in.remaining() < endMarkBytes || (in.remaining() - endMarkBytes) % entryBytes != 0)
        in.malformed(format("its last %zu bytes are no entries of %zu bytes and an end mark",
                            in.remaining(), entryBytes));
    while (in.remaining() > endMarkBytes) {
        Key key{};
        Mapped value{};
        readLogField(in, key);
        readLogField(in, value);
        collection.set(key, value);
    }
    if (in.nextS32() != 0) in.malformed("the end mark of a collection is not 0");
}

// Bytes of a field or of a value's fields; 0 for a value whose length depends on what a collection
// in it holds.
template <class Field>
constexpr std::size_t fixedLogBytes() {
    if constexpr (std::integral<Field> || std::is_enum_v<Field>) {
        return sizeof(Field);
    } else {
        std::size_t sum = 0;
        bool isFixed = true;
        forEachField<Field>([&]<std::size_t i>() {
            if constexpr (isCollectionField<Field, i>) {
                isFixed = false;
            } else {
                constexpr std::size_t bytes = fixedLogBytes<FieldType<Field, i>>();
                isFixed = isFixed && bytes != 0;
                sum += bytes;
            }
        });
        return isFixed && sum <= NboAttrLog::fixedMax ? sum : 0;
    }
}

} // namespace detail

// The fields alone, into the open record.
template <class Out, class T>
[[gnu::always_inline]] inline void logFields(Out& out, const T& value) {
    forEachField<T>([&]<std::size_t i>() __attribute__((always_inline)) {
        constexpr auto field = attributeAt<T, i>.access;
        if constexpr (isCollectionField<T, i>)
            detail::logCollection(out, value.*field);
        else
            detail::logField(out, value.*field);
    });
}

template <class In, class T>
void readLogFields(In& in, T& value) {
    forEachField<T>([&]<std::size_t i>() {
        constexpr auto field = attributeAt<T, i>.access;
        if constexpr (isCollectionField<T, i>)
            detail::readLogCollection(in, value.*field);
        else
            detail::readLogField(in, value.*field);
    });
}

namespace detail {

template <class T>
[[gnu::noinline]] void logRecord(NboAttrLog::Out& out, const T& value) {
    NboAttrLog::Out::Record record(out, fixedLogBytes<T>());
    logFields(out, value);
    record.close();
}

template <class T>
[[gnu::noinline]] void readLogRecord(NboAttrLog::In& in, T& value) {
    NboAttrLog::In::Record record(in);
    readLogFields(in, value);
    record.close();
}

} // namespace detail

// One record, or a part of the one that is open.
template <class T>
[[gnu::always_inline]] inline void logValue(NboAttrLog::Out& out, const T& value) {
    if constexpr (constexpr std::size_t bytes = detail::fixedLogBytes<T>(); bytes != 0)
        if (NboAttrLog::Out::Fixed fields(out, bytes); fields) [[likely]]
            return logFields(fields, value);
    detail::logRecord(out, value);
}

template <class T>
[[gnu::always_inline]] inline void readLogValue(NboAttrLog::In& in, T& value) {
    if constexpr (constexpr std::size_t bytes = detail::fixedLogBytes<T>(); bytes != 0)
        if (NboAttrLog::In::Fixed fields(in, bytes); fields) [[likely]]
            return readLogFields(fields, value);
    detail::readLogRecord(in, value);
}

} // namespace Vel
