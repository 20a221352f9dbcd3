// ObjectType.h - a class of counted objects with a schema: its descriptor, its adapter, and what
// the class says for both.
//
//     class NET_API Table : public Vel::PtrInterface {
//     public:
//         VEL_ENTITY(Table)
//         explicit Table(U32 size);
//         static constexpr auto schema();   // Vel::entitySchema<Table>("Net::Table")...
//     };
//     VEL_DEFINE_ENTITY(Table)   // in its .cpp
//
// Construction: by reflection as by the class's factory; ObjectType makes an object with `new` and
//               gives it its first reference.
// Test: GenericIf_test.cpp.
#pragma once

#include <Vel/GenericIfPtrInterface.h>
#include <Vel/Ptr.h>
#include <Vel/VelType.h>
#include <Vel/needString.h>
#include <Vel/sequenceToValueOfPtr.h>
#include <Vel/textErrors.h>
#include <Vel/value/AttributeDispatch.h>

namespace Vel {

// Refers to an object of the class T, or to none.
template <class T>
class ObjectGenericIf : public GenericIfPtrInterface {
public:
    ObjectGenericIf(PtrInterface* object, bool isConst) : GenericIfPtrInterface(object, isConst) {}

    VelType* type() const override { return T::_fwkType(); }

    // Without an object there is nothing to do anything with: refused as an argument that is
    // missing.
    void attributeOp(const AttributeOp& op, const Ptr<const GenericIf>& index,
                     const Ptr<GenericIf>& result) override {
        refuseIfConst(op);
        const bool comparesObjects =
            op.attributeId() == 0 && op.operation() == AttributeOp::compare;
        const auto* entry = detail::AttributeDispatch<T>::find(op.attributeId());
        if (entry != nullptr && !comparesObjects)
            return entry->run(instance(), op, index.ptr(), result);
        GenericIfPtrInterface::attributeOp(op, index, result);
    }

    AttributeId attributeId(String8 name) const override { return idOf(typeOf<T>(), name.view()); }

    Ptr<GenericIf> clone() override { return new ObjectGenericIf(object(), isConst()); }

    Ptr<const GenericIf> clone() const override { return new ObjectGenericIf(object(), isConst()); }

    Ptr<AttributeIterator> attributeIterator(AttributeId id) override {
        const auto* entry = detail::AttributeDispatch<T>::find(id);
        if (entry == nullptr || entry->iterate == nullptr)
            return GenericIfPtrInterface::attributeIterator(id);
        return entry->iterate(this, instance());
    }

protected:
    bool takes(const VelType* type) const override { return type->isKindOf(T::_fwkType()); }

private:
    T& instance() const {
        if (object() == nullptr) throwTypeException(type()->name());
        return static_cast<T&>(*object());
    }
};

template <class T>
class ObjectType : public VelType {
public:
    static ObjectType* instance() {
        static auto* const type = new ObjectType;
        return type;
    }

    using VelType::genericIf;

    // value: the address of a PtrInterface that is a T.
    Ptr<GenericIf> genericIf(const void* value, bool isConst) const override {
        return wrap(static_cast<PtrInterface*>(const_cast<void*>(value)), isConst);
    }

    // The text is a reference: sequenceToValueOfPtr.h.
    Ptr<GenericIf> genericIf(const String8& text, bool isConst) const override {
        String8::IteratorConst pos = text.begin();
        PtrInterface* const object =
            sequenceToValueOfPtr(pos, text.end(), static_cast<PtrInterface*>(nullptr));
        needEnd(pos, text.end(), text);
        return wrap(object, isConst);
    }

    Ptr<GenericIf> genericIf(const GenericIf* other, bool isConst) const override {
        const void* const object = other != nullptr ? other->voidPtr(this) : nullptr;
        return object != nullptr ? genericIf(object, isConst) : nullptr;
    }

    // An object of another class is refused.
    Ptr<GenericIf> genericIf(PtrInterface* object, bool isConst) override {
        return wrap(object, isConst);
    }

    Ptr<GenericIf> genericIfListConstructor(const GenericIf* arguments) const override {
        detail::ListReader list(arguments);
        return detail::constructFrom<T>(list, name(), [](const auto&... values) -> Ptr<GenericIf> {
            const Ptr<T> object = new T(values...);
            return new ObjectGenericIf<T>(object.ptr(), false);
        });
    }

    Ptr<GenericIf> newGenericIf() const override { return new ObjectGenericIf<T>(nullptr, false); }

private:
    ObjectType()
        : VelType(schemaOf<T>.shortName(), PtrInterface::_fwkType(), nullptr, VelTypeFlags()) {
        qualifiedNameIs(schemaOf<T>.qualifiedName);
        referencesLeak();
    }

    Ptr<GenericIf> wrap(PtrInterface* object, bool isConst) const {
        if (object != nullptr && !object->fwkType()->isKindOf(this))
            GenericIf::throwTypeException(name());
        return new ObjectGenericIf<T>(object, isConst);
    }
};

} // namespace Vel

#define VEL_DEFINE_ENTITY(T)                                                                       \
    ::Vel::VelType* T::_fwkType() { return ::Vel::ObjectType<T>::instance(); }                     \
    ::Vel::VelType* T::fwkType() const { return _fwkType(); }
