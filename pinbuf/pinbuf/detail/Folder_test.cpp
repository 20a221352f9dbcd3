#include <pinbuf/detail/Folder.h>

#include <gtest/gtest.h>
#include <pinbuf/detail/TestSupport.h>
#include <string>

namespace pinbuf {
namespace {

namespace fs = std::filesystem;
using test::failureOf;
using test::inChild;
using test::RegionFolder;

std::string openFailure(const std::string& path) {
    return failureOf([&] { Folder::openOrMake(path); });
}

TEST(Folder, IsTheUsersOwnUnlessTheEnvironmentNamesOne) {
    const std::string own = "/dev/shm/pinbuf-" + std::to_string(::geteuid());
    ::unsetenv("PINBUF_DIR");
    EXPECT_EQ(Folder::chosenPath(), own);
    ::setenv("PINBUF_DIR", "", 1);
    EXPECT_EQ(Folder::chosenPath(), own);
    ::setenv("PINBUF_DIR", "/some/where", 1);
    EXPECT_EQ(Folder::chosenPath(), "/some/where");
    ::unsetenv("PINBUF_DIR");
}

TEST(Folder, LosesWhatWouldFollowALinkAtTheEndOfItsPath) {
    const auto chosen = [](const char* path) {
        ::setenv("PINBUF_DIR", path, 1);
        return Folder::chosenPath();
    };
    EXPECT_EQ(chosen("/a/b/"), "/a/b");
    EXPECT_EQ(chosen("/a/b///"), "/a/b");
    EXPECT_EQ(chosen("/a/b/."), "/a/b");
    EXPECT_EQ(chosen("/a/b/././/."), "/a/b");
    EXPECT_EQ(chosen("/a/b."), "/a/b.");
    EXPECT_EQ(chosen("/"), "/");
    EXPECT_EQ(chosen("//."), "/");
    EXPECT_EQ(chosen("."), ".");
    ::unsetenv("PINBUF_DIR");
}

TEST(Folder, IsMadeForItsOwnerAlone) {
    const RegionFolder regions;
    const mode_t before = ::umask(0);
    Folder::openOrMake(regions.path());
    ::umask(before);
    EXPECT_EQ(RegionFolder::modeOf(regions.path()), 0700U);
}

// In a child, who is not root: root may enter everything.
template <typename Body>
int asOrdinaryUser(const RegionFolder& regions, Body body) {
    return inChild([&] {
        if (test::isRoot()) {
            RegionFolder::chmod(fs::path(regions.path()).parent_path(), 0777);
            if (::setresuid(test::nobody, test::nobody, test::nobody) != 0) return -1;
        }
        return body();
    });
}

TEST(Folder, IsItsOwnersWhateverTheUmask) {
    for (const mode_t mask : {0777U, 0700U, 0400U, 0277U, 022U}) {
        const RegionFolder regions;
        const auto body = [&] {
            ::umask(mask);
            if (!openFailure(regions.path()).empty()) return 1;
            return RegionFolder::modeOf(regions.path()) == 0700 ? 0 : 2;
        };
        EXPECT_EQ(asOrdinaryUser(regions, body), 0) << mask;
        EXPECT_EQ(inChild([&] {
                      regions.clear();
                      return body();
                  }),
                  0)
            << mask;
    }
}

// As a process leaves it that was killed between the two steps of making it.
TEST(Folder, IsRepairedWhenItsOwnerLacksAccess) {
    for (const unsigned mode : {0U, 0100U, 0300U, 0500U, 0455U}) {
        const RegionFolder regions;
        EXPECT_EQ(asOrdinaryUser(regions,
                                 [&] {
                                     regions.make();
                                     RegionFolder::chmod(regions.path(), mode);
                                     if (!openFailure(regions.path()).empty()) return 1;
                                     return RegionFolder::modeOf(regions.path()) == (mode | 0700U)
                                                ? 0
                                                : 2;
                                 }),
                  0)
            << mode;
    }
}

TEST(Folder, IsTakenAsItIsWhenItExists) {
    const RegionFolder regions;
    regions.make();
    RegionFolder::chmod(regions.path(), 0755);
    EXPECT_EQ(openFailure(regions.path()), "");
    EXPECT_EQ(RegionFolder::modeOf(regions.path()), 0755U);
}

TEST(Folder, NeedsAFolderToLieIn) {
    const RegionFolder regions;
    EXPECT_EQ(openFailure(regions.path("deeper")), "cannot make the folder \"" +
                                                       regions.path("deeper") +
                                                       "\": No such file or directory");
}

TEST(Folder, IsNoFile) {
    const RegionFolder regions;
    std::ofstream(regions.path()) << "x";
    EXPECT_EQ(openFailure(regions.path()),
              "the folder \"" + regions.path() + "\" is not a directory");
}

TEST(Folder, IsNoSymbolicLink) {
    const RegionFolder regions;
    fs::create_directory(regions.beside("real"));
    fs::create_directory_symlink(regions.beside("real"), regions.path());
    const std::string expected = "the folder \"" + regions.path() + "\" is a symbolic link";
    EXPECT_EQ(openFailure(regions.path()), expected);
    EXPECT_EQ(failureOf([&] { Folder::openToRead(regions.path()); }), expected);
    for (const char* ending : {"/", "/.", "//./"}) {
        ::setenv("PINBUF_DIR", (regions.path() + ending).c_str(), 1);
        EXPECT_EQ(openFailure(Folder::chosenPath()), expected) << ending;
    }
    EXPECT_TRUE(fs::is_empty(regions.beside("real")));
}

TEST(Folder, IsNoLinkToNothing) {
    const RegionFolder regions;
    fs::create_directory_symlink(regions.beside("nothing"), regions.path());
    EXPECT_EQ(openFailure(regions.path()),
              "the folder \"" + regions.path() + "\" is a symbolic link");
    EXPECT_FALSE(fs::exists(regions.beside("nothing")));
}

TEST(Folder, IsWritableByNobodyElse) {
    const RegionFolder regions;
    regions.make();
    for (const unsigned mode : {0720U, 0702U, 0777U}) {
        RegionFolder::chmod(regions.path(), mode);
        EXPECT_EQ(openFailure(regions.path()),
                  "the folder \"" + regions.path() + "\" is writable by others than its owner");
    }
}

TEST(Folder, BelongsToTheUser) {
    if (!test::isRoot()) GTEST_SKIP() << "only root can give a folder away";
    const RegionFolder regions;
    regions.make();
    ASSERT_EQ(::chown(regions.path().c_str(), test::nobody, test::nobody), 0);
    EXPECT_EQ(openFailure(regions.path()),
              "the folder \"" + regions.path() + "\" belongs to user 65534, not to user 0");
    EXPECT_TRUE(Folder::openToRead(regions.path()).has_value()) << "looking is allowed";
}

TEST(Folder, SaysWhyItCannotBeOpened) {
    if (!test::isRoot()) GTEST_SKIP() << "needs a user who may become another one";
    const RegionFolder regions; // in a folder that root alone may enter
    regions.make();
    EXPECT_EQ(inChild([&] {
                  if (::setresuid(test::nobody, test::nobody, test::nobody) != 0) return 2;
                  return openFailure(regions.path()) == "cannot open the folder \"" +
                                                            regions.path() + "\": Permission denied"
                             ? 0
                             : 1;
              }),
              0);
}

TEST(Folder, IsNotMadeToLookIntoIt) {
    const RegionFolder regions;
    EXPECT_FALSE(Folder::openToRead(regions.path()).has_value());
    EXPECT_FALSE(fs::exists(regions.path()));
    regions.make();
    EXPECT_TRUE(Folder::openToRead(regions.path()).has_value());
}

TEST(Folder, QuotesThePathsOfItsFiles) {
    const RegionFolder regions;
    EXPECT_EQ(Folder::openOrMake(regions.path()).quotedPathOf("a\"b"),
              "\"" + regions.path() + "/a\\x22b\"");
}

} // namespace
} // namespace pinbuf
