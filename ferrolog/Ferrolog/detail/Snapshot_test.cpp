#include <Ferrolog/detail/Snapshot.h>

#include <Ferrolog/testing/TestFile.h>

#include <sys/stat.h>

namespace {

using namespace Ferrolog::detail;
using namespace Ferrolog::testing;

TEST(Snapshot, BytesBeyondTheEndReadAsZero) {
    const std::byte raw[3] = {std::byte{1}, std::byte{2}, std::byte{3}};
    const Bytes bytes{std::span(raw)};
    EXPECT_EQ(bytes.get<U16>(0), 0x0201U);
    EXPECT_EQ(bytes.get<U32>(1), 0x0302U);
    EXPECT_EQ(bytes.get<U32>(3), 0U);
    EXPECT_EQ(bytes.get<U32>(~U64{0}), 0U);
    EXPECT_EQ(bytes.text(1, 2), "\x02\x03");
    EXPECT_EQ(bytes.text(2, 2), "");
    EXPECT_EQ(bytes.text(~U64{0}, 1), "");
}

TEST(Snapshot, CopiesAFileThreeTimes) {
    TestFile file;
    write(file.path, "abcd");
    const Snapshot snapshot = Snapshot::ofFile(file.path);
    EXPECT_EQ(snapshot.error, "");
    for (const Bytes& copy : {snapshot.first, snapshot.second, snapshot.third}) {
        EXPECT_EQ(copy.size(), 4U);
        EXPECT_EQ(copy.get<U32>(0), 0x64636261U);
    }
}

TEST(Snapshot, SaysWhyThereIsNone) {
    TestFile file;
    EXPECT_EQ(Snapshot::ofFile(file.path).error, "No such file or directory");
    EXPECT_EQ(Snapshot::ofFile(file.directory).error, "it is not a regular file");
    ASSERT_EQ(::mkfifo(file.path.c_str(), 0600), 0);
    EXPECT_EQ(Snapshot::ofFile(file.path).error, "it is not a regular file");
}

} // namespace
