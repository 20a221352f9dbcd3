#include <Ferrolog/Reader.h>

#include <Ferrolog/testing/TestFile.h>

#include <algorithm>
#include <atomic>
#include <random>
#include <sstream>
#include <thread>

namespace {

using Ferrolog::CallSite;
using Ferrolog::Message;
using Ferrolog::Reader;
using namespace Ferrolog::testing;
using Bytes = std::vector<std::byte>;

std::string goldenPath(const char* name) {
    return std::string(BRIXO_SOURCE_DIR) + "/tests/golden/" + name;
}

const Bytes& golden() {
    static const Bytes bytes = contents(goldenPath("ferrolog.trace"));
    return bytes;
}

// Where the parts of the golden file are.
constexpr std::size_t livesAt = 512;
constexpr std::size_t sitesAt = 8704;
constexpr std::size_t textAt = 10752;
constexpr std::size_t countersAt = 18944;
constexpr std::size_t ringAt = 28672;
constexpr std::size_t chunkBytes = 256;
constexpr std::size_t goldenMessages = 9 + 60 * 10 + 6;

// Everything that the reader says, as the reference in Python prints it.
std::vector<std::string> linesOf(const Reader& reader) {
    std::vector<std::string> lines;
    for (const Message& m : reader.messages()) {
        std::ostringstream line;
        line << m.timeNs << " life " << m.life << " thread " << m.thread << ' '
             << reader.origin(reader.callSites()[m.site]) << ' ' << reader.text(m);
        lines.push_back(line.str());
    }
    lines.push_back("lost " + std::to_string(reader.lost()) + " unfinished " +
                    std::to_string(reader.unfinished()));
    std::map<std::string, std::uint64_t> lost;
    for (const CallSite& site : reader.callSites()) {
        if (site.lost > 0) {
            lost[reader.origin(site)] += site.lost;
        }
    }
    for (const auto& [origin, count] : lost) {
        lines.push_back("lost " + std::to_string(count) + " of " + origin);
    }
    return lines;
}

// Calls everything, so that a sanitizer sees what the bytes do.
std::size_t readAll(const Bytes& bytes) {
    const Reader reader{std::span<std::byte const>(bytes)};
    std::size_t total = reader.error().size();
    for (const std::string& line : linesOf(reader)) {
        total += line.size();
    }
    EXPECT_LE(reader.notes().size(), 101U);
    EXPECT_LE(reader.messages().size(), 64U * 17);
    return total;
}

TEST(Reader, ReadsWhatTheReferenceWrote) {
    const Reader reader(goldenPath("ferrolog.trace"));
    ASSERT_EQ(reader.error(), "");
    EXPECT_EQ(reader.notes(), std::vector<std::string>{});
    std::ifstream expected(goldenPath("ferrolog.txt"));
    std::vector<std::string> lines;
    for (std::string line; std::getline(expected, line);) {
        lines.push_back(line);
    }
    ASSERT_EQ(lines.size(), goldenMessages + 2);
    EXPECT_EQ(linesOf(reader), lines);
}

TEST(Reader, TellsTheLives) {
    const Reader reader{std::span<std::byte const>(golden())};
    ASSERT_EQ(reader.lives().size(), 2U);
    EXPECT_EQ(reader.lives()[0].number, 1U);
    EXPECT_EQ(reader.lives()[0].pid, 4711U);
    EXPECT_EQ(reader.lives()[0].name, "pci_agent");
    EXPECT_EQ(reader.lives()[0].beganNs, 1'700'000'000'000'000'000U);
    EXPECT_EQ(reader.lives()[1].name, "a-name-of-16-byt");
    EXPECT_EQ(reader.life(2), &reader.lives()[1]);
    EXPECT_EQ(reader.life(3), nullptr);
    EXPECT_EQ(reader.life(0), nullptr);
}

TEST(Reader, SaysWhyThereIsNothingToRead) {
    TestFile file;
    EXPECT_EQ(Reader(file.path).error(), "No such file or directory");
    EXPECT_EQ(Reader(file.directory).error(), "it is not a regular file");
    write(file.path, "");
    EXPECT_EQ(Reader(file.path).error(), "it is not a trace file");
    write(file.path, std::string(45056, '\0'));
    EXPECT_EQ(Reader(file.path).error(), "it is not a trace file");
    write(file.path, std::string(45056, 'x'));
    EXPECT_EQ(Reader(file.path).error(), "it is not a trace file");
    EXPECT_EQ(Reader(file.path).messages().size(), 0U);
    EXPECT_EQ(Reader(file.path).lost(), 0U);
}

TEST(Reader, NamesTheVersionThatItDoesNotKnow) {
    TestFile file;
    std::string header("FERROLOG\x04\x03\x02\x01\x02\0\0\0", 16);
    header += std::string(8, '\0') + std::string("\0\x40\0\0", 4);
    std::uint32_t check = 2166136261U;
    for (const char c : header) {
        check = (check ^ static_cast<std::uint8_t>(c)) * 16777619U;
    }
    for (unsigned shift = 0; shift < 32; shift += 8) {
        header += static_cast<char>(check >> shift);
    }
    write(file.path, header);
    EXPECT_EQ(Reader(file.path).error(),
              "it is a trace file of version 2; this reader knows version 1");
}

TEST(Reader, ADamagedHeaderCostsNothing) {
    for (std::size_t at = 0; at < 32; ++at) {
        SCOPED_TRACE(at);
        Bytes bytes = golden();
        bytes[at] ^= std::byte{0x5A};
        const Reader reader{std::span<std::byte const>(bytes)};
        EXPECT_EQ(reader.error(), "");
        EXPECT_EQ(reader.messages().size(), goldenMessages);
        EXPECT_EQ(reader.notes(),
                  std::vector<std::string>{
                      "the header is damaged; the layout is taken from the file's size"});
    }
}

TEST(Reader, ADamagedCallSiteKeepsItsMessagesAndTheirWords) {
    Bytes bytes = golden();
    bytes[textAt + 51 + 15] ^= std::byte{1}; // in the text of the first site of its own
    const Reader reader{std::span<std::byte const>(bytes)};
    EXPECT_EQ(reader.messages().size(), goldenMessages);
    EXPECT_EQ(reader.notes(), std::vector<std::string>{"the record of call site 2 is damaged"});
    const Message& message = reader.messages()[goldenMessages - 6];
    EXPECT_EQ(reader.text(message), "call site with a damaged record, words:");
    EXPECT_EQ(reader.origin(reader.callSites()[message.site]), "?");
}

TEST(Reader, ADamagedLifeCostsTheTimesOfItsMessages) {
    Bytes bytes = golden();
    bytes[livesAt] = std::byte{7};
    const Reader reader{std::span<std::byte const>(bytes)};
    ASSERT_EQ(reader.messages().size(), goldenMessages);
    ASSERT_EQ(reader.notes().size(), 62U); // the record, and each chunk of that life
    EXPECT_EQ(reader.notes()[0], "life record 0 is damaged");
    EXPECT_EQ(reader.notes()[1], "life 1 is not in the file any more; its times are unknown");
    EXPECT_EQ(reader.messages()[0].timeNs, 0U);
    EXPECT_EQ(reader.messages()[0].life, 1U);
    EXPECT_EQ(reader.text(reader.messages()[0]), "Recovered entry, index: 80 key: 4294967215");
}

TEST(Reader, ADamagedChunkHeaderCostsThatChunk) {
    Bytes bytes = golden();
    bytes[ringAt + 20 * chunkBytes] ^= std::byte{1};      // the ordinal
    bytes[ringAt + 21 * chunkBytes + 28] = std::byte{16}; // the lane
    const Reader reader{std::span<std::byte const>(bytes)};
    EXPECT_EQ(reader.messages().size(), goldenMessages - 20);
    EXPECT_EQ(reader.lost(), 100U);
    EXPECT_EQ(reader.notes(), (std::vector<std::string>{
                                  "the header of chunk 20 is damaged; the chunk is skipped",
                                  "the header of chunk 21 is damaged; the chunk is skipped"}));
}

TEST(Reader, ADamagedMessageHeadCostsTheRestOfItsChunk) {
    Bytes bytes = golden();
    bytes[ringAt + 20 * chunkBytes + 32 + 4 * (5 + 3 * 5)] ^= std::byte{1}; // the fourth message
    const Reader reader{std::span<std::byte const>(bytes)};
    EXPECT_EQ(reader.messages().size(), goldenMessages - 7);
    EXPECT_EQ(reader.notes(),
              std::vector<std::string>{"chunk 20 is damaged: its last 36 words are skipped"});
}

TEST(Reader, ATruncatedFileKeepsWhatIsThere) {
    Bytes bytes = golden();
    bytes.resize(ringAt + 20 * chunkBytes);
    const Reader reader{std::span<std::byte const>(bytes)};
    EXPECT_EQ(reader.error(), "");
    // Slots 0 to 19: 64 to 68 with ten each, 69 with nine, 70 to 72 with six together, 9 to 19.
    EXPECT_EQ(reader.messages().size(), 5U * 10 + 9 + 6 + 11 * 10);
    EXPECT_EQ(reader.notes(), std::vector<std::string>{"the file ends after 33792 of 45056 bytes"});
}

// Emptied, shortened and whole again, all while it is read.
TEST(Reader, AFileThatShrinksWhileItIsReadHarmsNobody) {
    TestFile file;
    const std::string path = goldenPath("ferrolog.trace");
    std::filesystem::copy_file(path, file.path);
    std::atomic<bool> stop = false;
    std::thread other([&] {
        for (unsigned round = 0; !stop; ++round) {
            std::filesystem::resize_file(file.path, round % 2 == 0 ? 0 : ringAt);
            std::ofstream(file.path, std::ios::binary | std::ios::in)
                << std::ifstream(path).rdbuf();
        }
    });
    for (int round = 0; round < 200; ++round) {
        const Reader reader(file.path);
        EXPECT_TRUE(reader.error().empty() || reader.error() == "it is not a trace file");
        EXPECT_LE(reader.messages().size(), goldenMessages);
        EXPECT_LE(reader.notes().size(), 101U);
        linesOf(reader);
    }
    stop = true;
    other.join();
    EXPECT_EQ(Reader(file.path).messages().size(), goldenMessages);
}

// A flipped byte may change what it is part of, and nothing else.
TEST(Reader, EveryFlippedByteLeavesTheRestIntact) {
    std::vector<std::string> whole = linesOf(Reader{std::span<std::byte const>(golden())});
    std::ranges::sort(whole);
    std::mt19937 random(20261121);
    Bytes bytes = golden();
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        // All of the header, of the records in use and of the chunks of the second life; of the
        // rest, a part will do.
        const bool one = at < livesAt + 256 || (at >= sitesAt && at < sitesAt + 160) ||
                         (at >= ringAt + 5 * chunkBytes && at < ringAt + 9 * chunkBytes);
        if (!one && random() % 64 != 0) {
            continue;
        }
        const std::byte before = bytes[at];
        bytes[at] ^= static_cast<std::byte>(1 + random() % 255);
        const Reader reader{std::span<std::byte const>(bytes)};
        ASSERT_EQ(reader.error(), "") << at;
        // A length that grows may make two messages of one, so a chunk may lose all it has, never
        // more.
        const std::size_t chunkMost = at >= ringAt ? 10 : 0;
        ASSERT_GE(reader.messages().size() + chunkMost, goldenMessages) << at;
        ASSERT_LE(reader.messages().size(), goldenMessages + 17) << at;
        if (at >= ringAt) {
            std::vector<std::string> lines = linesOf(reader);
            std::vector<std::string> missing;
            std::ranges::sort(lines);
            std::ranges::set_difference(whole, lines, std::back_inserter(missing));
            ASSERT_LE(missing.size(), 10U + 2) << at; // the chunk, and the two lines that count
        }
        bytes[at] = before;
    }
}

TEST(Reader, EveryTruncationIsRead) {
    Bytes bytes = golden();
    std::size_t messages = goldenMessages;
    while (!bytes.empty()) {
        bytes.resize(bytes.size() - (bytes.size() > ringAt ? 13 : bytes.size() > 600 ? 37 : 1));
        const Reader reader{std::span<std::byte const>(bytes)};
        ASSERT_LE(reader.messages().size(), messages) << bytes.size();
        messages = reader.messages().size();
        ASSERT_EQ(reader.error(), bytes.size() < 32 ? "it is not a trace file" : "")
            << bytes.size();
    }
    EXPECT_EQ(messages, 0U);
}

TEST(Reader, HostileBytesHarmNobody) {
    const std::uint32_t seed = 20261122;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (int round = 0; round < 300; ++round) {
        Bytes bytes = golden();
        const std::size_t changes = 1 + random() % 2000;
        const std::size_t from = round % 3 == 0 ? ringAt : 32;
        for (std::size_t i = 0; i < changes; ++i) {
            const std::size_t at = from + random() % (bytes.size() - from);
            bytes[at] = round % 2 == 0 ? static_cast<std::byte>(random()) : std::byte{0xFF};
        }
        readAll(bytes);
    }
    // Every part filled with one value.
    for (unsigned value = 0; value < 256; value += 5) {
        for (const std::size_t from :
             {std::size_t{32}, livesAt, sitesAt, textAt, countersAt, ringAt}) {
            Bytes bytes = golden();
            std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(from), bytes.end(),
                      static_cast<std::byte>(value));
            readAll(bytes);
        }
    }
}

TEST(Reader, TwoEntriesOfOneSiteAreOneCallSite) {
    TestFile file;
    ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
    ferrolog_site site{"T", "a", "", 1, 0};
    ferrolog_append(&site, nullptr);
    ferrolog_close();
    Bytes bytes = contents(file.path);
    // The same record once more, under the next id, with a count of its own.
    std::copy_n(bytes.begin() + sitesAt + 2 * 32, 32, bytes.begin() + sitesAt + 3 * 32);
    bytes[countersAt + 64 * 8 + 3 * 8] = std::byte{4};
    const Reader reader{std::span<std::byte const>(bytes)};
    EXPECT_EQ(reader.callSites().size(), 2U);
    EXPECT_EQ(siteOf(reader, "a").present, 1U);
    EXPECT_EQ(siteOf(reader, "a").lost, 4U);
}

} // namespace
