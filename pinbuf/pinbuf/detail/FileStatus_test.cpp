#include <pinbuf/detail/FileStatus.h>

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pinbuf/detail/TestSupport.h>
#include <string>

namespace pinbuf {
namespace {

namespace fs = std::filesystem;
using test::RegionFolder;

class FileStatusTest : public testing::Test {
protected:
    FileStatusTest() { regions.make(); }

    std::optional<FileStatus> statusOfPath(const std::string& leaf) const {
        return statusOf(AT_FDCWD, regions.path(leaf).c_str());
    }

    RegionFolder regions;
};

TEST_F(FileStatusTest, SaysSizeModeAndOwner) {
    regions.put("f", "12345");
    RegionFolder::chmod(regions.path("f"), 0640);
    const std::optional<FileStatus> status = statusOfPath("f");
    ASSERT_TRUE(status.has_value());
    EXPECT_EQ(status->sizeBytes, 5U);
    EXPECT_EQ(status->mode, 0640U);
    EXPECT_EQ(status->owner, ::geteuid());
    EXPECT_TRUE(status->isRegular && status->isNamed);
    EXPECT_FALSE(status->isLink || status->hasHoles);
}

TEST_F(FileStatusTest, KnowsSizesOfMoreThan32Bits) {
    regions.put("f", "");
    fs::resize_file(regions.path("f"), (1ULL << 32U) + 5);
    EXPECT_EQ(statusOfPath("f")->sizeBytes, (1ULL << 32U) + 5);
    EXPECT_TRUE(statusOfPath("f")->hasHoles);
}

TEST_F(FileStatusTest, IsOfALinkAndNotOfItsTarget) {
    regions.put("target", "12345");
    fs::create_symlink("target", regions.path("link"));
    EXPECT_TRUE(statusOfPath("link")->isLink);
    EXPECT_FALSE(statusOfPath("link")->isRegular);
    EXPECT_FALSE(statusOfPath("")->isRegular) << "a folder";
}

TEST_F(FileStatusTest, OfAnOpenFileIsThatOfItsName) {
    regions.put("f", "12345");
    const int file = ::open(regions.path("f").c_str(), O_RDONLY | O_CLOEXEC);
    fs::rename(regions.path("f"), regions.path("g"));
    regions.put("f", "another");
    EXPECT_EQ(statusOf(file)->identity, statusOfPath("g")->identity);
    EXPECT_NE(statusOf(file)->identity, statusOfPath("f")->identity);
    fs::remove(regions.path("g"));
    EXPECT_FALSE(statusOf(file)->isNamed);
    ::close(file);
}

TEST_F(FileStatusTest, IsEmptyWithAReasonWhenThereIsNoFile) {
    EXPECT_FALSE(statusOfPath("f").has_value());
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(statusOf(-1).has_value());
    EXPECT_EQ(errno, EBADF);
}

} // namespace
} // namespace pinbuf
