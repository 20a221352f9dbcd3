// ValueType.h - descriptor of a value type, an enumeration or a builtin: one for each, never
// destroyed.
//
// Test: Value_test.cpp.
#pragma once

#include <Vel/GenericIf.h>
#include <Vel/Ptr.h>
#include <Vel/VelType.h>
#include <Vel/value/ValueGenericIf.h>

namespace Vel {

template <class T>
class ValueType : public VelType {
public:
    ValueType(Name shortName, Name qualifiedName, VelType* base)
        : VelType(shortName, base, nullptr, VelTypeFlags()) {
        qualifiedNameIs(qualifiedName);
        if (VelType* const inherited = inheritedType()) inheritsFromIs(inherited);
        referencesLeak();
    }

    // Of a type with a schema or a list of enumerators; made on first use.
    static ValueType* instance() {
        static auto* const type = new ValueType(shortNameOf<T>(), qualifiedNameOf<T>(), baseType());
        return type;
    }

    using VelType::genericIf;

    Ptr<GenericIf> genericIf(const void* value, bool isConst) const override {
        return new ValueGenericIf<T>(*static_cast<const T*>(value), isConst);
    }

    Ptr<GenericIf> genericIf(const String8& text, bool isConst) const override {
        return new ValueGenericIf<T>(valueOfWholeText<T>(text), isConst);
    }

    Ptr<GenericIf> genericIf(const GenericIf* other, bool isConst) const override {
        const void* const value = other != nullptr ? other->voidPtr(this) : nullptr;
        return value != nullptr ? genericIf(value, isConst) : nullptr;
    }

    Ptr<GenericIf> genericIfListConstructor(const GenericIf* arguments) const override {
        detail::ListReader list(arguments);
        if constexpr (BuiltinType<T>) {
            const T value = list.next<T>(name());
            list.end(name());
            return new ValueGenericIf<T>(value, false);
        } else if constexpr (DeclaredEnum<T>) {
            list.end(name());
            return newGenericIf();
        } else {
            return detail::constructFrom<T>(list, name(),
                                            [](const auto&... values) -> Ptr<GenericIf> {
                                                return new ValueGenericIf<T>(T(values...), false);
                                            });
        }
    }

    Ptr<GenericIf> newGenericIf() const override { return new ValueGenericIf<T>(T(), false); }

    Ptr<GenericIf> genericIfOfForeignText(const String8& text, bool isConst) const override {
        return new ValueGenericIf<T>(valueOfWholeText<T, CollectionText::refused>(text), isConst);
    }

private:
    static VelType* baseType() {
        if constexpr (!DeclaredEnum<T>)
            return typeOrNull<typename std::remove_cvref_t<decltype(schemaOf<T>)>::BaseType>();
        else
            return nullptr;
    }

    static VelType* inheritedType() {
        if constexpr (!DeclaredEnum<T> && !BuiltinType<T>)
            return typeOrNull<typename std::remove_cvref_t<decltype(schemaOf<T>)>::InheritedType>();
        else
            return nullptr;
    }

    template <class Other>
    static VelType* typeOrNull() {
        if constexpr (std::is_void_v<Other>)
            return nullptr;
        else
            return Other::_fwkType();
    }
};

} // namespace Vel
