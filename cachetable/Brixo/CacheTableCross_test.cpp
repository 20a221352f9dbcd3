// Writers of the other word size that are killed at random moments, and recovered by this one.
#include <Brixo/testing/KilledWriter.h>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

namespace Brixo {
namespace {

using namespace Testing;

TEST(CacheTableCross, ARecoveryFindsWhatTheOtherWordSizeWrote) {
    const char* const otherBuild = std::getenv("BRIXO_OTHER_BUILD");
    ASSERT_NE(otherBuild, nullptr);
    const std::string program = std::string(otherBuild) + "/cachetable/cachetable-writer";
    ASSERT_EQ(::access(program.c_str(), X_OK), 0) << program;
    const RegionFolder regions;
    const std::string path = regions.beside("journal");
    const Journal journal(path);
    killWriters(regions, journal, 64032, 100, 30000, [&](const Shape& shape, U32 seed) {
        const std::string size = std::to_string(shape.size);
        const std::string entrySize = std::to_string(shape.entrySize);
        const std::string seedText = std::to_string(seed);
        const pid_t writer = ::fork();
        if (writer == 0) {
            ::execl(program.c_str(), program.c_str(), path.c_str(), size.c_str(), entrySize.c_str(),
                    seedText.c_str(), nullptr);
            ::_exit(127);
        }
        return writer;
    });
}

} // namespace
} // namespace Brixo
