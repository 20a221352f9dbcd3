// DefineModule.h - VEL_MODULE(routine, list): what a module's source file says; see Module.h. The
// list is a TypeList, or the types themselves.
//
// Test: Module_test.cpp.
#pragma once

#include <Vel/Module.h>
#include <Vel/Name.h>
#include <Vel/TypeList.h>
#include <Vel/value/Describe.h>
#include <array>
#include <cstddef>

namespace Vel::detail {

template <class... Types>
inline constexpr std::array<const TypeDescription*, sizeof...(Types)> moduleTypes{
    &descriptionOf<Types>...};

// The names of a module's types as the section holds them.
template <class... Types>
class ModuleNames {
    static constexpr std::size_t size = (0 + ... + (qualifiedNameOf<Types>().size() + 1));

public:
    constexpr ModuleNames() {
        constexpr auto& types = moduleTypes<Types...>;
        std::size_t at = 0;
        for (std::size_t first = 0, last = 0; first < types.size(); first = last) {
            while (last < types.size() && types[last]->nameSpace() == types[first]->nameSpace())
                ++last;
            for (std::size_t i = last; i > first; --i) {
                for (const char c : types[i - 1]->qualifiedName) chars_[at++] = c;
                chars_[at++] = '\0';
            }
        }
    }

private:
    char chars_[size]{};
};

template <class List>
struct ModuleOf;

template <class... Types>
struct ModuleOf<TypeList<Types...>> {
    using Names = ModuleNames<Types...>;

    static constexpr const auto& types = moduleTypes<Types...>;
};

} // namespace Vel::detail

// The section is kept when the linker drops what nothing refers to; a module's names start on a
// boundary of their own.
#define VEL_MODULE(routine, ...)                                                                   \
    namespace {                                                                                    \
    using routine##Types = ::Vel::detail::ModuleOf<::Vel::detail::ListOf<__VA_ARGS__>::List>;      \
    [[gnu::section(".vel.type"), gnu::used, gnu::retain]] alignas(16) constinit routine            \
        ##Types::Names routine##Names;                                                             \
    constinit ::Vel::Module routine##Module(routine##Types::types);                                \
    [[gnu::constructor]] void routine##AtLoad() { routine##Module.load(); }                        \
    }                                                                                              \
    extern "C" void routine() { routine##Module.registerTypes(); }
