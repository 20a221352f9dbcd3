#include <Vel/Name.h>

#include <gtest/gtest.h>
#include <set>
#include <string>

namespace Vel {
namespace {

TEST(NameKey, EqualsThatOfTheSameNameElsewhere) {
    std::string name;
    for (unsigned length = 0; length <= 40; ++length) {
        const std::string copy = "x" + name;
        const NameKey key{Name(name)};
        EXPECT_EQ(key, NameKey(Name(copy).substr(1)));
        EXPECT_EQ(key.hash(), NameKey(Name(copy).substr(1)).hash());
        name += static_cast<char>('a' + length % 26);
    }
}

TEST(NameKey, DiffersWhereverOneCharacterDoes) {
    std::string name;
    for (unsigned length = 0; length <= 40; ++length) {
        for (unsigned at = 0; at < length; ++at) {
            std::string other = name;
            other[at] = '_';
            EXPECT_NE(NameKey(name), NameKey(other)) << name << ", " << other;
        }
        const std::string longer = name + "a";
        EXPECT_NE(NameKey(name), NameKey(longer)) << name;
        name += static_cast<char>('a' + length % 26);
    }
}

TEST(NameKey, TellsNumberedNamesApartByTheirHash) {
    std::set<U32> places;
    for (unsigned i = 0; i < 100; ++i)
        places.insert(NameKey("counter" + std::to_string(100 + i) + "Index").hash() >> 20);
    EXPECT_GT(places.size(), 80u) << "of 100 in 4096 places";
}

} // namespace
} // namespace Vel
