#include <Vel/detail/environment.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace Vel::detail {
namespace {

TEST(Environment, GivesWhatIsSet) {
    ::setenv("VEL_TEST_SETTING", "a b", 1);
    EXPECT_STREQ(fromEnvironment("VEL_TEST_SETTING"), "a b");
    ::unsetenv("VEL_TEST_SETTING");
    EXPECT_EQ(fromEnvironment("VEL_TEST_SETTING"), nullptr);
}

// What a command writes to its standard output.
std::string outputOf(const std::string& command) {
    std::string text;
    FILE* const pipe = ::popen(command.c_str(), "r");
    std::array<char, 256> buffer;
    while (std::fgets(buffer.data(), buffer.size(), pipe) != nullptr) text += buffer.data();
    EXPECT_EQ(::pclose(pipe), 0) << command;
    return text;
}

// A group that this process may give a file to and is not its own.
std::optional<gid_t> otherGroup() {
    if (::geteuid() == 0) return 65534;
    std::vector<gid_t> groups(static_cast<std::size_t>(::getgroups(0, nullptr)));
    if (::getgroups(static_cast<int>(groups.size()), groups.data()) < 0) return {};
    for (const gid_t group : groups)
        if (group != ::getgid()) return group;
    return {};
}

// A copy of the program that the library's settings can be seen in; it runs with the rights of
// another group.
class SettingsProbe : public testing::Test {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/vel-settings-XXXXXX";
        directory = ::mkdtemp(pattern);
        ASSERT_EQ(::chmod(directory.c_str(), 0755), 0);
        probe = directory / "probe";
        std::filesystem::copy_file(SETTINGS_PROBE, probe);
        traceFile = directory / "trace";
    }

    void TearDown() override { std::filesystem::remove_all(directory); }

    std::string run(const std::string& settings) { return outputOf(settings + probe.string()); }

    std::filesystem::path directory;
    std::filesystem::path probe;
    std::filesystem::path traceFile;
};

TEST_F(SettingsProbe, AProgramWithMoreRightsThanItsStarterTakesNothingFromTheEnvironment) {
    const std::string usual = run("");
    const std::string heap = usual.find("heap on") != std::string::npos ? "off" : "on";
    const std::string settings = "VEL_TRACE=Widget/0-3 VEL_TRACE_FILE=" + traceFile.string() +
                                 " VEL_OBJECT_HEAP=" + heap + " VEL_INTROSPECTION=off ";
    EXPECT_EQ(run(settings), "levels 15, heap " + heap + ", introspection off, plain\n");
    EXPECT_TRUE(std::filesystem::remove(traceFile));

    const std::optional<gid_t> group = otherGroup();
    if (!group) GTEST_SKIP() << "not the super-user, and in no second group";
    ASSERT_EQ(::chown(probe.c_str(), static_cast<uid_t>(-1), *group), 0);
    ASSERT_EQ(::chmod(probe.c_str(), 02755), 0);
    const std::string guarded = run(settings);
    if (guarded.find("plain") != std::string::npos)
        GTEST_SKIP() << "no program gets rights from its file in " << directory;
    EXPECT_EQ(guarded, usual.substr(0, usual.find("plain")) + "secure\n");
    EXPECT_FALSE(std::filesystem::exists(traceFile));
}

} // namespace
} // namespace Vel::detail
