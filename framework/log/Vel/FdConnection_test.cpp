#include <Vel/FdConnection.h>

#include <Vel/Exception.h>
#include <Vel/Ptr.h>
#include <array>
#include <csignal>
#include <gtest/gtest.h>
#include <unistd.h>

namespace Vel {
namespace {

TEST(FdConnection, CarriesBytesThroughAPipe) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const Ptr<FdConnection::Out> out = new FdConnection::Out(ends[1]);
    const Ptr<FdConnection::In> in = new FdConnection::In(ends[0]);
    const std::array<U8, 3> bytes = {7, 8, 9};
    out->write(bytes);
    std::array<U8, 8> room{};
    EXPECT_EQ(in->read(room), 3u);
    EXPECT_EQ(room[2], 9u);
    ::close(ends[1]);
    EXPECT_EQ(in->read(room), 0u);
    ::close(ends[0]);
}

TEST(FdConnection, SaysWhichDescriptorFailed) {
    const Ptr<FdConnection::In> in = new FdConnection::In(-1);
    const Ptr<FdConnection::Out> out = new FdConnection::Out(-1);
    std::array<U8, 1> room{};
    for (const bool reads : {true, false}) {
        try {
            if (reads)
                in->read(room);
            else
                out->write(room);
            FAIL() << "descriptor -1 took bytes";
        } catch (const Exception& error) {
            EXPECT_TRUE(error.ids().has(Exception::Id::connection));
            EXPECT_NE(error.text().view().find("-1"), std::string_view::npos) << error.what();
            EXPECT_NE(error.text().view().find("Bad file descriptor"), std::string_view::npos)
                << error.what();
        }
    }
}

} // namespace
} // namespace Vel
