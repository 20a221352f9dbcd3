#include <pinbuf/detail/Descriptor.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pinbuf/detail/TestSupport.h>
#include <sys/resource.h>
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

// With a standard stream closed, the kernel gives its number to the next file.
TEST(Descriptor, IsNeverAStandardStream) {
    EXPECT_EQ(test::inChild([] {
                  for (int number = 0; number <= 2; ++number) ::close(number);
                  const Descriptor first(openNull());
                  const Descriptor second(openNull());
                  if (first.number() <= 2 || second.number() <= 2) return 1;
                  if (isOpen(0) || isOpen(1) || isOpen(2)) return 2;
                  return ::fcntl(first.number(), F_GETFD) == FD_CLOEXEC ? 0 : 3;
              }),
              0);
}

TEST(Descriptor, OwnsNothingWhenThereIsNoOtherNumber) {
    EXPECT_EQ(test::inChild([] {
                  const rlimit limit{3, 3};
                  ::close(0);
                  if (::setrlimit(RLIMIT_NOFILE, &limit) != 0) return 1;
                  const Descriptor descriptor(openNull());
                  const int error = errno;
                  if (descriptor.isOpen() || isOpen(0)) return 2;
                  return error == EMFILE ? 0 : 3;
              }),
              0);
}

} // namespace
} // namespace pinbuf
