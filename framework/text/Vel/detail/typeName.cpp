#include <Vel/detail/typeName.h>

#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <ostream>

namespace Vel::detail {

namespace {

struct Free {
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc): the demangler gives what malloc() gave
    void operator()(char* text) const noexcept { std::free(text); }
};

// Null where there is no memory.
std::unique_ptr<char, Free> demangled(const std::type_info& type) noexcept {
    return std::unique_ptr<char, Free>(abi::__cxa_demangle(type.name(), nullptr, nullptr, nullptr));
}

} // namespace

String8 typeName(const std::type_info& type) {
    if (type == typeid(String8)) return "String8"; // its template name says nothing to a user
    const auto plain = demangled(type);
    return plain != nullptr ? String8(plain.get()) : String8(type.name());
}

void writeTypeName(std::ostream& out, const std::type_info& type) noexcept {
    const auto plain = demangled(type);
    out << (plain != nullptr ? plain.get() : type.name());
}

} // namespace Vel::detail
