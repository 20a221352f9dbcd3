// ValueType.h - X::_Type and X::GenericIf_ of a value type: its descriptor, and the adapter that wraps one value.
//
// Instances: one descriptor for each type, made on first use, never destroyed.
#pragma once

#include <Vel/GenericIf.h>
#include <Vel/Ptr.h>
#include <Vel/VelType.h>
#include <Vel/value/Parse.h>
#include <Vel/value/Schema.h>
#include <Vel/value/WriteStrep.h>

namespace Vel {

// Wraps a copy of one value. A const adapter refuses what would modify it.
template <class T>
class ValueGenericIf : public GenericIf {
public:
    ValueGenericIf(const T& value, bool isConst) : GenericIf(isConst), value_(value) {}

    VelType* type() const override { return T::_fwkType(); }

    String8 strRep() const override { return strepOf(value_); }

    Ptr<GenericIf> clone() const override { return new ValueGenericIf(value_, isConst()); }

    const T& val() const noexcept { return value_; }

    void valIs(const T& value) { value_ = value; }

    void GenericIf_Is(const T& value, bool isConst) {
        value_ = value;
        isConstIs(isConst);
    }

private:
    T value_;
};

template <class T>
class ValueType : public VelType {
public:
    static ValueType* instance() {
        static ValueType* const type = [] {
            auto* made = new ValueType;
            made->referencesLeak();
            return made;
        }();
        return type;
    }

    // Each makes an adapter: of a copy of the value at the address; of the value that the whole text is; of a copy of what
    // another adapter of the same type holds, null for an adapter of another type.
    Ptr<GenericIf> genericIf(const void* value, bool isConst) const {
        return new ValueGenericIf<T>(*static_cast<const T*>(value), isConst);
    }

    Ptr<GenericIf> genericIf(const String8& text, bool isConst) const {
        return new ValueGenericIf<T>(parseWhole<T>(text), isConst);
    }

    Ptr<GenericIf> genericIf(const GenericIf* other, bool isConst) const {
        const auto* same = dynamic_cast<const ValueGenericIf<T>*>(other);
        return same != nullptr ? new ValueGenericIf<T>(same->val(), isConst) : nullptr;
    }

private:
    static VelType* baseType() {
        using Base = typename std::remove_cvref_t<decltype(schemaOf<T>)>::BaseType;
        if constexpr (std::is_void_v<Base>)
            return nullptr;
        else
            return Base::_fwkType();
    }

    ValueType() : VelType(schemaOf<T>.qualifiedName.data(), baseType()) {}
};

} // namespace Vel
