// Fuzz.h - what the fuzzers share: how a broken promise ends the run, and the value types.
//
// Input: of the fuzzers for values, the first byte chooses the type (modulo their number); the rest
//        is the text or the log. smoke.py makes seeds in this form: types are counted as they are
//        registered.
#pragma once

#include <Brixo/testing/EveryType.h>
#include <Vel/Vel.h>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace fuzz {

inline void promise(bool kept, const char* what) {
    if (kept) return;
    std::fprintf(stderr, "broken promise: %s\n", what);
    std::abort();
}

using ValueTypes = Brixo::Testing::EveryValue;

// Calls visit.operator()<T>() for the type of that number.
template <class Visitor>
void visitType(std::size_t number, const Visitor& visit) {
    std::size_t at = 0;
    ValueTypes::forEach([&]<class T>() {
        if (at++ == number) visit.template operator()<T>();
    });
}

template <class T>
std::string textOf(const T& value) {
    return std::string(valueToStrep(value).view());
}

template <class T>
std::string logOf(const T& value) {
    const Vel::Ptr<Vel::MemoryConnection::Out> bytes = new Vel::MemoryConnection::Out;
    const Vel::Ptr<Vel::NboAttrLog::Out> out = new Vel::NboAttrLog::Out(bytes);
    if constexpr (std::is_enum_v<T>) {
        Vel::NboAttrLog::Out::Record record(*out);
        out->writeS32(static_cast<Vel::S32>(value));
        record.close();
    } else {
        out << value;
    }
    out->flush();
    const std::span<const Vel::U8> all = bytes->bytes();
    return {reinterpret_cast<const char*>(all.data()), all.size()};
}

} // namespace fuzz
