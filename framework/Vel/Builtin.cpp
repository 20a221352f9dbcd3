#include <Vel/Builtin.h>

namespace Vel {

namespace {

template <class T>
constexpr const char* builtinName = nullptr;

template <>
constexpr const char* builtinName<bool> = "bool";
template <>
constexpr const char* builtinName<int> = "int";
template <>
constexpr const char* builtinName<unsigned char> = "U8";
template <>
constexpr const char* builtinName<unsigned short> = "U16";
template <>
constexpr const char* builtinName<unsigned> = "U32";
template <>
constexpr const char* builtinName<unsigned long long> = "U64";
template <>
constexpr const char* builtinName<BytePtr> = "Vel::BytePtr";
template <>
constexpr const char* builtinName<void*> = "Vel::VoidPtr";

} // namespace

template <class T>
VelType* Builtin<T>::_fwkType() {
    static auto* const type = new VelType(builtinName<T>, nullptr);
    return type;
}

template struct Builtin<bool>;
template struct Builtin<int>;
template struct Builtin<unsigned char>;
template struct Builtin<unsigned short>;
template struct Builtin<unsigned>;
template struct Builtin<unsigned long long>;
template struct Builtin<BytePtr>;
template struct Builtin<void*>;

} // namespace Vel
