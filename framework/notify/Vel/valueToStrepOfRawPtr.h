// valueToStrepOfRawPtr.h - text form of a reference to an object: a Python expression, as every
// text form.
//
//     None                                    no object
//     Ptr('Net::Card', '/system/card')        an entity of that type, by its uriPath()
//     Ptr('Net::Table', 0xf7e01230)           another object, by its address: for people, it cannot
//     be read back
//
// The type is the object's own; a class without a descriptor is named as C++ names the pointer's
// type.
#pragma once

#include <Vel/Export.h>
#include <Vel/PtrInterface.h>
#include <Vel/String8.h>
#include <typeinfo>

namespace Vel {

VEL_API String8 valueToStrepOfRawPtr(const PtrInterface* object, const std::type_info& pointedTo);

} // namespace Vel
