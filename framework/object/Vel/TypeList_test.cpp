#include <Vel/TypeList.h>

#include <gtest/gtest.h>
#include <string>
#include <tuple>
#include <type_traits>

namespace Vel {
namespace {

using Numbers = TypeList<char, int, float>;

TEST(TypeList, KeepsItsOrder) {
    static_assert(Numbers::size == 3);
    static_assert(std::is_same_v<Numbers::As<std::tuple>, std::tuple<char, int, float>>);
    static_assert(std::is_same_v<TypeList<>::As<std::tuple>, std::tuple<>>);
    std::string sizes;
    Numbers::forEach([&sizes]<class T>() {
        sizes += std::is_integral_v<T> ? "i" : "f";
        sizes += std::to_string(sizeof(T));
    });
    EXPECT_EQ(sizes, "i1i4f4");
}

TEST(TypeList, ListsAreJoinedInTheirOrder) {
    static_assert(std::is_same_v<JoinedTypes<>, TypeList<>>);
    static_assert(std::is_same_v<JoinedTypes<Numbers>, Numbers>);
    static_assert(std::is_same_v<JoinedTypes<TypeList<bool>, TypeList<>, Numbers>,
                                 TypeList<bool, char, int, float>>);
}

TEST(TypeList, ChoosesTypesByATestOfEach) {
    static_assert(std::is_same_v<TypesThat<std::is_integral, Numbers>, TypeList<char, int>>);
    static_assert(std::is_same_v<TypesThat<std::is_pointer, Numbers>, TypeList<>>);
}

} // namespace
} // namespace Vel
