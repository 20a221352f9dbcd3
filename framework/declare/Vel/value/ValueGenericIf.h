// ValueGenericIf.h - adapter of one value: of a value type, an enumeration or a builtin. It holds a
// copy.
//
//     Vel::ValueGenericIf<DeviceId> device(DeviceId(7), false);
//     device.valIs(DeviceId(8));
// Test: GenericIf_test.cpp.
#pragma once

#include <Vel/GenericIf.h>
#include <Vel/Ptr.h>
#include <Vel/value/AttributeDispatch.h>
#include <Vel/value/WholeText.h>

namespace Vel {

template <class T>
class ValueGenericIf : public GenericIf {
public:
    ValueGenericIf(const T& value, bool isConst) : GenericIf(isConst), value_(value) {
        heldIs(&value_, typeOf<T>());
    }

    ValueGenericIf(const ValueGenericIf& other) : GenericIf(other), value_(other.value_) {
        heldIs(&value_, typeOf<T>());
    }

    ValueGenericIf& operator=(const ValueGenericIf&) = delete;
    ~ValueGenericIf() override = default;

    const T& val() const noexcept { return value_; }

    void valIs(const T& value) { value_ = value; }

    // As if it were made anew.
    void GenericIf_Is(const T& value, bool isConst) {
        value_ = value;
        isConstIs(isConst);
    }

    VelType* type() const override { return typeOf<T>(); }

    void attributeOp(const AttributeOp& op, const Ptr<const GenericIf>& index,
                     const Ptr<GenericIf>& result) override {
        refuseIfConst(op);
        if (op.attributeId() == 0 && op.operation() == AttributeOp::compare)
            return compare(op.velOpArg(), result);
        if constexpr (DeclaredEnum<T>) {
            if (op.attributeId() < enumSchema<T>.names().size())
                return enumerator(op, index, result);
        } else if constexpr (!BuiltinType<T>) {
            if (const auto* entry = detail::AttributeDispatch<T>::find(op.attributeId()))
                return entry->run(value_, op, index.ptr(), result);
        }
        GenericIf::attributeOp(op, index, result);
    }

    AttributeId attributeId(String8 name) const override { return idOf(typeOf<T>(), name.view()); }

    Ptr<GenericIf> clone() override { return new ValueGenericIf(value_, isConst()); }

    Ptr<const GenericIf> clone() const override { return new ValueGenericIf(value_, isConst()); }

    String8 strRep() const override { return wholeText(value_); }

    const void* voidPtr(const VelType* as) const final { return seenAs<T>(as); }

    // Never inlined: GCC guesses a class for the virtual call and warns of the bytes that the wrong
    //                guess would read.
    [[gnu::noinline]] void voidPtrIs(const void* value, const VelType* type) final {
        if (type != typeOf<T>()) throwTypeException(this->type()->name());
        value_ = *static_cast<const T*>(value);
    }

    Ptr<AttributeIterator> attributeIterator(AttributeId id) override {
        if constexpr (!DeclaredEnum<T> && !BuiltinType<T>) {
            const auto* entry = detail::AttributeDispatch<T>::find(id);
            if (entry != nullptr && entry->iterate != nullptr) return entry->iterate(this, value_);
        }
        return GenericIf::attributeIterator(id);
    }

private:
    void compare(const GenericIf* other, const Ptr<GenericIf>& result) const {
        if (other == nullptr || other->type() != type()) throwTypeException("velOpArg");
        answer(result, value_ == *static_cast<const T*>(other->voidPtr(typeOf<T>())));
    }

    // Reads as the enumerator of that number, whatever the adapter holds.
    static void enumerator(const AttributeOp& op, const Ptr<const GenericIf>& index,
                           const Ptr<GenericIf>& result) {
        const Name name = enumSchema<T>.names()[op.attributeId()];
        if (index) throwBadIndexAttrException(name);
        if (op.operation() != AttributeOp::read)
            throwOpNotSupportedException(name, op.operation(), false);
        answer(result, static_cast<T>(op.attributeId()));
    }

    // As `As` or one of its bases, of which a descriptor knows.
    template <class As>
    const void* seenAs(const VelType* as) const {
        if (as == typeOf<As>()) return static_cast<const As*>(&value_);
        if constexpr (!DeclaredEnum<As> && !BuiltinType<As>) {
            using Base = typename std::remove_cvref_t<decltype(schemaOf<As>)>::BaseType;
            if constexpr (!std::is_void_v<Base>) return seenAs<Base>(as);
        }
        return nullptr;
    }

    T value_;
};

} // namespace Vel
