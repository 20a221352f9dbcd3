// A trace file goes from one word size to the other: written there and read here, and gone on with
// by both in turn.
#include <Ferrolog/Reader.h>
#include <Ferrolog/testing/TestFile.h>

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace Ferrolog::testing {
namespace {

class WordSizes : public ::testing::Test {
protected:
    static std::string program(const char* build, const char* name) {
        const char* const folder = std::getenv(build);
        EXPECT_NE(folder, nullptr) << build;
        return std::string(folder != nullptr ? folder : "") + "/ferrolog/" + name;
    }

    // The sample's messages, by its own account.
    std::vector<std::string> sample(const char* build) const {
        return outputOf(program(build, "ferrolog-sample") + " " + file.path);
    }

    TestFile file;
};

TEST_F(WordSizes, TheOtherOnesMessagesAreReadHere) {
    const std::vector<std::string> written = sample("BRIXO_OTHER_BUILD");
    EXPECT_EQ(written.size(), 23U);
    const Reader reader(file.path);
    EXPECT_EQ(reader.error(), "");
    EXPECT_TRUE(reader.notes().empty());
    EXPECT_EQ(texts(reader), written);
}

TEST_F(WordSizes, BothGoOnWithOneFile) {
    std::vector<std::string> written;
    for (const char* const build :
         {"BRIXO_THIS_BUILD", "BRIXO_OTHER_BUILD", "BRIXO_THIS_BUILD", "BRIXO_OTHER_BUILD"}) {
        for (const std::string& text : sample(build)) {
            written.push_back(text);
        }
    }
    const Reader reader(file.path);
    EXPECT_EQ(reader.error(), "");
    EXPECT_EQ(reader.lives().size(), 4U);
    EXPECT_EQ(texts(reader), written);
}

TEST_F(WordSizes, BothReadersPrintTheSame) {
    sample("BRIXO_THIS_BUILD");
    sample("BRIXO_OTHER_BUILD");
    const std::vector<std::string> here =
        outputOf(program("BRIXO_THIS_BUILD", "ferrolog-cat") + " " + file.path);
    EXPECT_GT(here.size(), 46U);
    EXPECT_EQ(outputOf(program("BRIXO_OTHER_BUILD", "ferrolog-cat") + " " + file.path), here);
}

} // namespace
} // namespace Ferrolog::testing
