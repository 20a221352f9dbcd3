// Enum.h - an enumeration from one list of names, numbered from 0.
//
//     VEL_ENUM(Net, Command, writeCmd, readCmd, bulkWriteCmd);          // in namespace Net
//     VEL_ENUM_FUNCTIONS(NET_API, Command);                             // its functions, declared
//     VEL_DEFINE_ENUM(Command)                                            // in its .cpp
//
// Names:   alone: an enumerator with a value of its own is refused by the compiler.
// Storage: signed 32 bits; the default is the first name. A variable may hold an undeclared number:
//          it prints as Command(9), and no conversion ever makes one.
// Errors:  CommandInstance and the readers throw RangeException with the short name alone,
//          "Command".
// Test: the enumerations' tests.
#pragma once

#include <Vel/Integers.h>
#include <array>
#include <cstddef>
#include <string_view>

namespace Vel {

template <std::size_t count>
class EnumSchema {
public:
    // `list` is the names as the macro spelled them: separated by a comma and blanks.
    constexpr EnumSchema(std::string_view qualifiedName, std::string_view shortName,
                         std::string_view list)
        : qualifiedName_(qualifiedName), shortName_(shortName) {
        for (std::string_view& name : names_) {
            const std::size_t comma = list.find(',');
            name = list.substr(0, comma);
            list.remove_prefix(comma == std::string_view::npos ? list.size() : comma + 1);
            while (!list.empty() && list.front() == ' ') list.remove_prefix(1);
        }
    }

    constexpr std::string_view qualifiedName() const { return qualifiedName_; }

    constexpr std::string_view shortName() const { return shortName_; }

    // In numeric order, from 0.
    constexpr const std::array<std::string_view, count>& names() const { return names_; }

    // The name of a number; empty for an undeclared one.
    constexpr std::string_view name(S32 number) const {
        const auto index = static_cast<U32>(number);
        return index < count ? names_[index] : std::string_view();
    }

    // The number of a name, exactly as written; -1 for any other text.
    constexpr S32 number(std::string_view name) const {
        for (std::size_t i = 0; i < count; ++i)
            if (names_[i] == name) return static_cast<S32>(i);
        return -1;
    }

    // Characters of the longest name.
    constexpr std::size_t longestName() const {
        std::size_t most = 0;
        for (const std::string_view name : names_) most = name.size() > most ? name.size() : most;
        return most;
    }

    // Characters of the longest text form between its quotes, an undeclared number's included.
    constexpr std::size_t longest() const {
        const std::size_t undeclared = shortName_.size() + std::string_view("(-2147483648)").size();
        return longestName() > undeclared ? longestName() : undeclared;
    }

private:
    std::string_view qualifiedName_;
    std::string_view shortName_;
    std::array<std::string_view, count> names_{};
};

constexpr std::size_t enumeratorCount(std::string_view list) {
    std::size_t count = 1;
    for (const char c : list) count += c == ',' ? 1 : 0;
    return count;
}

// Whether a list of enumerators is one of names alone.
constexpr bool areBareNames(std::string_view list) {
    char before = ',';
    for (const char c : list) {
        const bool isOfName =
            c == '_' || (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (!isOfName && c != ' ' && (c != ',' || before == ',')) return false;
        if (c != ' ') before = c;
    }
    return before != ',';
}

// The schema of an enumeration that VEL_ENUM made.
template <class E>
inline constexpr auto enumSchema = velEnumSchema(E());

template <class E>
concept DeclaredEnum = requires {
    velEnumSchema(E());
};

} // namespace Vel

#define VEL_ENUM(Namespace, Enum, ...)                                                             \
    static_assert(::Vel::areBareNames(#__VA_ARGS__),                                               \
                  "enumerators of " #Namespace "::" #Enum                                          \
                  " are names alone, numbered from 0: " #__VA_ARGS__);                             \
    enum class Enum : ::Vel::S32 { __VA_ARGS__ };                                                  \
    constexpr auto velEnumSchema(Enum) {                                                           \
        return ::Vel::EnumSchema<::Vel::enumeratorCount(#__VA_ARGS__)>(#Namespace "::" #Enum,      \
                                                                       #Enum, #__VA_ARGS__);       \
    }                                                                                              \
    static_assert(true)
