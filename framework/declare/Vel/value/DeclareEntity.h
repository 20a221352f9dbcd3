// DeclareEntity.h - VEL_ENTITY(T) stands first in a class of counted objects with a schema;
// ObjectType.h defines the rest.
//
// Test: GenericIf_test.cpp.
#pragma once

namespace Vel {

class VelType;
template <class T>
class ObjectType;
template <class T>
class ObjectGenericIf;

} // namespace Vel

// The registered type, its descriptor's and its adapter's class.
#define VEL_ENTITY(T)                                                                              \
    using _Type = ::Vel::ObjectType<T>;                                                            \
    using GenericIf_ = ::Vel::ObjectGenericIf<T>;                                                  \
    static ::Vel::VelType* _fwkType();                                                             \
    ::Vel::VelType* fwkType() const override;
