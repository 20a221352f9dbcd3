// Who holds a region: one process at a time, for as long as it lives.
#include <pinbuf/pinbuf.h>

#include <gtest/gtest.h>
#include <pinbuf/detail/TestSupport.h>
#include <string>
#include <sys/stat.h>
#include <thread>

namespace {

namespace fs = std::filesystem;
using pinbuf::test::Child;
using pinbuf::test::inChild;
using pinbuf::test::RegionFolder;
using pinbuf::test::StandardError;

unsigned alloc(const char* name, unsigned size) { return pinbuf_alloc_func(name, size, "owner"); }

struct Answer {
    int outcome;
    int process;
    std::string owner;
    bool operator==(const Answer&) const = default;
};

void PrintTo(const Answer& answer, std::ostream* stream) {
    *stream << answer.outcome << ", process " << answer.process << ", owner " << answer.owner;
}

Answer hold(const char* name) {
    pinbuf_holder holder{-1, "untouched"};
    const int outcome = pinbuf_hold(name, &holder);
    return {outcome, holder.process, holder.owner};
}

class Hold : public testing::Test {
protected:
    // What every process of the test says of the held region "r".
    Answer heldBy(pid_t process) const { return {0, process, "owner"}; }

    Answer heldNow() const { return {1, ::getpid(), "owner"}; }

    RegionFolder regions;
};

TEST_F(Hold, IsTakenOnceByItsProcess) {
    alloc("r", 8);
    EXPECT_EQ(hold("r"), heldNow());
    EXPECT_STREQ(pinbuf_error(), "");
    EXPECT_EQ(hold("r"), heldBy(::getpid()));
    EXPECT_STREQ(pinbuf_error(), "");
    EXPECT_EQ(pinbuf_hold("r", nullptr), 0);
}

TEST_F(Hold, IsOfOneRegionAndNoOther) {
    for (const char* name : {"r", "s"}) alloc(name, 8);
    EXPECT_EQ(hold("r"), heldNow());
    EXPECT_EQ(hold("s"), heldNow());
    EXPECT_EQ(hold("r"), heldBy(::getpid()));
}

TEST_F(Hold, OfAnotherProcessIsSeenUntilThatEnds) {
    alloc("r", 8);
    Child child([&] { return hold("r") == heldNow(); });
    EXPECT_EQ(hold("r"), heldBy(child.process()));
    EXPECT_NE(alloc("r", 8), 0U) << "nobody is refused anything";
    child.end();
    EXPECT_EQ(hold("r"), heldNow());
}

TEST_F(Hold, SurvivesEveryOtherCallOfItsProcess) {
    alloc("r", 8);
    const Child child([&] {
        if (hold("r") != heldNow()) return false;
        const pinbuf_visitor visitor = [](const pinbuf_region*, void*) { return 0; };
        alloc("r", 8);
        alloc("s", 8);
        pinbuf_map("r", 1, 0, 0);
        pinbuf_find("r", visitor, nullptr);
        pinbuf_list(visitor, nullptr);
        hold("s");
        hold("r");
        return true;
    });
    EXPECT_EQ(hold("r"), heldBy(child.process()));
}

TEST_F(Hold, SurvivesTheThreadThatTookIt) {
    alloc("r", 8);
    const Child child([&] {
        bool isTaken = false;
        std::thread([&] { isTaken = hold("r") == heldNow(); }).join();
        return isTaken;
    });
    EXPECT_EQ(hold("r"), heldBy(child.process()));
}

TEST_F(Hold, IsNotInheritedByAForkedChild) {
    alloc("r", 8);

    struct Grandchild {
        pid_t process;
        bool sawItsParent;
    } grandchild{};

    int told[2];
    ASSERT_EQ(::pipe(told), 0);
    Child child([&] {
        if (hold("r") != heldNow()) return false;
        const pid_t self = ::getpid();
        if (::fork() == 0) {
            grandchild = {::getpid(), hold("r") == heldBy(self)};
            if (::write(told[1], &grandchild, sizeof grandchild) < 0) ::_exit(1);
            for (;;) ::pause(); // with everything that it inherited
        }
        return true;
    });
    ASSERT_EQ(::read(told[0], &grandchild, sizeof grandchild), sizeof grandchild);
    EXPECT_TRUE(grandchild.sawItsParent);
    EXPECT_EQ(hold("r"), heldBy(child.process()));
    child.end();
    EXPECT_EQ(::kill(grandchild.process, 0), 0) << "it lives, and holds nothing";
    EXPECT_EQ(hold("r"), heldNow());
    ::kill(grandchild.process, SIGKILL);
    ::close(told[0]);
    ::close(told[1]);
}

TEST_F(Hold, OfAForkedChildIsItsOwn) {
    alloc("r", 8);
    alloc("s", 8);
    ASSERT_EQ(hold("r"), heldNow());
    const Child child([&] { return hold("r") == heldBy(::getppid()) && hold("s") == heldNow(); });
    EXPECT_EQ(hold("s"), heldBy(child.process()));
    EXPECT_EQ(hold("r"), heldBy(::getpid()));
}

TEST_F(Hold, EndsWithExec) {
    alloc("r", 8);
    int pipe[2];
    ASSERT_EQ(::pipe2(pipe, O_CLOEXEC), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        if (hold("r") != heldNow()) ::_exit(1);
        ::execl("/bin/sleep", "sleep", "600", nullptr);
        ::_exit(2);
    }
    ::close(pipe[1]);
    char byte = 0;
    EXPECT_EQ(::read(pipe[0], &byte, 1), 0); // the child's end is closed by its exec
    EXPECT_EQ(::waitpid(child, nullptr, WNOHANG), 0) << "it lives";
    EXPECT_EQ(hold("r"), heldNow());
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    ::close(pipe[0]);
}

TEST_F(Hold, IsOfTheFileAndNotOfItsName) {
    alloc("r", 8);
    const Child child(
        [&] { return hold("r") == heldNow() && pinbuf_map("r", 1, 0, 0) != nullptr; });
    fs::rename(regions.path("r"), regions.path("moved"));
    alloc("r", 8);
    EXPECT_EQ(hold("r"), heldNow());
    EXPECT_EQ(hold("moved"), (Answer{0, child.process(), ""}));
}

TEST_F(Hold, GoesOnWhenAProgramClosesWhatItDoesNotKnow) {
    alloc("r", 8);
    EXPECT_EQ(inChild([&] {
                  if (hold("r") != heldNow()) return 1;
                  for (int number = 3; number < 256; ++number) ::close(number);
                  const int mine = ::open(regions.path("r").c_str(), O_RDWR); // the same number
                  if (hold("r") != heldNow()) return 2; // the kernel dropped it
                  if (hold("r") != heldBy(::getpid())) return 3;
                  return ::fcntl(mine, F_GETFD) >= 0 ? 0 : 4;
              }),
              0);
}

// Looked at by a child: who opens and closes the file drops the locks of its own process.
TEST_F(Hold, IsARecordLockOnTheByteOfTheInode) {
    alloc("r", 8);
    ASSERT_EQ(hold("r"), heldNow());

    struct stat64 region {};

    ASSERT_EQ(::stat64(regions.path("r").c_str(), &region), 0);
    EXPECT_EQ(RegionFolder::modeOf(regions.path(".locks")), 0600U);
    EXPECT_EQ(inChild([&] {
                  const int file = ::open(regions.path(".locks").c_str(), O_RDWR | O_CLOEXEC);
                  struct flock64 record {};

                  record.l_type = F_WRLCK;
                  if (::fcntl(file, F_GETLK64, &record) != 0) return 1; // of all bytes
                  const bool isIt = record.l_type == F_WRLCK && record.l_pid == ::getppid() &&
                                    record.l_start == static_cast<off64_t>(region.st_ino) &&
                                    record.l_len == 1;
                  if (!isIt) return 2;
                  return regions.bytes(".locks").empty() ? 0 : 3;
              }),
              0);
}

TEST_F(Hold, NeedsARegion) {
    const auto lineOf = [](const char* name) {
        const StandardError standardError;
        EXPECT_EQ(hold(name), (Answer{-1, -1, "untouched"}));
        EXPECT_EQ(standardError.text(), std::string(pinbuf_error()) + "\n");
        return std::string(pinbuf_error());
    };
    EXPECT_EQ(lineOf("r"), "pinbuf_hold: region \"r\": there is no region of this name");
    EXPECT_FALSE(fs::exists(regions.path()));
    alloc("s", 8);
    EXPECT_EQ(lineOf("r"), "pinbuf_hold: region \"r\": there is no region of this name");
    EXPECT_EQ(lineOf(nullptr), "pinbuf_hold: the name is null");
    EXPECT_EQ(lineOf(".locks"), "pinbuf_hold: region \".locks\": the name begins with a dot");
    EXPECT_EQ(regions.leaves(), (std::vector<std::string>{".locks", ".regions", "s"}));
    fs::remove(regions.path(".locks"));
    fs::create_symlink("s", regions.path(".locks"));
    EXPECT_EQ(lineOf("s"),
              "pinbuf_hold: region \"s\": \"" + regions.path(".locks") + "\" is a symbolic link");
}

} // namespace
