// Processes of both word sizes that use one folder.
#include <pinbuf/pinbuf.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <pinbuf/detail/TestSupport.h>
#include <string>

namespace {

using pinbuf::test::RegionFolder;

// Runs the probe of this build or of the other one and returns what it prints.
std::string probe(const char* build, const std::string& arguments) {
    const char* const directory = std::getenv(build);
    if (directory == nullptr) {
        ADD_FAILURE() << build << " names no build directory";
        return "";
    }
    const std::string command = std::string(directory) + "/pinbuf/pinbuf-probe " + arguments;
    std::FILE* const output = ::popen(command.c_str(), "r");
    if (output == nullptr) {
        ADD_FAILURE() << "cannot run " << command;
        return "";
    }
    std::string text;
    for (int c = std::fgetc(output); c != EOF; c = std::fgetc(output)) text += static_cast<char>(c);
    EXPECT_EQ(::pclose(output), 0) << command;
    return text;
}

constexpr const char* thisBuild = "BRIXO_THIS_BUILD";
constexpr const char* otherBuild = "BRIXO_OTHER_BUILD";

TEST(WordSizes, DifferBetweenTheTwoBuilds) {
    const auto elfClassOf = [](const char* build) {
        const char* const directory = std::getenv(build);
        std::ifstream file(std::string(directory == nullptr ? "" : directory) +
                           "/pinbuf/pinbuf-probe");
        file.seekg(4); // 1: 32 bits, 2: 64 bits
        return file.get();
    };
    EXPECT_EQ(elfClassOf(thisBuild), sizeof(void*) == 4 ? 1 : 2);
    EXPECT_EQ(elfClassOf(otherBuild), sizeof(void*) == 4 ? 2 : 1);
}

TEST(WordSizes, ShareOneDirectoryFile) {
    const RegionFolder regions;
    for (int i = 0; i < 40; ++i) { // more than one page of records
        const std::string arguments = "alloc r" + std::to_string(i) + " 5000 owner";
        const std::string made = probe(i % 2 == 0 ? thisBuild : otherBuild, arguments);
        EXPECT_EQ(probe(i % 2 == 0 ? otherBuild : thisBuild, arguments), made);
        char expected[16];
        std::snprintf(expected, sizeof expected, "0x%08x\n",
                      0x40000000U + 0x2000U * static_cast<unsigned>(i));
        EXPECT_EQ(made, expected);
    }
    EXPECT_EQ(probe(thisBuild, "list"), probe(otherBuild, "list"));
}

TEST(WordSizes, ShareTheBytesOfARegion) {
    const RegionFolder regions;
    ASSERT_NE(pinbuf_alloc_func("r", 100, "owner"), 0U);
    const auto* const mine = static_cast<const char*>(pinbuf_map("r", 1, 0, 0));
    probe(otherBuild, "write r hello");
    EXPECT_STREQ(mine, "hello");
}

} // namespace
