// typeName.h - a C++ type's name as it is written, namespaces included.
//
// Test: textErrors_test.cpp.
#pragma once

#include <Vel/String8.h>
#include <iosfwd>
#include <typeinfo>

namespace Vel::detail {

String8 typeName(const std::type_info& type);

// The same into a stream. Without memory it is the name that the compiler gave.
void writeTypeName(std::ostream& out, const std::type_info& type) noexcept;

} // namespace Vel::detail
