#include <pinbuf/detail/FolderFile.h>

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <pinbuf/detail/Integers.h>
#include <pinbuf/detail/TestSupport.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>

namespace pinbuf {
namespace {

namespace fs = std::filesystem;
using test::failureOf;
using test::RegionFolder;

class FolderFileTest : public testing::Test {
protected:
    std::string openFailure(const std::string& leaf) const {
        return failureOf([&] { FolderFile::open(folder, leaf); });
    }

    std::string quotedPath(const std::string& leaf) const {
        return "\"" + regions.path(leaf) + "\"";
    }

    RegionFolder regions;
    Folder folder = Folder::openOrMake(regions.path());
};

using FolderFileOpen = FolderFileTest;

TEST_F(FolderFileOpen, FindsWhatIsThere) {
    regions.put("f", "12345");
    const auto file = FolderFile::open(folder, "f");
    ASSERT_TRUE(file.has_value());
    EXPECT_EQ(file->sizeBytes(), 5U);
    EXPECT_EQ(::fcntl(file->descriptor(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

TEST_F(FolderFileOpen, IsEmptyWhenNothingIsThere) {
    EXPECT_FALSE(FolderFile::open(folder, "f").has_value());
    EXPECT_FALSE(FolderFile::openToRead(folder, "f").has_value());
    EXPECT_FALSE(regions.has("f"));
}

TEST_F(FolderFileOpen, FollowsNoLink) {
    regions.put("target", "12345");
    fs::create_symlink("target", regions.path("link"));
    fs::create_symlink("nothing", regions.path("dangling"));
    for (const char* leaf : {"link", "dangling"}) {
        EXPECT_EQ(openFailure(leaf), quotedPath(leaf) + " is a symbolic link");
        EXPECT_EQ(failureOf([&] { FolderFile::openToRead(folder, leaf); }),
                  quotedPath(leaf) + " is a symbolic link");
    }
}

TEST_F(FolderFileOpen, TakesRegularFilesOnly) {
    fs::create_directory(regions.path("directory"));
    EXPECT_EQ(openFailure("directory"), quotedPath("directory") + " is not a regular file");
    EXPECT_EQ(failureOf([&] { FolderFile::openToRead(folder, "directory"); }),
              quotedPath("directory") + " is not a regular file");
    ASSERT_EQ(::mkfifo(regions.path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(openFailure("pipe"), quotedPath("pipe") + " is not a regular file")
        << "and does not wait for a writer";
    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    regions.path("socket").copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(openFailure("socket"), quotedPath("socket") + " is not a regular file");
    ::close(listener);
}

TEST_F(FolderFileOpen, TakesTheUsersFilesOnly) {
    if (!test::isRoot()) GTEST_SKIP() << "only root can give a file away";
    regions.put("f", "12345");
    ASSERT_EQ(::chown(regions.path("f").c_str(), test::nobody, test::nobody), 0);
    EXPECT_EQ(openFailure("f"), quotedPath("f") + " belongs to user 65534, not to user 0");
    EXPECT_TRUE(FolderFile::openToRead(folder, "f").has_value()) << "looking is allowed";
}

TEST_F(FolderFileOpen, SaysWhyAFileCannotBeOpened) {
    regions.put("f", "12345");
    RegionFolder::chmod(regions.path("f"), 0);
    const std::string expected = "cannot open " + quotedPath("f") + ": Permission denied";
    if (!test::isRoot()) {
        EXPECT_EQ(openFailure("f"), expected);
        return;
    }
    ASSERT_EQ(::chown(regions.path("f").c_str(), test::nobody, test::nobody), 0);
    ASSERT_EQ(::chown(regions.path().c_str(), test::nobody, test::nobody), 0);
    EXPECT_EQ(test::inChild([&] { // root may open everything
                  if (::setresuid(test::nobody, test::nobody, test::nobody) != 0) return 2;
                  return openFailure("f") == expected ? 0 : 1;
              }),
              0);
}

TEST_F(FolderFileTest, TellsFilesApartByIdentityAndNotByName) {
    regions.put("a", "1");
    regions.put("b", "1");
    const auto a = FolderFile::open(folder, "a");
    const auto b = FolderFile::open(folder, "b");
    fs::rename(regions.path("a"), regions.path("c"));
    EXPECT_EQ(a->status().identity, FolderFile::open(folder, "c")->status().identity);
    EXPECT_NE(a->status().identity, b->status().identity);
}

TEST_F(FolderFileTest, BecomesPrivate) {
    regions.put("f", "1");
    for (const unsigned before : {0644U, 0777U, 0600U, 0666U}) {
        RegionFolder::chmod(regions.path("f"), before);
        FolderFile::open(folder, "f")->makePrivate();
        EXPECT_EQ(RegionFolder::modeOf(regions.path("f")), 0600U) << before;
    }
}

TEST_F(FolderFileTest, MovesExactlyTheBytesAskedFor) {
    regions.put("f", "0123456789");
    const auto file = FolderFile::open(folder, "f");
    file->writeAt(4, "abc", 3);
    EXPECT_EQ(regions.bytes("f"), "0123abc789");
    std::array<char, 5> read{};
    file->readAt(3, read.data(), read.size());
    EXPECT_EQ(std::string(read.data(), read.size()), "3abc7");
    EXPECT_EQ(failureOf([&] { file->readAt(6, read.data(), read.size()); }),
              "cannot read " + quotedPath("f") + ": it ended early");
}

TEST_F(FolderFileTest, SaysWhyItCannotBeWritten) {
    regions.put("f", "0123456789");
    const auto file = FolderFile::openToRead(folder, "f");
    EXPECT_EQ(failureOf([&] { file->writeAt(0, "x", 1); }),
              "cannot write " + quotedPath("f") + ": Bad file descriptor");
    EXPECT_EQ(regions.bytes("f"), "0123456789");
}

using Reserving = FolderFileTest;

struct Step {
    U64 offsetBytes;
    U64 lengthBytes;
    bool operator==(const Step&) const = default;
};

std::vector<Step>& steps() {
    static std::vector<Step> recorded;
    return recorded;
}

TEST_F(Reserving, GoesInStepsOfAMegabyte) {
    steps().clear();
    reserveRange(-1, 10, 10 + 2 * 1048576 + 5, [](int, U64 offset, U64 length) {
        steps().push_back({offset, length});
        return 0;
    });
    EXPECT_EQ(steps(), (std::vector<Step>{{10, 1048576}, {1048586, 1048576}, {2097162, 5}}));
}

TEST_F(Reserving, RepeatsAnInterruptedStepOnly) {
    steps().clear();
    reserveRange(-1, 0, 1048577, [](int, U64 offset, U64 length) {
        steps().push_back({offset, length});
        return steps().size() < 3 ? EINTR : 0;
    });
    EXPECT_EQ(steps(), (std::vector<Step>{{0, 1048576}, {0, 1048576}, {0, 1048576}, {1048576, 1}}));
}

TEST_F(Reserving, StopsAtTheFirstFailure) {
    steps().clear();
    EXPECT_EQ(failureOf([] {
                  reserveRange(-1, 0, 3 * 1048576, [](int, U64 offset, U64 length) {
                      steps().push_back({offset, length});
                      return steps().size() == 2 ? ENOSPC : 0;
                  });
              }),
              "cannot reserve 3145728 bytes: No space left on device");
    EXPECT_EQ(steps().size(), 2U);
}

TEST_F(Reserving, GivesZerosWithMemoryBehindThem) {
    regions.put("f", "");
    reserveRange(FolderFile::open(folder, "f")->descriptor(), 0, 10000);
    EXPECT_EQ(regions.bytes("f"), std::string(10000, '\0'));
    EXPECT_FALSE(FolderFile::open(folder, "f")->status().hasHoles);
}

TEST_F(Reserving, FillsHolesAndChangesNothingElse) {
    regions.put("f", "begin");
    fs::resize_file(regions.path("f"), 50000);
    {
        std::fstream file(regions.path("f"), std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(49997);
        file << "end";
    }
    const std::string before = regions.bytes("f");
    const auto file = FolderFile::open(folder, "f");
    ASSERT_TRUE(file->status().hasHoles);
    reserveHoles(*file);
    EXPECT_FALSE(FolderFile::open(folder, "f")->status().hasHoles);
    EXPECT_EQ(regions.bytes("f"), before);
}

class Unfinished : public FolderFileTest {
protected:
    static constexpr const char* leaf = ".unfinished";
};

TEST_F(Unfinished, LeavesNothingBehindUnlessPublished) {
    {
        const UnfinishedFile file(folder, leaf);
        EXPECT_TRUE(regions.has(leaf));
    }
    EXPECT_TRUE(regions.leaves().empty());
}

TEST_F(Unfinished, GetsItsNameInOneStep) {
    {
        UnfinishedFile file(folder, leaf);
        file.file().writeAt(0, "whole", 5);
        EXPECT_EQ(regions.leaves(), std::vector<std::string>{leaf});
        file.publishAs("f");
    }
    EXPECT_EQ(regions.leaves(), std::vector<std::string>{"f"});
    EXPECT_EQ(regions.bytes("f"), "whole");
}

TEST_F(Unfinished, ReplacesNothing) {
    regions.put("f", "precious");
    {
        UnfinishedFile file(folder, leaf);
        EXPECT_EQ(failureOf([&] { file.publishAs("f"); }),
                  "cannot make " + quotedPath("f") + ": File exists");
    }
    EXPECT_EQ(regions.leaves(), std::vector<std::string>{"f"});
    EXPECT_EQ(regions.bytes("f"), "precious");
}

TEST_F(Unfinished, BeginsEmptyWhateverAKillLeft) {
    regions.put(leaf, "left over");
    const UnfinishedFile file(folder, leaf);
    EXPECT_EQ(regions.bytes(leaf), "");
}

TEST_F(Unfinished, RemovesALinkAndNotItsTarget) {
    regions.put("target", "precious");
    fs::create_symlink("target", regions.path(leaf));
    {
        UnfinishedFile file(folder, leaf);
        file.file().writeAt(0, "x", 1);
    }
    EXPECT_EQ(regions.leaves(), std::vector<std::string>{"target"});
    EXPECT_EQ(regions.bytes("target"), "precious");
}

TEST_F(Unfinished, CannotBeMadeWhereADirectoryStands) {
    fs::create_directory(regions.path(leaf));
    EXPECT_EQ(failureOf([&] { UnfinishedFile file(folder, leaf); }),
              "cannot remove " + quotedPath(leaf) + ": Is a directory");
}

TEST_F(Unfinished, BelongsToItsOwnerAloneWhateverTheUmask) {
    for (const mode_t mask : {0U, 0777U, 077U}) {
        const mode_t before = ::umask(mask);
        const UnfinishedFile file(folder, leaf);
        ::umask(before);
        EXPECT_EQ(RegionFolder::modeOf(regions.path(leaf)), 0600U) << mask;
    }
}

} // namespace
} // namespace pinbuf
