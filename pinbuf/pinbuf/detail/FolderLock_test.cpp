#include <pinbuf/detail/FolderLock.h>

#include <gtest/gtest.h>
#include <memory>
#include <pinbuf/detail/TestSupport.h>
#include <string>
#include <sys/file.h>
#include <thread>

namespace pinbuf {
namespace {

namespace fs = std::filesystem;
using test::Child;
using test::inChild;
using test::RegionFolder;
using test::StandardError;

class FolderLockTest : public testing::Test {
protected:
    // Whether another process could take the lock in that mode now.
    bool isFree(LockFile::Mode mode) const {
        return inChild([&] {
                   const Turn turn;
                   return LockFile::openOrMake(Folder::openOrMake(regions.path()))
                                  .tryLock(LockFile::folderByte, mode)
                              ? 1
                              : 0;
               }) == 1;
    }

    bool isFree() const { return isFree(LockFile::Mode::exclusive); }

    RegionFolder regions;
    Folder folder = Folder::openOrMake(regions.path());
};

TEST_F(FolderLockTest, ExcludesEverybodyOrOnlyThoseWhoChange) {
    {
        const FolderLock lock = FolderLock::toChange(folder);
        EXPECT_FALSE(isFree(LockFile::Mode::shared));
        EXPECT_FALSE(isFree(LockFile::Mode::exclusive));
    }
    EXPECT_TRUE(isFree());
    {
        const FolderLock lock = FolderLock::toRead(folder);
        EXPECT_TRUE(isFree(LockFile::Mode::shared));
        EXPECT_FALSE(isFree(LockFile::Mode::exclusive));
    }
    EXPECT_TRUE(isFree());
}

TEST_F(FolderLockTest, MakesNothingToLook) {
    { const FolderLock lock = FolderLock::toRead(folder); }
    EXPECT_TRUE(regions.leaves().empty());
    { const FolderLock lock = FolderLock::toChange(folder); }
    EXPECT_EQ(regions.leaves(), std::vector<std::string>{LockFile::leaf});
    EXPECT_EQ(RegionFolder::modeOf(regions.path(LockFile::leaf)), 0600U);
}

TEST_F(FolderLockTest, IsFirstForLookingAndThenForChanging) {
    { const FolderLock lock = FolderLock::toChange(folder); }
    EXPECT_EQ(inChild([&] {
                  const Folder own = Folder::openOrMake(regions.path());
                  { const FolderLock lock = FolderLock::toRead(own); }
                  const FolderLock lock = FolderLock::toChange(own);
                  return isFree(LockFile::Mode::shared) ? 1 : 0;
              }),
              0);
}

TEST_F(FolderLockTest, WaitsForAnotherThread) {
    int changes = 0; // read and written in two steps, which only the lock holds together
    const auto changeOften = [&] {
        const Folder own = Folder::openOrMake(regions.path());
        for (int i = 0; i < 200; ++i) {
            const FolderLock lock = FolderLock::toChange(own);
            const int seen = __atomic_load_n(&changes, __ATOMIC_RELAXED);
            std::this_thread::yield();
            __atomic_store_n(&changes, seen + 1, __ATOMIC_RELAXED);
        }
    };
    std::thread other(changeOften);
    changeOften();
    other.join();
    EXPECT_EQ(changes, 400);
}

TEST_F(FolderLockTest, IsFreedByAKill) {
    EXPECT_EQ(inChild([&] {
                  const FolderLock lock = FolderLock::toChange(folder);
                  ::raise(SIGKILL);
                  return 0;
              }),
              -SIGKILL);
    EXPECT_TRUE(isFree());
}

TEST_F(FolderLockTest, IsNotProlongedByAForkedProcess) {
    std::unique_ptr<Child> child;
    {
        const FolderLock lock = FolderLock::toChange(folder);
        child = std::make_unique<Child>([] { return true; }); // with all descriptors
    }
    EXPECT_TRUE(isFree());
}

TEST_F(FolderLockTest, DoesNotOutliveItsKilledOwnerInAForkedProcess) {
    int told[2];
    ASSERT_EQ(::pipe(told), 0);
    pid_t grandchild = -1;
    EXPECT_EQ(inChild([&] {
                  const FolderLock lock = FolderLock::toChange(folder);
                  grandchild = ::fork();
                  if (grandchild == 0) {
                      for (;;) ::pause(); // with all descriptors
                  }
                  if (::write(told[1], &grandchild, sizeof grandchild) < 0) return 1;
                  ::raise(SIGKILL);
                  return 0;
              }),
              -SIGKILL);
    ASSERT_EQ(::read(told[0], &grandchild, sizeof grandchild),
              static_cast<ssize_t>(sizeof grandchild));
    EXPECT_EQ(::kill(grandchild, 0), 0) << "it lives";
    EXPECT_TRUE(isFree());
    ::kill(grandchild, SIGKILL);
    ::close(told[0]);
    ::close(told[1]);
}

// Who may open the folder, as another user may where its mode permits, has no part in it.
TEST_F(FolderLockTest, IsNotThatOfWhoCanOpenTheFolderAlone) {
    RegionFolder::chmod(regions.path(), 0755);
    const int opened = ::open(regions.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(::flock(opened, LOCK_EX), 0);
    { const FolderLock lock = FolderLock::toChange(folder); }
    ::close(opened);
    if (!test::isRoot()) return; // needs a user who may become another one
    EXPECT_EQ(inChild([&] {
                  RegionFolder::chmod(fs::path(regions.path()).parent_path(), 0755);
                  if (::setresuid(test::nobody, test::nobody, test::nobody) != 0) return 1;
                  if (::open(regions.path().c_str(), O_RDONLY | O_DIRECTORY) < 0) return 2;
                  return ::open(regions.path(LockFile::leaf).c_str(), O_RDONLY) < 0 ? 0 : 3;
              }),
              0);
}

TEST_F(FolderLockTest, SaysAfterAWhileForWhomItWaits) {
    Child holder([&] {
        new FolderLock(FolderLock::toChange(folder)); // for the rest of its life
        return true;
    });
    const StandardError standardError;
    std::thread waiter([&] { const FolderLock lock = FolderLock::toChange(folder); });
    while (standardError.text().empty()) std::this_thread::yield();
    holder.end();
    waiter.join();
    EXPECT_EQ(standardError.text(), "pinbuf: waiting for the folder \"" + regions.path() +
                                        "\", which process " + std::to_string(holder.process()) +
                                        " has locked\n");
}

TEST_F(FolderLockTest, IsThatOfTheLockFileThatStandsInTheFolderAfterTheWait) {
    Child holder([&] {
        new FolderLock(FolderLock::toChange(folder));
        return true;
    });
    const StandardError standardError;
    std::thread waiter([&] {
        const FolderLock lock = FolderLock::toChange(folder);
        EXPECT_FALSE(isFree());
    });
    while (standardError.text().empty()) std::this_thread::yield();
    fs::remove(regions.path(LockFile::leaf));
    holder.end();
    waiter.join();
    EXPECT_TRUE(regions.has(LockFile::leaf));
}

} // namespace
} // namespace pinbuf
