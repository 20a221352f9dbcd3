#include <Vel/detail/typeName.h>

#include <cstdlib>
#include <cxxabi.h>
#include <memory>

namespace Vel::detail {

String8 typeName(const std::type_info& type) {
    if (type == typeid(String8)) return "String8"; // its template name says nothing to a user
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> plain(
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
    return status == 0 ? String8(plain.get()) : String8(type.name());
}

} // namespace Vel::detail
