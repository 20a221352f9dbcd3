#include <pinbuf/detail/Descriptor.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <type_traits>
#include <utility>

namespace pinbuf {
namespace {

static_assert(!std::is_copy_constructible_v<Descriptor> && !std::is_copy_assignable_v<Descriptor>);

int openNull() { return ::open("/dev/null", O_RDONLY | O_CLOEXEC); }

bool isOpen(int number) { return ::fcntl(number, F_GETFD) != -1; }

TEST(Descriptor, ClosesWhatItOwns) {
    const int number = openNull();
    {
        const Descriptor descriptor(number);
        EXPECT_TRUE(descriptor.isOpen());
        EXPECT_EQ(descriptor.number(), number);
    }
    EXPECT_FALSE(isOpen(number));
}

TEST(Descriptor, OwnsNothingWhenOpeningFailed) { EXPECT_FALSE(Descriptor(-1).isOpen()); }

TEST(Descriptor, PassesItsDescriptorOn) {
    const int number = openNull();
    Descriptor first(number);
    Descriptor second(std::move(first));
    EXPECT_EQ(second.number(), number);
    Descriptor third(-1);
    third = std::move(second);
    EXPECT_EQ(third.number(), number);
    EXPECT_TRUE(isOpen(number));
}

TEST(Descriptor, GivesItsDescriptorAway) {
    const int number = openNull();
    {
        Descriptor descriptor(number);
        EXPECT_EQ(descriptor.release(), number);
        EXPECT_FALSE(descriptor.isOpen());
    }
    EXPECT_TRUE(isOpen(number));
    ::close(number);
}

} // namespace
} // namespace pinbuf
