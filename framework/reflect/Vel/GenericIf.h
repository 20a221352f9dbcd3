// GenericIf.h - an adapter that shows one value or object without naming its class: every attribute
// by its id.
//
//     Vel::Ptr<Vel::GenericIf> port = Vel::VelType::typeNode("Net::Port")->genericIf("7", false);
//     Vel::Ptr<Vel::GenericIf> number = Vel::Builtin<Vel::U16>::_fwkType()->newGenericIf();
//     port->attributeOp({port->attributeId("value"), Vel::AttributeOp::read}, nullptr, number);
//     number->strRep();  // "7"
//
// Family: ValueGenericIf<T> holds a copy of a value, of an enumerator or of a builtin;
//         GenericIfPtrInterface and ObjectGenericIf<T> hold a reference to an object;
//         GenericIf::List holds arguments.
// Const:  a const adapter refuses every operation that would modify what it holds, before anything
//         else is looked at.
// Errors: ReflectionException, by the throw... functions.
// Threads: one at a time for each adapter. Types are everybody's.
#pragma once

#include <Vel/AttributeId.h>
#include <Vel/AttributeIterator.h>
#include <Vel/AttributeOp.h>
#include <Vel/Export.h>
#include <Vel/Name.h>
#include <Vel/NotifieeConst.h>
#include <Vel/Ptr.h>
#include <Vel/String8.h>

namespace Vel {

class VelType;

class VEL_API GenericIf : public PtrInterface::NotifieeConst {
public:
    class List; // GenericIfList.h

    explicit GenericIf(bool isConst) noexcept : isConst_(isConst) {}

    // A copy wraps the same and listens to nobody.
    // NOLINTNEXTLINE(bugprone-copy-constructor-init): what a notifiee listens to is not copied
    GenericIf(const GenericIf& other) : NotifieeConst(), isConst_(other.isConst_) {}

    GenericIf& operator=(const GenericIf&) = delete;
    ~GenericIf() override;

    // The type of what is wrapped; lives as long as the process.
    virtual VelType* type() const = 0;

    // Does `op` with one attribute. `index` is a collection's key, null for any other attribute.
    // The answer goes into `result` through its voidPtrIs(): an adapter of the attribute's type.
    // This one refuses every attribute as unknown.
    virtual void attributeOp(const AttributeOp& op, const Ptr<const GenericIf>& index,
                             const Ptr<GenericIf>& result);
    // The same for an operation that reads.
    void attributeOp(const AttributeOp& op, const Ptr<const GenericIf>& index,
                     const Ptr<GenericIf>& result) const;

    // The id of the attribute of that name; throws if type() has none.
    virtual AttributeId attributeId(String8 name) const;

    // A new adapter that holds a copy of the same value, or the same object.
    virtual Ptr<GenericIf> clone() = 0;
    virtual Ptr<const GenericIf> clone() const = 0;

    // The text form of what is wrapped.
    virtual String8 strRep() const = 0;

    // A new instance of type() from constructor arguments, a List; throws naming the argument that
    // is missing, of another type, or too many.
    virtual Ptr<GenericIf> genericIfListConstructor(const Ptr<const GenericIf>& arguments) const;

    // Where what is wrapped lies, seen as a `type`; null if it is neither that nor a refinement of
    // it. For an object, its PtrInterface.
    virtual const void* voidPtr(const VelType* type) const = 0;

    // Holds a copy of the value at the address instead, or refers to the object there. Throws if
    // `type` is not type().
    virtual void voidPtrIs(const void* value, const VelType* type) = 0;

    // Whether a value of exactly that type lies at held(), as voidPtr() and voidPtrIs() would use
    // it, but without a virtual call. Not for an object, nor for an adapter that does not say, nor
    // for a type of null.
    bool holds(const VelType* type) const noexcept { return heldType_ == type; }

    void* held() const noexcept { return held_; }

    // Marks the adapter for deletion, or takes the mark back; as it is already, nothing happens.
    virtual void velDoZombieReactors(bool v);

    // Stands on the first member of a collection attribute. Throws for any other attribute.
    virtual Ptr<AttributeIterator> attributeIterator(AttributeId id);

    // The member an iterator stands on, its key, the next member, removal: AttributeIterator.h says
    // what is refused where. A const adapter's members are const. An iterator that is null is
    // refused as an argument that is missing.
    virtual Ptr<GenericIf> attributeIterator_iterObj(const Ptr<AttributeIterator>& iterator);
    virtual Ptr<const GenericIf> attributeIterator_iterObj(
        const Ptr<AttributeIterator>& iterator) const;
    virtual Ptr<GenericIf> attributeIterator_iterKey(const Ptr<AttributeIterator>& iterator) const;
    virtual void attributeIterator_iterInc(const Ptr<AttributeIterator>& iterator) const;
    virtual void attributeIterator_iterDel(const Ptr<AttributeIterator>& iterator);
    virtual bool attributeIterator_nonNull(const Ptr<AttributeIterator>& iterator) const;
    virtual Ptr<AttributeIterator> attributeIterator_iterClone(
        const Ptr<AttributeIterator>& iterator) const;

    // Whether the adapter refuses to modify what it holds.
    bool isConst() const noexcept { return isConst_; }

    [[noreturn]] static void throwConstException(const char* text);
    // An attribute that takes no index was given one.
    [[noreturn]] static void throwBadIndexAttrException(Name attribute);
    // `isCollection`: whether the attribute is one as a whole.
    [[noreturn]] static void throwOpNotSupportedException(Name attribute,
                                                          AttributeOp::Operation operation,
                                                          bool isCollection);
    // An argument is missing or of another type.
    [[noreturn]] static void throwTypeException(Name argument);
    // There is an argument too many for the attribute or the constructor.
    [[noreturn]] static void throwUnknownArgException(Name attribute);
    [[noreturn]] static void throwUnknownAttrException(const VelType* type, Name attribute);
    [[noreturn]] static void throwUnknownAttrException(const VelType* type, AttributeId attribute);

protected:
    // attributeId() of an adapter of that type.
    static AttributeId idOf(const VelType* type, Name name);

    void isConstIs(bool isConst) noexcept { isConst_ = isConst; }

    // For adapters of values, once: what holds() and held() answer. Such an adapter's voidPtr() and
    // voidPtrIs() are final.
    void heldIs(void* value, const VelType* type) noexcept {
        held_ = value;
        heldType_ = type;
    }

    // Throws if the adapter is const and the operation would modify.
    void refuseIfConst(const AttributeOp& op) const {
        if (op.modifies() && isConst_) [[unlikely]]
            throwConstException("attempting to modify a const instance");
    }

private:
    void* held_ = nullptr;
    const void* heldType_ = this; // which is no type
    bool isConst_;
};

} // namespace Vel
