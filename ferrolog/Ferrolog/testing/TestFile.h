// TestFile.h - a trace file of its own for one test, and what tests read out of it.
#pragma once

#include <Ferrolog/Ferrolog.h>
#include <Ferrolog/Reader.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace Ferrolog::testing {

inline constexpr unsigned smallRing = 16 << 10; // the smallest: 64 chunks of 56 words, 16 lanes

// Owns: a directory, and everything in it until the end of the test.
class TestDirectory {
public:
    TestDirectory() {
        std::string name = std::filesystem::temp_directory_path() / "ferrolog.XXXXXX";
        if (::mkdtemp(name.data()) == nullptr) {
            std::abort();
        }
        directory = name;
        path = name + "/trace";
    }

    TestDirectory(TestDirectory const&) = delete;
    TestDirectory& operator=(TestDirectory const&) = delete;

    ~TestDirectory() { std::filesystem::remove_all(directory); }

    std::string directory;
    std::string path; // does not exist at first
};

// Closes the trace file at both ends.
class TestFile : public TestDirectory {
public:
    TestFile() { ferrolog_close(); }

    TestFile(TestFile const&) = delete;
    TestFile& operator=(TestFile const&) = delete;

    ~TestFile() { ferrolog_close(); }
};

inline std::vector<std::string> texts(Reader const& reader) {
    std::vector<std::string> all;
    for (Message const& message : reader.messages()) {
        all.push_back(reader.text(message));
    }
    return all;
}

// The call site with this format text; one without messages if there is none.
inline CallSite siteOf(Reader const& reader, std::string const& format) {
    for (CallSite const& site : reader.callSites()) {
        if (site.format == format) {
            return site;
        }
    }
    return {};
}

inline std::vector<std::byte> contents(std::string const& path) {
    std::ifstream file(path, std::ios::binary);
    std::vector<char> const chars{std::istreambuf_iterator<char>(file), {}};
    std::vector<std::byte> bytes(chars.size());
    for (std::size_t i = 0; i < chars.size(); ++i) {
        bytes[i] = static_cast<std::byte>(chars[i]);
    }
    return bytes;
}

inline void write(std::string const& path, std::string const& text) {
    std::ofstream(path, std::ios::binary) << text;
}

// What a program prints on standard output, line by line.
inline std::vector<std::string> outputOf(std::string const& command) {
    std::string output;
    FILE* const pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) {
        ADD_FAILURE() << "cannot run " << command;
        return {};
    }
    for (int c = 0; (c = std::fgetc(pipe)) != EOF;) {
        output += static_cast<char>(c);
    }
    EXPECT_EQ(::pclose(pipe), 0) << command;
    std::vector<std::string> lines;
    std::istringstream stream(output);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

// How many mappings this process has of files in the directory, and in the place of closed ones.
inline std::size_t mappingsOf(std::string const& directory) {
    std::ifstream maps("/proc/self/maps");
    std::size_t count = 0;
    for (std::string line; std::getline(maps, line);) {
        if (line.find(directory) != std::string::npos ||
            line.find("/dev/zero (deleted)") != std::string::npos) {
            ++count;
        }
    }
    return count;
}

// Bytes of address space that this process takes.
inline std::size_t addressSpace() {
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<std::size_t>(::getpagesize());
}

// Runs `body` in a forked child, which then ends at once; its exit status, or the negative signal
// that killed it.
template <class Body>
int inChild(Body body) {
    pid_t const child = ::fork();
    if (child == 0) {
        body();
        ::_exit(::testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

// What `body` prints on standard error.
template <class Body>
std::string complaintsOf(Body body) {
    ::testing::internal::CaptureStderr();
    body();
    return ::testing::internal::GetCapturedStderr();
}

} // namespace Ferrolog::testing
