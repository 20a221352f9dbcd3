#include <pinbuf/detail/LockFile.h>

#include <gtest/gtest.h>
#include <pinbuf/detail/Integers.h>
#include <pinbuf/detail/TestSupport.h>
#include <pinbuf/detail/Turn.h>
#include <string>
#include <sys/stat.h>

namespace pinbuf {
namespace {

namespace fs = std::filesystem;
using test::failureOf;
using test::inChild;
using test::RegionFolder;

class LockFileTest : public testing::Test {
protected:
    Folder folder() const { return Folder::openOrMake(regions.path()); }

    static LockFile::Hold hold(const Folder& folder, U64 number) {
        const Turn turn;
        return LockFile::openOrMake(folder).hold(number);
    }

    static std::size_t openDescriptors() {
        const fs::directory_iterator all("/proc/self/fd");
        return static_cast<std::size_t>(std::distance(fs::begin(all), fs::end(all)));
    }

    RegionFolder regions;
};

TEST_F(LockFileTest, IsMadeForItsOwnerAloneWhateverTheUmask) {
    for (const mode_t mask : {0U, 0777U, 077U}) {
        regions.clear();
        const Folder made = folder();
        const mode_t before = ::umask(mask);
        hold(made, 1);
        ::umask(before);
        EXPECT_EQ(RegionFolder::modeOf(regions.path(LockFile::leaf)), 0600U) << mask;
    }
}

// A process that was killed between making the file and giving its owner access leaves it so.
TEST_F(LockFileTest, IsRepairedWhenItsOwnerCannotOpenIt) {
    EXPECT_EQ(inChild([&] {
                  RegionFolder::chmod(fs::path(regions.path()).parent_path(), 0777);
                  if (test::isRoot() && // root may open everything
                      ::setresuid(test::nobody, test::nobody, test::nobody) != 0) {
                      return 1;
                  }
                  const Folder made = folder();
                  regions.put(LockFile::leaf, "");
                  RegionFolder::chmod(regions.path(LockFile::leaf), 0);
                  if (!hold(made, 1).isNew) return 2;
                  return RegionFolder::modeOf(regions.path(LockFile::leaf)) == 0600 ? 0 : 3;
              }),
              0);
}

TEST_F(LockFileTest, IsARegularFileOfTheUser) {
    const Folder made = folder();
    const std::string path = "\"" + regions.path(LockFile::leaf) + "\"";
    const auto failure = [&] { return failureOf([&] { hold(made, 1); }); };
    fs::create_directory(regions.path(LockFile::leaf));
    EXPECT_EQ(failure(), path + " is not a regular file");
    fs::remove(regions.path(LockFile::leaf));
    fs::create_symlink("nothing", regions.path(LockFile::leaf));
    EXPECT_EQ(failure(), path + " is a symbolic link");
    EXPECT_FALSE(regions.has("nothing"));
    fs::remove(regions.path(LockFile::leaf));
    if (!test::isRoot()) return; // only root can give a file away
    regions.put(LockFile::leaf, "");
    ASSERT_EQ(::chown(regions.path(LockFile::leaf).c_str(), test::nobody, test::nobody), 0);
    EXPECT_EQ(failure(), path + " belongs to user 65534, not to user 0");
}

TEST_F(LockFileTest, IsOpenedOnceForAProcess) {
    const Folder made = folder();
    hold(made, 1);
    const std::size_t before = openDescriptors();
    for (U64 number = 2; number < 50; ++number) hold(folder(), number);
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(LockFileTest, IsClosedAfterItsFolderHasGone) {
    hold(folder(), 1);
    const std::size_t before = openDescriptors();
    for (int round = 0; round < 5; ++round) {
        regions.clear();
        EXPECT_TRUE(hold(folder(), 1).isNew);
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(LockFileTest, KnowsTheHoldsOfSeveralFolders) {
    hold(folder(), 1);
    const Folder other = Folder::openOrMake(regions.beside("other"));
    EXPECT_TRUE(hold(other, 1).isNew);
    EXPECT_FALSE(hold(folder(), 1).isNew);
    EXPECT_FALSE(hold(other, 1).isNew);
}

TEST_F(LockFileTest, HasAByteForEveryInode) {
    const Folder made = folder();
    for (const U64 number : {1ULL, (1ULL << 32U) + 1, (1ULL << 63U) - 1}) {
        EXPECT_TRUE(hold(made, number).isNew) << number;
        EXPECT_FALSE(hold(made, number).isNew) << number;
    }
}

} // namespace
} // namespace pinbuf
