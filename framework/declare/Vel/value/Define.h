// Define.h - what a value type's or an enumeration's .cpp says: its exported functions, each one
// line over the facets.
//
// Flattened: the fields of values within a value take no call each; what is rare says itself that
//            it stays apart.
// Test: Value_test.cpp.
#pragma once

#include <Vel/Value.h>
#include <Vel/value/Parse.h>
#include <Vel/value/ValueType.h>
#include <Vel/value/WriteStrep.h>
#include <ostream>

#define VEL_DEFINE_VALUE(T)                                                                        \
    T::T(::Vel::String8::IteratorConst& pos, const ::Vel::String8::IteratorConst& end) {           \
        ::Vel::parseValue(pos, end, *this);                                                        \
    }                                                                                              \
    [[gnu::flatten]] T::T(::Vel::NboAttrLog::In* in, ::Vel::StreamBogon) {                         \
        ::Vel::readLogValue(*in, *this);                                                           \
    }                                                                                              \
    ::Vel::VelType* T::_fwkType() { return ::Vel::ValueType<T>::instance(); }                      \
    [[gnu::flatten]] ::Vel::String8 valueToStrep(const T& value) { return ::Vel::strepOf(value); } \
    std::ostream& operator<<(std::ostream& out, const T& value) {                                  \
        return out << ::Vel::strepOf(value);                                                       \
    }
