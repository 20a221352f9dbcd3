#include <Vel/GenericIf.h>

#include <Vel/ReflectionException.h>
#include <Vel/VelType.h>
#include <Vel/format.h>
#include <Vel/shownName.h>
#include <string>

namespace Vel {

namespace {

// A name views characters that need not end in a NUL.
String8 asText(Name name) { return String8(name); }

AttributeIterator& given(const Ptr<AttributeIterator>& iterator) {
    if (!iterator) GenericIf::throwTypeException("iterator");
    return *iterator;
}

} // namespace

GenericIf::~GenericIf() = default;

void GenericIf::attributeOp(const AttributeOp& op, const Ptr<const GenericIf>&,
                            const Ptr<GenericIf>&) {
    refuseIfConst(op);
    throwUnknownAttrException(type(), op.attributeId());
}

void GenericIf::attributeOp(const AttributeOp& op, const Ptr<const GenericIf>& index,
                            const Ptr<GenericIf>& result) const {
    if (op.modifies()) throwConstException("attempting to modify a const instance");
    const_cast<GenericIf*>(this)->attributeOp(op, index, result);
}

AttributeId GenericIf::attributeId(String8 name) const { return idOf(type(), name.view()); }

AttributeId GenericIf::idOf(const VelType* type, Name name) {
    const VelAttr* const attr = type->attr(name);
    if (attr == nullptr) throwUnknownAttrException(type, name);
    return attr->id();
}

Ptr<GenericIf> GenericIf::genericIfListConstructor(const Ptr<const GenericIf>& arguments) const {
    return type()->genericIfListConstructor(arguments.ptr());
}

void GenericIf::velDoZombieReactors(bool v) {
    if (velMarkedForDeletion() != v) velMarkedForDeletionIs(v);
}

Ptr<AttributeIterator> GenericIf::attributeIterator(AttributeId id) {
    throwUnknownAttrException(type(), id);
}

Ptr<GenericIf> GenericIf::attributeIterator_iterObj(const Ptr<AttributeIterator>& iterator) {
    return given(iterator).obj(isConst_);
}

Ptr<const GenericIf> GenericIf::attributeIterator_iterObj(
    const Ptr<AttributeIterator>& iterator) const {
    return given(iterator).obj(true);
}

Ptr<GenericIf> GenericIf::attributeIterator_iterKey(const Ptr<AttributeIterator>& iterator) const {
    return given(iterator).key();
}

void GenericIf::attributeIterator_iterInc(const Ptr<AttributeIterator>& iterator) const {
    given(iterator).inc();
}

void GenericIf::attributeIterator_iterDel(const Ptr<AttributeIterator>& iterator) {
    if (isConst_) throwConstException("attempting to modify a const instance");
    given(iterator).del();
}

bool GenericIf::attributeIterator_nonNull(const Ptr<AttributeIterator>& iterator) const {
    return given(iterator).nonNull();
}

Ptr<AttributeIterator> GenericIf::attributeIterator_iterClone(
    const Ptr<AttributeIterator>& iterator) const {
    return given(iterator).clone();
}

void GenericIf::throwConstException(const char* text) {
    throw ReflectionException(text, Exception::Id::constant);
}

void GenericIf::throwBadIndexAttrException(Name attribute) {
    throw ReflectionException("attribute " + asText(attribute) + " takes no index",
                              Exception::Id::attribute);
}

void GenericIf::throwOpNotSupportedException(Name attribute, AttributeOp::Operation operation,
                                             bool isCollection) {
    throw ReflectionException((isCollection ? "collection " : "attribute ") + asText(attribute) +
                                  format(" does not support operation %u", operation),
                              Exception::Id::operation);
}

void GenericIf::throwTypeException(Name argument) {
    throw ReflectionException("argument " + asText(argument) + " is missing or of another type",
                              Exception::Id::type);
}

void GenericIf::throwUnknownArgException(Name attribute) {
    throw ReflectionException(asText(attribute) + " takes no more arguments", Exception::Id::type);
}

void GenericIf::throwUnknownAttrException(const VelType* type, Name attribute) {
    throw ReflectionException(asText(type->qualifiedName()) + " has no attribute " +
                                  shownName(attribute),
                              Exception::Id::attribute);
}

void GenericIf::throwUnknownAttrException(const VelType* type, AttributeId attribute) {
    throw ReflectionException(asText(type->qualifiedName()) +
                                  format(" has no attribute %u", attribute),
                              Exception::Id::attribute);
}

} // namespace Vel
