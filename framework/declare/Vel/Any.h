// Any.h - a value or an object of any registered type, worked with by names alone.
//
//     Vel::Any device = Vel::Any::parse("Net::DeviceId", "7");
//     Vel::Any table = Vel::Any::make("Net::Table", {{"device", device}, {"size", 64}});
//     table.get("size").text();                       // "64"
//     table.set("owner", "'eth0'");
//     table.set("route", 3, "'down'");                // under the key 3
//     table.call("refill", {8}).as<Vel::U32>();
//     table.forEachMember("route", [](const Vel::Any& key, const Vel::Any& value) { ... });
//
// Operands: what is written, a key or an argument may be another Any, a text form, a number, a
//           truth value or a byte pointer; what it becomes is decided by the attribute. An
//           enumerator may go without its quotes.
// Copying:  shares what is wrapped: a value that is set through one copy is set for all; clone()
//           makes another.
// Owns:     a reference to an adapter, and through it to an object.
// Errors:   ReflectionException names what is unknown with the nearest known names, and each
//           argument that is missing or one too many; RangeException for a text that does not say
//           such a value, or names a collection, which has no text.
// Threads:  those of what is wrapped: one at a time.
#pragma once

#include <Vel/Export.h>
#include <Vel/GenericIf.h>
#include <Vel/Integers.h>
#include <Vel/Name.h>
#include <Vel/Ptr.h>
#include <Vel/String8.h>
#include <Vel/VelAttr.h>
#include <Vel/VelType.h>
#include <Vel/value/TypeOf.h>
#include <concepts>
#include <functional>
#include <initializer_list>
#include <optional>

namespace Vel {

class VEL_API Any {
public:
    class Operand;
    struct Argument;

    // Wraps what an adapter wraps; the adapter is not null.
    explicit Any(const Ptr<GenericIf>& adapter);

    // The registered type of that qualified name.
    static VelType& type(Name qualifiedName);

    // The value that a whole text is.
    static Any parse(Name type, const String8& text);

    // A new value or object from its constructor's arguments, in any order.
    static Any make(Name type, std::initializer_list<Argument> arguments = {});

    VelType& type() const { return *adapter_->type(); }

    // The text form.
    String8 text() const { return adapter_->strRep(); }

    const Ptr<GenericIf>& adapter() const noexcept { return adapter_; }

    // Whether it stands for no object: a member that is not there.
    bool isNull() const;

    // Another Any with a copy of the value; of an object, another that refers to it.
    Any clone() const { return Any(adapter_->clone()); }

    // The C++ value, of exactly the type T or a refinement of it.
    template <class T>
    T as() const;

    // Of the same type and equal; the same object.
    bool operator==(const Any& other) const;

    // The value of an attribute; the value under a key, a default one or null when there is none.
    Any get(Name attribute) const;
    Any get(Name attribute, const Operand& key) const;
    void set(Name attribute, const Operand& value);
    void set(Name attribute, const Operand& key, const Operand& value);

    bool has(Name attribute, const Operand& key) const;
    U32 count(Name attribute) const;
    // Gives what was there: a default value or null, as get() would have before.
    Any del(Name attribute, const Operand& key);
    void delAll(Name attribute);

    // Adds a member from what makes one: the arguments of its constructor, the member itself, or
    // key and value.
    void insert(Name attribute, std::initializer_list<Operand> arguments);

    // Calls a function with its arguments in order. Gives its result; nothing if it has none.
    std::optional<Any> call(Name attribute, std::initializer_list<Operand> arguments = {});

    // Every attribute, inherited ones first.
    void forEachAttribute(const std::function<void(const VelAttr&)>& visit) const;

    // Every member of a collection, in its order. The visitor may add and remove members: one that
    // comes behind the visited one is visited, too, and one that goes before its turn is not.
    void forEachMember(Name attribute,
                       const std::function<void(const Any& key, const Any& value)>& visit) const;

private:
    const VelAttr& attributeNamed(Name name) const;
    Any ask(const VelAttr& attribute, AttributeOp::Operation operation, VelType* resultType,
            const Ptr<const GenericIf>& index) const;

    Ptr<GenericIf> adapter_;
};

// What an attribute is given: it becomes a value of the type that is wanted there.
class VEL_API Any::Operand {
public:
    Operand(const Any& value) : adapter_(value.adapter()) {}

    Operand(const String8& text) : text_(text) {}

    Operand(const char* text) : text_(text) {}

    Operand(BytePtr bytes);

    template <std::same_as<bool> T>
    Operand(T truth) : text_(truth ? "True" : "False") {}

    template <std::integral T>
        requires(!std::same_as<T, bool> && !std::same_as<T, char>)

    Operand(T number) : text_(numberText(number)) {}

    // An adapter of such a value. Throws if the operand says none.
    Ptr<GenericIf> as(VelType& type) const;

    // The adapter of an Any; null for anything else.
    const Ptr<GenericIf>& adapter() const noexcept { return adapter_; }

private:
    template <class T>
    static String8 numberText(T number) {
        if constexpr (std::signed_integral<T>)
            return numberText(static_cast<S64>(number));
        else
            return numberText(static_cast<U64>(number));
    }

    static String8 numberText(S64 number);
    static String8 numberText(U64 number);

    Ptr<GenericIf> adapter_;
    String8 text_;
};

struct Any::Argument {
    Name name;
    Operand value;
};

template <class T>
T Any::as() const {
    const void* const value = adapter_->voidPtr(typeOf<T>());
    if (value == nullptr) GenericIf::throwTypeException(typeOf<T>()->qualifiedName());
    if constexpr (detail::isReference<T>)
        return T(static_cast<typename detail::Pointed<T>::Type*>(
            static_cast<PtrInterface*>(const_cast<void*>(value))));
    else
        return *static_cast<const T*>(value);
}

} // namespace Vel
