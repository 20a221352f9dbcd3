#include <Ferrolog/detail/openFile.h>

#include <Ferrolog/testing/TestFile.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/resource.h>

namespace {

using Ferrolog::detail::openFile;
using namespace Ferrolog::testing;

TEST(OpenFile, LeavesTheStandardStreamsAlone) {
    TestFile file;
    EXPECT_EQ(inChild([&] {
                  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
                      ::close(stream);
                      const int descriptor = openFile(file.path.c_str(), O_RDWR | O_CREAT, 0600);
                      EXPECT_GT(descriptor, STDERR_FILENO);
                      EXPECT_EQ(::fcntl(descriptor, F_GETFD), FD_CLOEXEC);
                      EXPECT_EQ(::fcntl(stream, F_GETFD), -1);
                  }
              }),
              0);
}

TEST(OpenFile, SaysWhyThereIsNoDescriptor) {
    TestFile file;
    EXPECT_EQ(openFile(file.path.c_str(), O_RDWR), -1);
    EXPECT_EQ(errno, ENOENT);
    write(file.path, "");
    EXPECT_EQ(inChild([&] {
                  ::close(STDIN_FILENO);
                  const rlimit limit{3, 3}; // 0, 1 and 2
                  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
                  EXPECT_EQ(openFile(file.path.c_str(), O_RDWR), -1);
                  EXPECT_EQ(errno, EMFILE); // there is no number above 2
                  EXPECT_EQ(::fcntl(STDIN_FILENO, F_GETFD), -1);
              }),
              0);
}

} // namespace
