#include <pinbuf/pinbuf.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <gtest/gtest.h>
#include <pinbuf/detail/TestSupport.h>
#include <pthread.h>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/resource.h>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using pinbuf::test::inChild;
using pinbuf::test::RegionFolder;
using pinbuf::test::StandardError;
using Leaves = std::vector<std::string>;

unsigned alloc(const char* name, unsigned size) { return pinbuf_alloc_func(name, size, "owner"); }

char* map(const char* name) { return static_cast<char*>(pinbuf_map(name, 1, 0, 0)); }

// The line of a call that must fail: on standard error, ended by a line feed, and in
// pinbuf_error().
template <typename Call>
std::string lineOf(Call call) {
    const StandardError standardError;
    EXPECT_FALSE(call());
    const std::string line = pinbuf_error();
    EXPECT_EQ(standardError.text(), line + "\n");
    return line;
}

class Pinbuf : public testing::Test {
protected:
    std::string quotedPath(const std::string& leaf) const {
        return "\"" + regions.path(leaf) + "\"";
    }

    RegionFolder regions;
};

TEST_F(Pinbuf, MakesARegionOfZeros) {
    EXPECT_EQ(alloc("r", 4008), 0x40000000U);
    EXPECT_STREQ(pinbuf_error(), "");
    EXPECT_EQ(regions.bytes("r"), std::string(4008, '\0'));
    EXPECT_EQ(RegionFolder::modeOf(regions.path("r")), 0600U);
    EXPECT_EQ(RegionFolder::modeOf(regions.path()), 0700U);
    EXPECT_EQ(regions.leaves(), (Leaves{".locks", ".regions", "r"}));
}

TEST_F(Pinbuf, MapsExactlyTheFile) {
    alloc("r", 9);
    char* const r = map("r");
    ASSERT_NE(r, nullptr);
    EXPECT_STREQ(pinbuf_error(), "");
    std::memcpy(r, "123456789", 9);
    EXPECT_EQ(regions.bytes("r"), "123456789");
    std::uint64_t word = 0;
    std::memcpy(&word, r + 8, sizeof word);
    EXPECT_EQ(word, std::uint64_t{'9'});
}

TEST_F(Pinbuf, TakesThePlatformsConstantsAsTheyAre) {
    alloc("r", 9);
    void* const r = pinbuf_map("r", 1, 0, 0);
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(pinbuf_map("r", 0, -1, INT_MAX), r);
    EXPECT_EQ(pinbuf_map("r", INT_MIN, INT_MIN, INT_MIN), r);
}

TEST_F(Pinbuf, FindsARegionWithItsContents) {
    const unsigned address = alloc("r", 5);
    regions.put("r", "12345");
    EXPECT_EQ(alloc("r", 5), address);
    EXPECT_EQ(alloc("r", 4), address) << "a larger region serves";
    EXPECT_EQ(regions.bytes("r"), "12345");
}

TEST_F(Pinbuf, NeitherGrowsNorReplacesARegionThatIsTooShort) {
    alloc("r", 5);
    regions.put("r", "12345");
    EXPECT_EQ(lineOf([] { return alloc("r", 6); }),
              "pinbuf_alloc_func: region \"r\": the region has 5 bytes, 6 are asked for");
    EXPECT_EQ(regions.bytes("r"), "12345");
    regions.put("empty", "");
    EXPECT_EQ(lineOf([] { return alloc("empty", 1); }),
              "pinbuf_alloc_func: region \"empty\": the region has 0 bytes, 1 are asked for");
    EXPECT_EQ(regions.bytes("empty"), "");
}

TEST_F(Pinbuf, TakesACraftedFileForARegion) {
    regions.make();
    regions.put("r", "crafted");
    RegionFolder::chmod(regions.path("r"), 0666);
    EXPECT_EQ(alloc("r", 7), 0x40000000U);
    EXPECT_EQ(std::string(map("r")), "crafted"); // zeros follow the region
    EXPECT_EQ(RegionFolder::modeOf(regions.path("r")), 0600U);
}

TEST_F(Pinbuf, RefusesASizeOfZero) {
    EXPECT_EQ(lineOf([] { return alloc("r", 0); }),
              "pinbuf_alloc_func: region \"r\": a region of 0 bytes is asked for");
    EXPECT_FALSE(fs::exists(regions.path()));
}

TEST_F(Pinbuf, RefusesSizesBeyondTheAddressWindow) {
    for (const unsigned size : {0x80000001U, 0xfffff000U, 0xfffff001U, 0xffffffffU}) {
        EXPECT_EQ(lineOf([size] { return alloc("r", size); }),
                  "pinbuf_alloc_func: region \"r\": no physical addresses left for " +
                      std::to_string(size) + " bytes, the longest free range has 2147483648");
    }
    EXPECT_EQ(regions.leaves(), (Leaves{".locks", ".regions"}));
}

TEST_F(Pinbuf, RefusesHostileNames) {
    const auto allocLine = [](const char* name) {
        return lineOf([name] { return alloc(name, 8); });
    };
    const auto mapLine = [](const char* name) { return lineOf([name] { return map(name); }); };
    EXPECT_EQ(allocLine(nullptr), "pinbuf_alloc_func: the name is null");
    EXPECT_EQ(mapLine(nullptr), "pinbuf_map: the name is null");
    EXPECT_EQ(allocLine(""), "pinbuf_alloc_func: region \"\": the name is empty");
    EXPECT_EQ(mapLine(""), "pinbuf_map: region \"\": the name is empty");
    EXPECT_EQ(allocLine(".."), "pinbuf_alloc_func: region \"..\": the name begins with a dot");
    EXPECT_EQ(mapLine(".regions"), "pinbuf_map: region \".regions\": the name begins with a dot");
    EXPECT_EQ(allocLine("a/../../b"),
              "pinbuf_alloc_func: region \"a/../../b\": the name contains a slash");
    EXPECT_EQ(mapLine("/dev/null"), "pinbuf_map: region \"/dev/null\": the name contains a slash");
    EXPECT_EQ(allocLine("a\nb"),
              "pinbuf_alloc_func: region \"a\\x0ab\": the name contains a control character");
    const std::string longest(127, 'n');
    EXPECT_EQ(allocLine((longest + "n").c_str()), "pinbuf_alloc_func: region \"" + longest +
                                                      "\"...: the name is longer than 127 bytes");
    EXPECT_FALSE(fs::exists(regions.path())) << "nothing was touched";
    EXPECT_NE(alloc(longest.c_str(), 8), 0U);
    EXPECT_NE(map(longest.c_str()), nullptr);
}

TEST_F(Pinbuf, LeavesTheNumbersOfClosedStandardStreamsFree) {
    EXPECT_EQ(inChild([&] {
                  for (int number = 0; number <= 2; ++number) ::close(number);
                  if (alloc("r", 8) == 0 || map("r") == nullptr) return 1;
                  if (pinbuf_hold("r", nullptr) != 1) return 2;
                  for (int number = 0; number <= 2; ++number) {
                      if (::fcntl(number, F_GETFD) != -1) return 3 + number;
                  }
                  return 0;
              }),
              0);
}

TEST_F(Pinbuf, FormatsNothingThatANameContains) {
    EXPECT_NE(alloc("%s%n %", 8), 0U);
    EXPECT_EQ(lineOf([] { return alloc("%s%n %", 9); }),
              "pinbuf_alloc_func: region \"%s%n %\": the region has 8 bytes, 9 are asked for");
}

TEST_F(Pinbuf, TakesAnyOwner) {
    EXPECT_NE(pinbuf_alloc_func("null", 8, nullptr), 0U);
    EXPECT_NE(pinbuf_alloc_func("empty", 8, ""), 0U);
    EXPECT_NE(pinbuf_alloc_func("long", 8, std::string(100000, 'o').c_str()), 0U);
    EXPECT_NE(pinbuf_alloc_func("odd", 8, "a\n\x01/.."), 0U);
}

TEST_F(Pinbuf, FollowsNoLinkToARegion) {
    regions.make();
    std::ofstream(regions.beside("precious")) << "precious";
    fs::create_symlink(regions.beside("precious"), regions.path("r"));
    fs::create_symlink(regions.beside("nothing"), regions.path("s"));
    EXPECT_EQ(lineOf([] { return alloc("r", 8); }),
              "pinbuf_alloc_func: region \"r\": " + quotedPath("r") + " is a symbolic link");
    EXPECT_EQ(lineOf([] { return map("r"); }),
              "pinbuf_map: region \"r\": " + quotedPath("r") + " is a symbolic link");
    EXPECT_EQ(lineOf([] { return alloc("s", 8); }),
              "pinbuf_alloc_func: region \"s\": " + quotedPath("s") + " is a symbolic link");
    EXPECT_FALSE(fs::exists(regions.beside("nothing")));
}

TEST_F(Pinbuf, FollowsNoLinkToADirectoryFile) {
    regions.make();
    fs::create_symlink(regions.beside("elsewhere"), regions.path(".regions"));
    EXPECT_EQ(lineOf([] { return alloc("r", 8); }),
              "pinbuf_alloc_func: region \"r\": " + quotedPath(".regions") + " is a symbolic link");
    EXPECT_EQ(regions.leaves(), (Leaves{".locks", ".regions"}));
}

TEST_F(Pinbuf, FollowsNoLinkToTheFolder) {
    fs::create_directory(regions.beside("elsewhere"));
    fs::create_directory_symlink(regions.beside("elsewhere"), regions.path());
    const std::string reason = "the folder \"" + regions.path() + "\" is a symbolic link";
    EXPECT_EQ(lineOf([] { return alloc("r", 8); }), "pinbuf_alloc_func: region \"r\": " + reason);
    EXPECT_EQ(lineOf([] { return map("r"); }), "pinbuf_map: region \"r\": " + reason);
    EXPECT_EQ(lineOf([] {
                  return pinbuf_list([](const pinbuf_region*, void*) { return 0; }, nullptr) >= 0;
              }),
              "pinbuf_list: " + reason);
    EXPECT_TRUE(fs::is_empty(regions.beside("elsewhere")));
}

TEST_F(Pinbuf, TakesOnlyARegularFileForARegion) {
    regions.make();
    fs::create_directory(regions.path("r"));
    EXPECT_EQ(lineOf([] { return alloc("r", 8); }),
              "pinbuf_alloc_func: region \"r\": " + quotedPath("r") + " is not a regular file");
    EXPECT_EQ(lineOf([] { return map("r"); }),
              "pinbuf_map: region \"r\": " + quotedPath("r") + " is not a regular file");
}

TEST_F(Pinbuf, MapsOnlyWhatExists) {
    EXPECT_EQ(lineOf([] { return map("r"); }),
              "pinbuf_map: region \"r\": there is no region of this name");
    EXPECT_FALSE(fs::exists(regions.path()));
    alloc("s", 8);
    EXPECT_EQ(lineOf([] { return map("r"); }),
              "pinbuf_map: region \"r\": there is no region of this name");
    EXPECT_FALSE(regions.has("r"));
    regions.put("empty", "");
    EXPECT_EQ(lineOf([] { return map("empty"); }),
              "pinbuf_map: region \"empty\": the region's file is empty");
}

TEST_F(Pinbuf, NamesABackEndThatItDoesNotKnow) {
    ::setenv("PINBUF_BACKEND", "vfio", 1);
    const std::string reason = "PINBUF_BACKEND names no back end: \"vfio\", known is \"shm\"";
    EXPECT_EQ(lineOf([] { return alloc("r", 8); }), "pinbuf_alloc_func: region \"r\": " + reason);
    EXPECT_EQ(lineOf([] { return map("r"); }), "pinbuf_map: region \"r\": " + reason);
    ::unsetenv("PINBUF_BACKEND");
}

TEST_F(Pinbuf, LeavesEverythingAsItIsWhenTheDirectoryFileIsDamaged) {
    alloc("r", 8);
    const std::string garbage = "#!/bin/sh\n" + std::string(4096, 'x');
    regions.replace(".regions", garbage);
    EXPECT_EQ(lineOf([] { return alloc("s", 8); }),
              "pinbuf_alloc_func: region \"s\": " + quotedPath(".regions") +
                  " is not a directory of regions: it begins with other bytes");
    EXPECT_EQ(regions.leaves(), (Leaves{".locks", ".regions", "r"}));
    EXPECT_EQ(regions.bytes(".regions"), garbage);
    EXPECT_NE(map("r"), nullptr) << "the bytes need no directory";
}

TEST_F(Pinbuf, RemembersTheErrorOfTheLastCallOfTheThread) {
    lineOf([] { return alloc("", 8); });
    std::thread([] { EXPECT_STREQ(pinbuf_error(), ""); }).join();
    EXPECT_STREQ(pinbuf_error(), "pinbuf_alloc_func: region \"\": the name is empty");
    alloc("r", 8);
    EXPECT_STREQ(pinbuf_error(), "");
    lineOf([] { return map("none"); });
    pinbuf_list([](const pinbuf_region*, void*) { return 0; }, nullptr);
    EXPECT_STREQ(pinbuf_error(), "");
}

// Gives this process mounts of its own. A user without the right to do so becomes root in a name
// space first, in which the files that were the user's are root's.
bool ownTheMounts() {
    const auto put = [](const char* path, const std::string& text) {
        std::ofstream file(path);
        return static_cast<bool>(file << text << std::flush);
    };
    const std::string user = "0 " + std::to_string(::geteuid()) + " 1\n";
    const std::string group = "0 " + std::to_string(::getegid()) + " 1\n";
    if (::unshare(CLONE_NEWNS) == 0) return true;
    return ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && put("/proc/self/setgroups", "deny") &&
           put("/proc/self/uid_map", user) && put("/proc/self/gid_map", group);
}

// What a file system does that is full, in the child of a process that owns it alone; 77 when that
// needs a right that this process has not got.
int inTinyFileSystem(const RegionFolder& regions, const std::function<int()>& body) {
    constexpr int notPermitted = 77;
    return inChild([&] {
        if (!ownTheMounts() || ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("tmpfs", regions.path().c_str(), "tmpfs", 0, "size=256k,mode=0700") != 0) {
            return notPermitted;
        }
        const int result = body();
        ::umount(regions.path().c_str());
        return result;
    });
}

TEST_F(Pinbuf, AnswersZeroWhenTheFileSystemIsFull) {
    regions.make();
    const int result = inTinyFileSystem(regions, [&] {
        if (alloc("fits", 100000) == 0) return 1;
        std::memset(map("fits"), 'x', 100000);
        if (lineOf([] { return alloc("large", 200000); }) !=
            "pinbuf_alloc_func: region \"large\": cannot reserve 200000 bytes: No space left on "
            "device") {
            return 2;
        }
        if (regions.leaves() != Leaves{".locks", ".regions", "fits"}) return 3;
        if (regions.bytes("fits") != std::string(100000, 'x')) return 4;
        const unsigned address = alloc("small", 100000);
        if (address == 0) return 5; // the half-made file gave its memory back
        regions.put("sparse", "");
        fs::resize_file(regions.path("sparse"), 100000);
        if (lineOf([] { return alloc("sparse", 1); }) !=
            "pinbuf_alloc_func: region \"sparse\": cannot reserve 100000 bytes: No space left on "
            "device") {
            return 6;
        }
        if (regions.bytes("sparse") != std::string(100000, '\0')) return 7;
        return alloc("small", 100000) == address ? 0 : 8;
    });
    if (result == 77)
        GTEST_SKIP() << "no right to mount a file system; ShmBackend_test injects the failure";
    EXPECT_EQ(result, 0);
}

TEST_F(Pinbuf, AnswersZeroWhenThereIsNoSpaceForTheDirectoryFile) {
    regions.make();
    const int result = inTinyFileSystem(regions, [&] {
        { std::ofstream(regions.path("filler")) << std::string(300000, 'x'); }
        if (lineOf([] { return alloc("r", 1); }) !=
            "pinbuf_alloc_func: region \"r\": cannot reserve 4096 bytes: No space left on device") {
            return 1;
        }
        if (regions.leaves() != Leaves{".locks", "filler"}) return 2;
        fs::remove(regions.path("filler"));
        return alloc("r", 1) == 0x40000000 ? 0 : 3;
    });
    if (result == 77) GTEST_SKIP() << "no right to mount a file system";
    EXPECT_EQ(result, 0);
}

// The kernel's signal for it would end the process, or run a handler of the program.
TEST_F(Pinbuf, AnswersZeroWhenTheProcessMayNotMakeSoLargeAFile) {
    static volatile std::sig_atomic_t signals = 0;
    const auto count = [](int) { signals = signals + 1; };
    for (const sighandler_t disposition : {SIG_DFL, SIG_IGN, static_cast<sighandler_t>(count)}) {
        regions.clear();
        EXPECT_EQ(
            inChild([&] {
                const rlimit limit{65536, 65536};
                if (alloc("before", 100) == 0 || ::setrlimit(RLIMIT_FSIZE, &limit) != 0) return 1;
                ::signal(SIGXFSZ, disposition);
                const unsigned address = alloc("r", 65537);
                if (std::string(pinbuf_error()) !=
                    "pinbuf_alloc_func: region \"r\": cannot reserve 65537 bytes: File too large") {
                    return 2;
                }
                if (address != 0 || regions.leaves() != Leaves{".locks", ".regions", "before"}) {
                    return 3;
                }
                if (signals != 0) return 4;
                if (alloc("r", 65536) != 0x40001000) return 5;
                sigset_t blocked;
                ::pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
                return sigismember(&blocked, SIGXFSZ) == 0 ? 0 : 6;
            }),
            0);
    }
}

TEST_F(Pinbuf, LeavesASignalOfTheProgramPending) {
    EXPECT_EQ(inChild([&] {
                  sigset_t blocked;
                  sigset_t pending;
                  sigemptyset(&blocked);
                  sigaddset(&blocked, SIGXFSZ);
                  ::pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
                  ::raise(SIGXFSZ);
                  if (alloc("r", 8) == 0) return 1;
                  ::sigpending(&pending);
                  return sigismember(&pending, SIGXFSZ) == 1 ? 0 : 2;
              }),
              0);
}

TEST_F(Pinbuf, IsNotCutShortByTheCancellationOfItsThread) {
    EXPECT_EQ(inChild([&] {
                  for (int round = 0; round < 100; ++round) {
                      std::atomic<bool> isRunning{false};
                      pthread_t thread{};
                      const auto call = [](void* started) -> void* {
                          const pinbuf_visitor visitor = [](const pinbuf_region*, void*) {
                              return 0;
                          };
                          for (;;) {
                              ::pthread_testcancel();
                              alloc("r", 8);
                              *static_cast<std::atomic<bool>*>(started) = true;
                              alloc("s", 5000);
                              ::unlink((std::string(std::getenv("PINBUF_DIR")) + "/s").c_str());
                              map("r");
                              pinbuf_hold("r", nullptr);
                              pinbuf_find("r", visitor, nullptr);
                              pinbuf_list(visitor, nullptr);
                          }
                      };
                      if (::pthread_create(&thread, nullptr, call, &isRunning) != 0) return 1;
                      while (!isRunning) std::this_thread::yield();
                      ::pthread_cancel(thread);
                      void* result = nullptr;
                      if (::pthread_join(thread, &result) != 0 || result != PTHREAD_CANCELED)
                          return 2;
                      if (alloc("r", 8) == 0) return 3; // nothing stays locked
                  }
                  return 0;
              }),
              0);
}

TEST_F(Pinbuf, WorksInAChildThatIsForkedInTheMiddleOfACall) {
    EXPECT_EQ(inChild([&] {
                  std::thread caller([] {
                      for (;;) {
                          alloc("r", 8);
                          map("r");
                          alloc("s", 5000);
                          pinbuf_hold("r", nullptr);
                          ::unlink((std::string(std::getenv("PINBUF_DIR")) + "/s").c_str());
                      }
                  });
                  for (int round = 0; round < 100; ++round) {
                      const int result = inChild([] {
                          ::alarm(60); // ends a child that hangs
                          if (alloc("r", 8) == 0) return 1;
                          if (map("r") == nullptr) return 2;
                          if (alloc("t", 8) == 0) return 3;
                          return pinbuf_hold("t", nullptr) < 0 ? 4 : 0;
                      });
                      if (result != 0) ::_exit(result < 0 ? 100 : result);
                  }
                  ::_exit(0);
                  return 0;
              }),
              0);
}

// A visitor: adds the region's line to the string `context`.
int addLine(const pinbuf_region* region, void* context) {
    *static_cast<std::string*>(context) += std::string(region->name) + ' ' + region->owner + ' ' +
                                           std::to_string(region->physical_address) + ' ' +
                                           std::to_string(region->size_bytes) + ' ' +
                                           std::to_string(region->made_here) + '\n';
    return 0;
}

// What the calls say, and behind it what they return.
std::string list() {
    std::string text;
    const int visits = pinbuf_list(addLine, &text);
    return text + std::to_string(visits);
}

std::string find(const char* name) {
    std::string text;
    const int visits = pinbuf_find(name, addLine, &text);
    return text + std::to_string(visits);
}

TEST_F(Pinbuf, ListsRegionsByName) {
    EXPECT_EQ(list(), "0") << "also where there is no folder";
    pinbuf_alloc_func("b", 8, "agent");
    pinbuf_alloc_func("a", 4097, nullptr);
    regions.put("c", "by hand");
    EXPECT_EQ(list(), "a  1073745920 4097 1\n"
                      "b agent 1073741824 8 1\n"
                      "c  0 7 0\n"
                      "3");
}

TEST_F(Pinbuf, TellsRegionsThatItMadeFromFilesThatItFound) {
    alloc("made", 8);
    alloc("made", 4); // a larger region serves
    regions.put("found", "by hand");
    EXPECT_EQ(find("found"), "found  0 7 0\n1");
    alloc("found", 7);
    alloc("replaced", 8);
    regions.put("replaced", "of another size");
    alloc("replaced", 8);
    EXPECT_EQ(list(), "found owner 1073745920 7 0\n"
                      "made owner 1073741824 8 1\n"
                      "replaced owner 1073750016 15 0\n"
                      "3");
}

TEST_F(Pinbuf, FindsOneRegionByName) {
    EXPECT_EQ(find("r"), "0") << "also where there is no folder";
    EXPECT_FALSE(fs::exists(regions.path()));
    for (const char* name : {"q", "r", "rr"}) alloc(name, 8);
    EXPECT_EQ(find("r"), "r owner 1073745920 8 1\n1");
    EXPECT_STREQ(pinbuf_error(), "");
    EXPECT_EQ(find("rrr"), "0");
    EXPECT_STREQ(pinbuf_error(), "");
    fs::remove(regions.path("r"));
    EXPECT_EQ(find("r"), "0") << "its record is no region";
    fs::create_symlink("q", regions.path("link"));
    EXPECT_EQ(find("link"), "0");
}

TEST_F(Pinbuf, ReturnsOneForTheRegionFoundWhateverTheVisitorAnswers) {
    alloc("r", 8);
    EXPECT_EQ(pinbuf_find(
                  "r", [](const pinbuf_region*, void*) { return 7; }, nullptr),
              1);
}

TEST_F(Pinbuf, LetsAVisitorOfOneRegionMakeRegions) {
    alloc("a", 8);
    EXPECT_EQ(
        pinbuf_find(
            "a",
            [](const pinbuf_region*, void*) { return alloc("made meanwhile", 8) == 0 ? 1 : 0; },
            nullptr),
        1);
    EXPECT_TRUE(regions.has("made meanwhile"));
}

TEST_F(Pinbuf, SaysWhyItCannotLookForARegion) {
    const auto findLine = [](const char* name, pinbuf_visitor visitor) {
        return lineOf([&] { return pinbuf_find(name, visitor, nullptr) >= 0; });
    };
    const pinbuf_visitor visitor = [](const pinbuf_region*, void*) { return 0; };
    EXPECT_EQ(findLine("r", nullptr), "pinbuf_find: region \"r\": the visitor is null");
    EXPECT_EQ(findLine(nullptr, visitor), "pinbuf_find: the name is null");
    EXPECT_EQ(findLine("../r", visitor),
              "pinbuf_find: region \"../r\": the name begins with a dot");
    alloc("r", 8);
    regions.replace(".regions", "garbage");
    EXPECT_EQ(findLine("r", visitor), "pinbuf_find: region \"r\": " + quotedPath(".regions") +
                                          " is not a directory of regions: it has 7 bytes");
}

TEST_F(Pinbuf, StopsListingWhenTheVisitorSaysSo) {
    for (const char* name : {"a", "b", "c"}) alloc(name, 8);
    EXPECT_EQ(pinbuf_list(
                  [](const pinbuf_region* region, void*) { return region->name[0] == 'b' ? 1 : 0; },
                  nullptr),
              2);
}

TEST_F(Pinbuf, LetsAVisitorMakeRegions) {
    alloc("a", 8);
    EXPECT_EQ(pinbuf_list([](const pinbuf_region*,
                             void*) { return alloc("made meanwhile", 8) == 0 ? 1 : 0; },
                          nullptr),
              1);
    EXPECT_TRUE(regions.has("made meanwhile"));
}

TEST_F(Pinbuf, ListsNothingWithoutAVisitor) {
    EXPECT_EQ(lineOf([] { return pinbuf_list(nullptr, nullptr) >= 0; }),
              "pinbuf_list: the visitor is null");
}

TEST_F(Pinbuf, ListsNothingFromADamagedDirectoryFile) {
    regions.make();
    regions.replace(".regions", "garbage");
    EXPECT_EQ(lineOf([] {
                  return pinbuf_list([](const pinbuf_region*, void*) { return 0; }, nullptr) >= 0;
              }),
              "pinbuf_list: " + quotedPath(".regions") +
                  " is not a directory of regions: it has 7 bytes");
}

// A wrong clock is enough to make such files; where a time has 32 bits, it ends in January 2038.
TEST_F(Pinbuf, TakesFilesOfAnyTime) {
    const auto touch = [this](const std::string& date) {
        const std::string quoted = "'" + regions.path();
        const std::string command = "touch -d " + date + " " + quoted + "/r' " + quoted +
                                    "/by-hand' " + quoted + "/.regions' " + quoted + "/.locks' " +
                                    quoted + "'";
        return std::system(command.c_str()) == 0;
    };
    const unsigned address = alloc("r", 8);
    ASSERT_EQ(pinbuf_hold("r", nullptr), 1);
    regions.put("by-hand", "12345678");
    for (const char* date : {"1900-01-01", "2040-01-01", "2300-01-01"}) {
        ASSERT_TRUE(touch(date));
        EXPECT_EQ(list().back(), '2') << date;
        EXPECT_EQ(find("by-hand").back(), '1') << date;
        ASSERT_TRUE(touch(date));
        EXPECT_EQ(alloc("r", 8), address) << date;
        ASSERT_TRUE(touch(date));
        EXPECT_NE(map("r"), nullptr) << date;
        EXPECT_EQ(pinbuf_hold("r", nullptr), 0) << date;
        EXPECT_NE(alloc("by-hand", 8), 0U) << date;
    }
    EXPECT_TRUE(touch("2020-01-01")); // so that what cleans up can look at them
}

} // namespace
