#include <Vel/GenericIfPtrInterface.h>

#include <Vel/VelType.h>
#include <Vel/value/ArgumentFrom.h>
#include <Vel/valueToStrepOfRawPtr.h>
#include <typeinfo>

namespace Vel {

GenericIfPtrInterface::~GenericIfPtrInterface() = default;

VelType* GenericIfPtrInterface::type() const {
    return object_ ? object_->fwkType() : PtrInterface::_fwkType();
}

void GenericIfPtrInterface::attributeOp(const AttributeOp& op, const Ptr<const GenericIf>& index,
                                        const Ptr<GenericIf>& result) {
    refuseIfConst(op);
    if (op.attributeId() == 0 && op.operation() == AttributeOp::compare) {
        const GenericIf* const other = op.velOpArg();
        if (other == nullptr || other->type() != type()) throwTypeException("velOpArg");
        return answer(result, other->voidPtr(PtrInterface::_fwkType()) == object_.ptr());
    }
    GenericIf::attributeOp(op, index, result);
}

Ptr<GenericIf> GenericIfPtrInterface::clone() { return new GenericIfPtrInterface(*this); }

Ptr<const GenericIf> GenericIfPtrInterface::clone() const {
    return new GenericIfPtrInterface(*this);
}

String8 GenericIfPtrInterface::strRep() const {
    return valueToStrepOfRawPtr(object_.ptr(), typeid(PtrInterface));
}

const void* GenericIfPtrInterface::voidPtr(const VelType* type) const {
    return this->type()->isKindOf(type) ? object_.ptr() : nullptr;
}

void GenericIfPtrInterface::voidPtrIs(const void* value, const VelType* type) {
    if (!takes(type)) throwTypeException(this->type()->name());
    object_ = static_cast<PtrInterface*>(const_cast<void*>(value));
}

bool GenericIfPtrInterface::takes(const VelType* type) const {
    return type->isKindOf(PtrInterface::_fwkType());
}

} // namespace Vel
