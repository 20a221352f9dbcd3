// What ferrolog-cat prints.
#include <Ferrolog/Reader.h>

#include <Ferrolog/testing/TestFile.h>

#include <cstring>

namespace {

using namespace Ferrolog::testing;
using Bytes = std::vector<std::byte>;

// The golden file, which each test changes to its liking.
class Cat : public testing::Test {
protected:
    static constexpr std::size_t livesAt = 512;

    Cat() : bytes(contents(BRIXO_SOURCE_DIR "/tests/golden/ferrolog.trace")) {
        ::setenv("TZ", "UTC", 1);
    }

    // The last life is the second.
    void put(std::size_t at, const void* from, std::size_t count) {
        std::memcpy(bytes.data() + livesAt + 128 + at, from, count);
    }

    std::vector<std::string> lines(const std::string& arguments) const {
        write(file.path, std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
        return outputOf(CAT " " + arguments + " " + file.path);
    }

    TestFile file;
    Bytes bytes;
};

TEST_F(Cat, PrintsTheLastMessagesAndWhatIsLost) {
    EXPECT_EQ(lines("-n 2"),
              (std::vector<std::string>{
                  "-- life 2: a-name-of-16-byt, pid 4713, began 2023-11-14 22:13:30.000000",
                  "2023-11-14 22:13:30.000005     4713  BrixoCacheTable:117  Recovered entry, "
                  "index: 1 key: 2",
                  "2023-11-14 22:13:35.000000     4713  BrixoCacheTable:117  Recovered entry, "
                  "index: 3 key: 4",
                  "-- 615 messages, the last 2 shown, 80 lost, 2 unfinished",
                  "--   80 of 692 lost of BrixoCacheTable:117"}));
}

TEST_F(Cat, PrintsTimesAfter2038) {
    const std::uint64_t in2040 = 2'208'988'800'000'000'000;
    const std::uint64_t first[3] = {7'000'000'000'000, 7'000'000'000'000, in2040};
    const std::uint64_t latest[3] = {7'001'000'000'000, 7'001'000'000'000, in2040 + 1'000'000'000};
    put(32, first, sizeof first);
    put(64, latest, sizeof latest);
    put(88, latest, sizeof latest);
    const std::vector<std::string> all = lines("-n 1");
    ASSERT_EQ(all.size(), 4U);
    EXPECT_EQ(all[0], "-- life 2: a-name-of-16-byt, pid 4713, began 2040-01-01 00:00:00.000000");
    EXPECT_EQ(all[1], "2040-01-01 00:00:05.000000     4713  BrixoCacheTable:117  Recovered entry, "
                      "index: 3 key: 4");
}

TEST_F(Cat, NoNameCommandsATerminalOrForgesALine) {
    put(16, "\x1b[2Jx\n-- 0 lost\\", 16);
    EXPECT_EQ(lines("-n 1")[0],
              "-- life 2: \\x1b[2Jx\\x0a-- 0 lost\\\\, pid 4713, began 2023-11-14 "
              "22:13:30.000000");
}

TEST_F(Cat, SaysWhatItCannotReadInOneLine) {
    EXPECT_EQ(outputOf(std::string("cd ") + file.directory +
                       "; " CAT " \"$(printf 'no\\ne\\033')\" 2>&1; test $? = 1"),
              std::vector<std::string>{"ferrolog-cat: no\\x0ae\\x1b: No such file or directory"});
}

} // namespace
