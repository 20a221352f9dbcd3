// Several processes and threads that use one folder.
#include <pinbuf/pinbuf.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <pinbuf/detail/TestSupport.h>
#include <set>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using pinbuf::test::inChild;
using pinbuf::test::RegionFolder;

unsigned alloc(const std::string& name, unsigned size) {
    return pinbuf_alloc_func(name.c_str(), size, "owner");
}

// Runs the probe of this build with `arguments` and returns what it prints.
std::string probe(const std::string& arguments) {
    const std::string directory = fs::read_symlink("/proc/self/exe").parent_path();
    std::FILE* const output = ::popen((directory + "/pinbuf-probe " + arguments).c_str(), "r");
    if (output == nullptr) {
        ADD_FAILURE() << "cannot run the probe";
        return "";
    }
    std::string text;
    for (int c = std::fgetc(output); c != EOF; c = std::fgetc(output)) text += static_cast<char>(c);
    EXPECT_EQ(::pclose(output), 0) << arguments;
    return text;
}

class Processes : public testing::Test {
protected:
    RegionFolder regions;
};

TEST_F(Processes, FindTheSameAddressAfterARestart) {
    EXPECT_EQ(probe("alloc first 5000 a"), "0x40000000\n");
    EXPECT_EQ(probe("alloc second 1 b"), "0x40002000\n");
    for (int restart = 0; restart < 3; ++restart) {
        EXPECT_EQ(probe("alloc second 1 b"), "0x40002000\n");
        EXPECT_EQ(probe("alloc first 5000 a"), "0x40000000\n");
    }
    EXPECT_EQ(alloc("first", 5000), 0x40000000U);
    EXPECT_EQ(probe("list"), "first\ta\t0x40000000\t5000\t1\nsecond\tb\t0x40002000\t1\t1\n");
}

TEST_F(Processes, SeeWhatAnotherOneWroteAlsoAfterItsEnd) {
    ASSERT_NE(alloc("r", 100), 0U);
    const auto* const mine = static_cast<const char*>(pinbuf_map("r", 1, 0, 0));
    probe("write r hello");
    EXPECT_STREQ(mine, "hello");
    probe("alloc r 100 again");
    EXPECT_STREQ(mine, "hello");
}

TEST_F(Processes, KeepTheirAddressWhileOtherRegionsComeAndGo) {
    EXPECT_EQ(alloc("a", 1), 0x40000000U);
    EXPECT_EQ(alloc("b", 1), 0x40001000U);
    EXPECT_EQ(alloc("c", 1), 0x40002000U);
    fs::remove(regions.path("b"));
    for (int i = 0; i < 40; ++i) ASSERT_NE(alloc("n" + std::to_string(i), 1), 0U);
    EXPECT_EQ(alloc("a", 1), 0x40000000U);
    EXPECT_EQ(alloc("c", 1), 0x40002000U);
}

// A program with the rights of its file's group: whoever starts it must not lead it elsewhere.
TEST_F(Processes, IgnoreTheEnvironmentOfAProgramWithRightsOfItsOwn) {
    const fs::path directory = fs::read_symlink("/proc/self/exe").parent_path();
    const fs::path copy = directory / ("pinbuf-probe-setgid-" + std::to_string(::getpid()));
    const auto listWith = [&](const fs::path& program, const char* assignments) {
        const std::string command =
            std::string("env ") + assignments + " " + program.string() + " list 2>/dev/null";
        return std::system(command.c_str());
    };
    fs::copy_file(directory / "pinbuf-probe", copy);
    std::vector<gid_t> groups{pinbuf::test::nobody}; // root may give rights of any
    if (!pinbuf::test::isRoot()) {
        groups.resize(64);
        groups.resize(static_cast<std::size_t>(std::max(::getgroups(64, groups.data()), 0)));
    }
    const bool hasRights = std::any_of(groups.begin(), groups.end(), [&copy](gid_t group) {
        return group != ::getgid() && ::chown(copy.c_str(), static_cast<uid_t>(-1), group) == 0 &&
               ::chmod(copy.c_str(), 02755) == 0;
    });

    struct statvfs place {};

    ASSERT_EQ(::statvfs(copy.c_str(), &place), 0);
    if (!hasRights || (place.f_flag & ST_NOSUID) != 0) {
        fs::remove(copy);
        GTEST_SKIP() << "needs a group to give rights of, and a file system that heeds them";
    }
    for (const char* misleading : {"PINBUF_BACKEND=none", "PINBUF_DIR=/dev/null"}) {
        EXPECT_NE(listWith(directory / "pinbuf-probe", misleading), 0) << misleading;
        EXPECT_EQ(listWith(copy, misleading), 0) << misleading;
    }
    fs::remove(copy);
}

// Starts `count` processes that begin together, in a folder that does not exist yet, and waits for
// them. Each writes its answers into its own row of `answers`.
constexpr std::size_t rowLength = 32;
using Row = unsigned[rowLength];

std::vector<std::vector<unsigned>> startTogether(
    std::size_t count, const std::function<void(std::size_t, unsigned*)>& body) {
    const std::size_t bytes = count * sizeof(Row);
    void* const shared =
        ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    Row* const rows = static_cast<Row*>(shared);
    int gate[2];
    EXPECT_EQ(::pipe(gate), 0);
    std::vector<pid_t> children;
    for (std::size_t i = 0; i < count; ++i) {
        const pid_t child = ::fork();
        if (child == 0) {
            char byte = 0;
            ::close(gate[1]);
            [[maybe_unused]] const auto end =
                ::read(gate[0], &byte, 1); // returns when the parent closes its end
            body(i, rows[i]);
            ::_exit(0);
        }
        children.push_back(child);
    }
    ::close(gate[0]);
    ::close(gate[1]);
    for (const pid_t child : children) {
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    std::vector<std::vector<unsigned>> answers;
    for (std::size_t i = 0; i < count; ++i) answers.emplace_back(rows[i], rows[i] + rowLength);
    ::munmap(shared, bytes);
    return answers;
}

class Together : public Processes, public testing::WithParamInterface<std::size_t> {};

TEST_P(Together, AgreeOnRegionsThatTheyAllMake) {
    for (int round = 0; round < 10; ++round) {
        regions.clear();
        const auto answers = startTogether(GetParam(), [](std::size_t process, unsigned* row) {
            for (std::size_t i = 0; i < rowLength; ++i) { // each in an order of its own
                const std::size_t which = (i + process * 5) % rowLength;
                row[which] =
                    alloc("r" + std::to_string(which), static_cast<unsigned>(1 + 1000 * which));
            }
        });
        std::set<unsigned> distinct(answers[0].begin(), answers[0].end());
        EXPECT_EQ(distinct.size(), rowLength);
        EXPECT_EQ(distinct.count(0), 0U);
        for (const auto& row : answers) EXPECT_EQ(row, answers[0]);
        EXPECT_EQ(regions.leaves().size(), rowLength + 2)
            << "the regions, the directory file and the lock file";
    }
}

TEST_P(Together, GetRegionsThatDoNotOverlap) {
    const auto sizeOf = [](std::size_t process, std::size_t i) {
        return static_cast<unsigned>(1 + (process * 977 + i * 3571) % 20000);
    };
    const auto answers = startTogether(GetParam(), [&](std::size_t process, unsigned* row) {
        for (std::size_t i = 0; i < rowLength; ++i) {
            row[i] =
                alloc("p" + std::to_string(process) + "-" + std::to_string(i), sizeOf(process, i));
        }
    });
    std::map<unsigned, unsigned> endOf; // by address
    for (std::size_t process = 0; process < answers.size(); ++process) {
        for (std::size_t i = 0; i < rowLength; ++i) {
            const unsigned address = answers[process][i];
            EXPECT_NE(address, 0U);
            EXPECT_EQ(address % 4096, 0U);
            EXPECT_TRUE(endOf.emplace(address, address + sizeOf(process, i)).second);
        }
    }
    unsigned last = 0;
    for (const auto& [address, end] : endOf) {
        EXPECT_GE(address, last);
        last = end;
    }
}

TEST_P(Together, ThreadsAgreeLikeProcesses) {
    std::vector<std::array<unsigned, rowLength>> answers(GetParam());
    std::vector<std::thread> threads;
    for (auto& row : answers) {
        threads.emplace_back([&row] {
            for (std::size_t i = 0; i < rowLength; ++i) row[i] = alloc("r" + std::to_string(i), 1);
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (const auto& row : answers) EXPECT_EQ(row, answers[0]);
    EXPECT_EQ(std::set<unsigned>(answers[0].begin(), answers[0].end()).size(), rowLength);
}

INSTANTIATE_TEST_SUITE_P(Processes, Together, testing::Values(2, 8));

} // namespace
