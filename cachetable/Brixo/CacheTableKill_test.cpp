// Writers that are killed at random moments: while they format, write, delete and recover.
#include <Brixo/testing/KilledWriter.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

using namespace Testing;

constexpr U32 endless = 0xffffffff;

TEST(CacheTableKill, ARecoveryFindsEveryCompletedWrite) {
    const RegionFolder regions;
    const Journal journal;
    killWriters(regions, journal, 530052, 400, 3000, [&](const Shape& shape, U32 seed) {
        const pid_t writer = ::fork();
        if (writer == 0) {
            runWriter(journal, shape, seed, endless);
            ::_exit(1);
        }
        return writer;
    });
}

} // namespace
} // namespace Brixo
