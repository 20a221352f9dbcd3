#include <Vel/Builtin.h>

#include <Vel/Integers.h>
#include <Vel/PtrInterface.h>
#include <Vel/detail/builtinTypes.h>
#include <Vel/value/ValueType.h>

namespace Vel {

namespace {

template <class T>
constexpr Name builtinName = {};

template <>
constexpr Name builtinName<bool> = "bool";
template <>
constexpr Name builtinName<int> = "int";
template <>
constexpr Name builtinName<unsigned char> = "U8";
template <>
constexpr Name builtinName<unsigned short> = "U16";
template <>
constexpr Name builtinName<unsigned> = "U32";
template <>
constexpr Name builtinName<unsigned long long> = "U64";
template <>
constexpr Name builtinName<BytePtr> = "Vel::BytePtr";
template <>
constexpr Name builtinName<void*> = "Vel::VoidPtr";

} // namespace

template <class T>
VelType* Builtin<T>::_fwkType() {
    static VelType* const type = [] {
        VelType* const made = new ValueType<T>(builtinName<T>, builtinName<T>, nullptr);
        made->isValueIs(true);
        made->hasGenericIfSupportIs(true);
        made->sizeIs(sizeof(T));
        return made;
    }();
    return type;
}

template <class T>
Ptr<GenericIf> Builtin<T>::genericIf(const T& value, bool isConst) {
    return new ValueGenericIf<T>(value, isConst);
}

template struct Builtin<bool>;
template struct Builtin<int>;
template struct Builtin<unsigned char>;
template struct Builtin<unsigned short>;
template struct Builtin<unsigned>;
template struct Builtin<unsigned long long>;
template struct Builtin<BytePtr>;
template struct Builtin<void*>;

std::vector<VelType*> detail::builtinTypes() {
    return {Builtin<bool>::_fwkType(),    Builtin<int>::_fwkType(),   Builtin<U8>::_fwkType(),
            Builtin<U16>::_fwkType(),     Builtin<U32>::_fwkType(),   Builtin<U64>::_fwkType(),
            Builtin<BytePtr>::_fwkType(), Builtin<void*>::_fwkType(), PtrInterface::_fwkType()};
}

} // namespace Vel
