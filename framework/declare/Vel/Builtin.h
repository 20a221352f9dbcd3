// Builtin.h - descriptors of the types that the language brings along: Builtin<unsigned
// short>::_fwkType().
//
// Names: U8, U16, U32, U64 (unsigned), int, bool, Vel::BytePtr (unsigned char*), Vel::VoidPtr
//        (void*).
// Made:  on first use, once a process; they live as long as it.
#pragma once

#include <Vel/Export.h>
#include <Vel/GenericIf.h>
#include <Vel/Integers.h>
#include <Vel/Ptr.h>
#include <Vel/VelType.h>

namespace Vel {

template <class T>
class ValueGenericIf;

// Defined for the eight types named above alone: any other fails to link.
template <class T>
struct Builtin {
    using GenericIf_ = ValueGenericIf<T>;

    VEL_API static VelType* _fwkType();
    // An adapter of a copy.
    VEL_API static Ptr<GenericIf> genericIf(const T& value, bool isConst = false);
};

} // namespace Vel
