// GenericIfPtrInterface.h - adapter of a counted object, whatever its class; it keeps the object
// alive.
//
// By itself it shows the object's type and its reference text, and no attribute but comparison:
// ObjectGenericIf<T> adds those of a class with a schema. Two adapters are equal when they refer to
// the same object.
#pragma once

#include <Vel/Export.h>
#include <Vel/GenericIf.h>
#include <Vel/Ptr.h>
#include <Vel/PtrInterface.h>

namespace Vel {

class VEL_API GenericIfPtrInterface : public GenericIf {
public:
    // Null for no object.
    GenericIfPtrInterface(PtrInterface* object, bool isConst)
        : GenericIf(isConst), object_(object) {}

    GenericIfPtrInterface(const GenericIfPtrInterface&) = default;
    GenericIfPtrInterface& operator=(const GenericIfPtrInterface&) = delete;
    ~GenericIfPtrInterface() override;

    PtrInterface* object() const noexcept { return object_.ptr(); }

    // The object's own; PtrInterface for no object.
    VelType* type() const override;
    void attributeOp(const AttributeOp& op, const Ptr<const GenericIf>& index,
                     const Ptr<GenericIf>& result) override;
    Ptr<GenericIf> clone() override;
    Ptr<const GenericIf> clone() const override;
    // As valueToStrepOfRawPtr() writes a reference.
    String8 strRep() const override;
    const void* voidPtr(const VelType* type) const override;
    // value: the address of a PtrInterface, or null.
    void voidPtrIs(const void* value, const VelType* type) override;

protected:
    // Whether the adapter may refer to objects of that type.
    virtual bool takes(const VelType* type) const;

private:
    Ptr<PtrInterface> object_;
};

} // namespace Vel
