// pinbuf-ls, as a person runs it.
#include <pinbuf/pinbuf.h>

#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <pinbuf/detail/TestSupport.h>
#include <string>

namespace {

namespace fs = std::filesystem;
using pinbuf::test::RegionFolder;

struct Answer {
    int status;
    std::string text; // standard output and standard error

    bool operator==(const Answer&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Answer& answer) {
    return out << "exit status " << answer.status << '\n' << answer.text;
}

Answer ls(const std::string& arguments) {
    const std::string directory = fs::read_symlink("/proc/self/exe").parent_path();
    const std::string command = "PATH=" + directory + " pinbuf-ls 2>&1 " + arguments;
    std::FILE* const output = ::popen(command.c_str(), "r");
    if (output == nullptr) return {-1, "cannot be run"};
    std::string text;
    for (int c = std::fgetc(output); c != EOF; c = std::fgetc(output)) text += static_cast<char>(c);
    return {WEXITSTATUS(::pclose(output)), text};
}

const std::string usage = "usage: pinbuf-ls [FOLDER]\n";

class PinbufLs : public testing::Test {
protected:
    // A file that is no region yet: its name alone is seen.
    void putNamed(const std::string& name) { regions.put(name, "x"); }

    RegionFolder regions;
};

TEST_F(PinbufLs, PrintsALineForEachRegionInStraightColumns) {
    ASSERT_NE(pinbuf_alloc_func("CacheTable-1-2-3", 4096, "agent"), 0U);
    ASSERT_NE(pinbuf_alloc_func("b", 5, ""), 0U);
    regions.put("crafted", "1234567");
    const Answer all{0, "CacheTable-1-2-3  agent  0x40000000  4096\n"
                        "b                 -      0x40001000  5\n"
                        "crafted           -      -           7\n"};
    EXPECT_EQ(ls(""), all);
    const std::string folder = regions.path();
    ::setenv("PINBUF_DIR", regions.beside("elsewhere").c_str(), 1);
    EXPECT_EQ(ls(""), (Answer{0, ""})) << "an absent folder has no regions";
    EXPECT_EQ(ls(folder), all);
    EXPECT_EQ(ls("-- " + folder + "/"), all);
}

TEST_F(PinbufLs, EscapesWhatBreaksALineOrSteersATerminal) {
    regions.make();
    putNamed("a b");
    putNamed("back\\slash");
    putNamed("gr\xc3\xbc\xc3\x9f");            // well-formed: as it is
    putNamed("half\xc3");                      // a character cut off
    putNamed("long\xc0\xaf");                  // a longer form of '/'
    putNamed("next\xc2\x85line");              // C1
    putNamed("par\xe2\x80\xa9");               // paragraph separator
    putNamed("turned\xe2\x80\xae");            // right to left from here
    putNamed("x\xed\xa0\x80\xf4\x90\x80\x80"); // a surrogate, and beyond U+10FFFF
    putNamed("\xe2\x82\xac");                  // three bytes
    ASSERT_NE(pinbuf_alloc_func("z", 1, "\x1b[2J\n\t\x7f"), 0U);
    ASSERT_NE(pinbuf_alloc_func("zz", 1, "-"), 0U);
    EXPECT_EQ(ls(""),
              (Answer{0, R"(a\x20b                         -                    -           1
back\x5cslash                  -                    -           1
grüß                           -                    -           1
half\xc3                       -                    -           1
long\xc0\xaf                   -                    -           1
next\xc2\x85line               -                    -           1
par\xe2\x80\xa9                -                    -           1
turned\xe2\x80\xae             -                    -           1
x\xed\xa0\x80\xf4\x90\x80\x80  -                    -           1
z                              \x1b[2J\x0a\x09\x7f  0x40000000  1
zz                             \x2d                 0x40001000  1
€                              -                    -           1
)"}));
}

TEST_F(PinbufLs, SaysWhyAFolderCannotBeRead) {
    EXPECT_EQ(ls(regions.beside("none")), (Answer{1, "pinbuf-ls: " + regions.beside("none") +
                                                         ": No such file or directory\n"}));
    EXPECT_EQ(ls("''"), (Answer{1, "pinbuf-ls: -: No such file or directory\n"}));
    regions.make();
    regions.put("file", "");
    EXPECT_EQ(ls(regions.path("file")),
              (Answer{1, "pinbuf_list: the folder \"" + regions.path("file") +
                             "\" is not a directory\n"}));
    EXPECT_EQ(ls("> /dev/full"), (Answer{1, "pinbuf-ls: cannot write to standard output\n"}));
}

TEST_F(PinbufLs, AnswersForItself) {
    EXPECT_EQ(ls("--version"), (Answer{0, "pinbuf-ls " BRIXO_VERSION "\n"}));
    const Answer help = ls("--help");
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.text.starts_with(usage)) << help.text;
    EXPECT_EQ(ls("--help > /dev/full"),
              (Answer{1, "pinbuf-ls: cannot write to standard output\n"}));
    EXPECT_EQ(ls("a b"), (Answer{2, usage}));
    EXPECT_EQ(ls("--all"), (Answer{2, "pinbuf-ls: unrecognized option '--all'\n" + usage}));
}

} // namespace
