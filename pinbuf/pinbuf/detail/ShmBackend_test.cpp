#include <pinbuf/detail/ShmBackend.h>

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <pinbuf/detail/Integers.h>
#include <pinbuf/detail/TestSupport.h>
#include <string>

namespace pinbuf {
namespace {

namespace fs = std::filesystem;
using test::failureOf;
using test::RegionFolder;
using Leaves = std::vector<std::string>;

int reserveNothing(int, U64, U64) { return ENOSPC; }

// Reserves the first megabyte, then finds the file system full.
int reserveOneStep(int descriptor, U64 offsetBytes, U64 lengthBytes) {
    return offsetBytes == 0 ? reserveBytes(descriptor, offsetBytes, lengthBytes) : ENOSPC;
}

class ShmBackendTest : public testing::Test {
protected:
    static U32 alloc(const char* name, U32 sizeBytes) {
        return ShmBackend::instance().alloc(RegionName(name), sizeBytes, "owner");
    }

    const DirectoryRecord* record(const char* name) {
        const Folder folder = Folder::openOrMake(regions.path());
        directory.emplace(Directory::openOrMake(folder));
        return directory->find(name);
    }

    RegionFolder regions;
    std::optional<Directory> directory;
};

TEST_F(ShmBackendTest, LeavesNothingOfARegionForWhichThereIsNoMemory) {
    alloc("before", 100);
    for (const Reserve reserve : {reserveNothing, reserveOneStep}) {
        const ShmBackend full(reserve);
        EXPECT_EQ(failureOf([&] { full.alloc(RegionName("r"), 2000000, "owner"); }),
                  "cannot reserve 2000000 bytes: No space left on device");
        EXPECT_EQ(regions.leaves(), (Leaves{".locks", ".regions", "before"}));
        EXPECT_EQ(record("r"), nullptr);
    }
    EXPECT_EQ(alloc("r", 100), 0x40001000U) << "its address was not used up";
    EXPECT_EQ(regions.bytes("r"), std::string(100, '\0'));
}

TEST_F(ShmBackendTest, FindsARegionEvenWhenThereIsNoMemoryForNewOnes) {
    alloc("r", 100);
    EXPECT_EQ(ShmBackend(reserveNothing).alloc(RegionName("r"), 100, "owner"), 0x40000000U);
}

TEST_F(ShmBackendTest, LeavesNoRecordWhenTheNameIsTakenAtTheLastMoment) {
    const ShmBackend overtaken([](int, U64, U64) {
        std::ofstream(std::string(std::getenv("PINBUF_DIR")) + "/r") << "by hand";
        return 0;
    });
    EXPECT_EQ(failureOf([&] { overtaken.alloc(RegionName("r"), 5, "owner"); }),
              "cannot make \"" + regions.path("r") + "\": File exists");
    EXPECT_EQ(regions.leaves(), (Leaves{".locks", ".regions", "r"}));
    EXPECT_EQ(regions.bytes("r"), "by hand");
    EXPECT_EQ(record("r"), nullptr);
    EXPECT_EQ(alloc("r", 5), 0x40000000U) << "a region like any other now";
}

TEST_F(ShmBackendTest, KeepsTheRecordedSizeAndOwnerOfTheFirst) {
    alloc("r", 100);
    ShmBackend::instance().alloc(RegionName("r"), 50, "another");
    EXPECT_EQ(record("r")->sizeBytes, 100U);
    EXPECT_STREQ(record("r")->owner, "owner");
}

TEST_F(ShmBackendTest, AdoptsAFileWithoutARecord) {
    regions.make();
    regions.put("r", std::string(5000, 'x'));
    EXPECT_EQ(alloc("r", 5000), 0x40000000U);
    EXPECT_EQ(record("r")->sizeBytes, 5000U);
    EXPECT_EQ(alloc("next", 1), 0x40002000U);
    EXPECT_EQ(regions.bytes("r"), std::string(5000, 'x'));
}

TEST_F(ShmBackendTest, GivesAFileOfAnotherSizeANewPlace) {
    EXPECT_EQ(alloc("r", 4096), 0x40000000U);
    EXPECT_EQ(alloc("next", 1), 0x40001000U);
    fs::resize_file(regions.path("r"), 4097);
    EXPECT_EQ(alloc("r", 4097), 0x40002000U);
    EXPECT_EQ(record("r")->sizeBytes, 4097U);
    EXPECT_EQ(alloc("r", 4097), 0x40002000U);
}

TEST_F(ShmBackendTest, MakesARemovedRegionAnew) {
    alloc("r", 4096);
    regions.put("r", std::string(4096, 'x'));
    fs::remove(regions.path("r"));
    EXPECT_EQ(alloc("r", 8192), 0x40000000U);
    EXPECT_EQ(regions.bytes("r"), std::string(8192, '\0'));
}

TEST_F(ShmBackendTest, RemembersTheAddressOfAFileThatComesBack) {
    alloc("r", 4096);
    alloc("s", 4096);
    fs::rename(regions.path("s"), regions.beside("saved"));
    alloc("t", 4096);
    fs::rename(regions.beside("saved"), regions.path("s"));
    EXPECT_EQ(alloc("s", 4096), 0x40001000U);
}

TEST_F(ShmBackendTest, GivesHolesMemory) {
    regions.make();
    regions.put("r", "x");
    fs::resize_file(regions.path("r"), 100000);
    alloc("r", 100000);
    EXPECT_FALSE(FolderFile::open(Folder::openOrMake(regions.path()), "r")->status().hasHoles);
    EXPECT_EQ(regions.bytes("r"), "x" + std::string(99999, '\0'));
}

TEST_F(ShmBackendTest, GivesNoMemoryToAFileThatNoAddressFits) {
    regions.make();
    regions.put("r", "");
    fs::resize_file(regions.path("r"), 0x80000001);
    EXPECT_EQ(
        failureOf([] { alloc("r", 1); }),
        "no physical addresses left for 2147483649 bytes, the longest free range has 2147483648");
    EXPECT_TRUE(FolderFile::open(Folder::openOrMake(regions.path()), "r")->status().hasHoles);
}

TEST_F(ShmBackendTest, ListsFilesAndNotRecords) {
    EXPECT_TRUE(ShmBackend::instance().list().empty());
    EXPECT_FALSE(fs::exists(regions.path())) << "looking makes nothing";
    alloc("c", 10);
    alloc("a", 20);
    alloc("vanished", 30);
    fs::remove(regions.path("vanished"));
    regions.put("b", "no address yet");
    regions.put("not\na region", "");
    regions.put(".hidden", "");
    fs::create_directory(regions.path("directory"));
    fs::create_symlink("a", regions.path("link"));
    fs::resize_file(regions.path("c"), 11);
    std::string text;
    for (const RegionInfo& region : ShmBackend::instance().list()) {
        text += region.name + ' ' + region.owner + ' ' + std::to_string(region.address) + ' ' +
                std::to_string(region.sizeBytes) + '\n';
    }
    EXPECT_EQ(text, "a owner 1073745920 20\n"
                    "b  0 14\n"
                    "c  0 11\n");
}

} // namespace
} // namespace pinbuf
