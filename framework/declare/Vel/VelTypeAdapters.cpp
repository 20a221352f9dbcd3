// VelTypeAdapters.cpp - the adapters of a type whose descriptor says nothing else: of an object by
// its reference, of a value none.
//
// Test: GenericIf_test.cpp and VelType_test.cpp.
#include <Vel/GenericIf.h>
#include <Vel/GenericIfPtrInterface.h>
#include <Vel/VelType.h>

namespace Vel {

Ptr<GenericIf> VelType::genericIf(const void*, bool) const {
    GenericIf::throwTypeException(qualifiedName_);
}

Ptr<GenericIf> VelType::genericIf(const String8&, bool) const {
    GenericIf::throwTypeException(qualifiedName_);
}

Ptr<GenericIf> VelType::genericIf(const char* text, bool isConst) const {
    return genericIf(String8(text), isConst);
}

Ptr<GenericIf> VelType::genericIf(const GenericIf*, bool) const { return nullptr; }

Ptr<GenericIf> VelType::genericIf(GenericIf* other, bool isConst) {
    return genericIf(static_cast<const GenericIf*>(other), isConst);
}

Ptr<GenericIf> VelType::genericIf(PtrInterface* object, bool isConst) {
    const VelType* const held = object != nullptr ? object->fwkType() : this;
    if (!held->isKindOf(this) || !isKindOf(PtrInterface::_fwkType()))
        GenericIf::throwTypeException(qualifiedName_);
    return new GenericIfPtrInterface(object, isConst);
}

Ptr<GenericIf> VelType::genericIfListConstructor(const GenericIf*) const {
    GenericIf::throwTypeException(qualifiedName_);
}

Ptr<GenericIf> VelType::newGenericIf() const { GenericIf::throwTypeException(qualifiedName_); }

Ptr<GenericIf> VelType::genericIfOfForeignText(const String8& text, bool isConst) const {
    return genericIf(text, isConst);
}

} // namespace Vel
