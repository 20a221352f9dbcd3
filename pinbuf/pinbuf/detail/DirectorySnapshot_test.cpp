#include <pinbuf/detail/DirectorySnapshot.h>

#include <gtest/gtest.h>
#include <pinbuf/detail/TestSupport.h>
#include <pinbuf/detail/Turn.h>
#include <string>

namespace pinbuf {
namespace {

using test::RegionFolder;

class DirectorySnapshotTest : public testing::Test {
protected:
    std::unique_ptr<DirectorySnapshot> of(const Folder& its) const {
        regions.put(".regions", "");
        return std::unique_ptr<DirectorySnapshot>(
            new DirectorySnapshot{its.identity(), *FolderFile::open(its, ".regions"), true, 0,
                                  DirectoryHeader{}, DirectoryIndex({})});
    }

    RegionFolder regions;
    Folder folder = Folder::openOrMake(regions.path());
};

TEST_F(DirectorySnapshotTest, IsRecalledOnce) {
    const Turn turn;
    auto snapshot = of(folder);
    const DirectorySnapshot* const made = snapshot.get();
    DirectorySnapshot::remember(std::move(snapshot));
    EXPECT_EQ(DirectorySnapshot::recall(folder.identity()).get(), made);
    EXPECT_EQ(DirectorySnapshot::recall(folder.identity()), nullptr);
}

TEST_F(DirectorySnapshotTest, IsRecalledForItsFolderOnly) {
    const Turn turn;
    const Folder other = Folder::openOrMake(regions.beside("other"));
    DirectorySnapshot::remember(of(folder));
    EXPECT_EQ(DirectorySnapshot::recall(other.identity()), nullptr);
    EXPECT_NE(DirectorySnapshot::recall(folder.identity()), nullptr);
}

TEST_F(DirectorySnapshotTest, KnowsHowItsFileIsNow) {
    const Turn turn;
    DirectorySnapshot::remember(of(folder));
    regions.put(".regions", "12345");
    EXPECT_EQ(DirectorySnapshot::recall(folder.identity())->file.sizeBytes(), 5U);
}

TEST_F(DirectorySnapshotTest, IsNotRecalledWhenSomebodyClosedItsFile) {
    const Turn turn;
    for (const bool isTaken : {false, true}) {
        auto snapshot = of(folder);
        const int number = snapshot->file.descriptor();
        DirectorySnapshot::remember(std::move(snapshot));
        ::close(number);
        const int null = isTaken ? ::open("/dev/null", O_RDONLY | O_CLOEXEC) : -1;
        EXPECT_EQ(null, isTaken ? number : -1);
        EXPECT_EQ(DirectorySnapshot::recall(folder.identity()), nullptr);
        DirectorySnapshot::remember(nullptr);
        EXPECT_EQ(::fcntl(number, F_GETFD) != -1, isTaken) << "closed what is not its own";
        ::close(null);
    }
}

} // namespace
} // namespace pinbuf
