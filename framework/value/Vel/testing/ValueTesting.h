// ValueTesting.h - for tests of value types: text, parse errors and log bytes in one word each. Not
// installed.
#pragma once

#include <Vel/MemoryConnection.h>
#include <Vel/NboAttrLog.h>
#include <Vel/Ptr.h>
#include <Vel/RangeException.h>
#include <Vel/StreamBogon.h>
#include <Vel/String8.h>
#include <Vel/needString.h>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace Vel::Testing {

// The text form; both ways to print it agree.
template <class T>
std::string text(const T& value) {
    const std::string strep(valueToStrep(value).view());
    std::ostringstream stream;
    stream << value;
    return stream.str() == strep ? strep : "valueToStrep: " + strep + ", stream: " + stream.str();
}

// Reads a whole text through the type's parsing constructor. Throws what that throws, and the junk
// message.
template <class T>
T parsed(std::string_view whole) {
    const String8 string(whole);
    auto pos = string.begin();
    T value(pos, string.end());
    needEnd(pos, string.end(), string);
    return value;
}

// What reading the text throws; "" when it is read.
template <class T>
std::string parseError(std::string_view whole) {
    try {
        (void)parsed<T>(whole);
        return "";
    } catch (const RangeException& error) {
        return error.what();
    }
}

// The payload of the record that the value makes; checks that the record's length is right.
template <class T>
std::vector<U8> logged(const T& value) {
    const Ptr<MemoryConnection::Out> bytes = new MemoryConnection::Out;
    const Ptr<NboAttrLog::Out> out = new NboAttrLog::Out(bytes);
    out << value;
    out->flush();
    const auto all = bytes->bytes();
    const std::size_t length = all.size() - NboAttrLog::lengthSize;
    const std::size_t stated =
        std::size_t{all[0]} << 24 | std::size_t{all[1]} << 16 | std::size_t{all[2]} << 8 | all[3];
    if (stated != length)
        throw std::logic_error("record length " + std::to_string(stated) + " of " +
                               std::to_string(length));
    return {all.begin() + NboAttrLog::lengthSize, all.end()};
}

// Reads a value from a record with this payload.
template <class T>
T fromLog(const std::vector<U8>& payload) {
    std::vector<U8> record{static_cast<U8>(payload.size() >> 24),
                           static_cast<U8>(payload.size() >> 16),
                           static_cast<U8>(payload.size() >> 8), static_cast<U8>(payload.size())};
    record.insert(record.end(), payload.begin(), payload.end());
    NboAttrLog::In in(new MemoryConnection::In(record));
    T value(&in, StreamBogon());
    if (!in.atEnd()) throw std::logic_error("bytes are left in the log");
    return value;
}

// The six operators agree with each other and with `less` and `equal`.
template <class T>
bool comparesAs(const T& a, const T& b, bool less, bool equal) {
    return (a == b) == equal && (a != b) == !equal && (a < b) == less &&
           (a <= b) == (less || equal) && (a > b) == !(less || equal) && (a >= b) == !less;
}

} // namespace Vel::Testing
