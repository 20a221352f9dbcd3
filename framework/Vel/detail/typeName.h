// typeName.h - a C++ type's name as it is written, namespaces included.
#pragma once

#include <Vel/String8.h>
#include <typeinfo>

namespace Vel::detail {

String8 typeName(const std::type_info& type);

} // namespace Vel::detail
