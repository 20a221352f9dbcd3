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

    TestDirectory(const TestDirectory&) = delete;
    TestDirectory& operator=(const TestDirectory&) = delete;

    ~TestDirectory() { std::filesystem::remove_all(directory); }

    std::string directory;
    std::string path; // does not exist at first
};

// Closes the trace file at both ends.
class TestFile : public TestDirectory {
public:
    TestFile() { ferrolog_close(); }

    TestFile(const TestFile&) = delete;
    TestFile& operator=(const TestFile&) = delete;

    ~TestFile() { ferrolog_close(); }
};

inline std::vector<std::string> texts(const Reader& reader) {
    std::vector<std::string> all;
    for (const Message& message : reader.messages()) {
        all.push_back(reader.text(message));
    }
    return all;
}

// The call site with this format text; one without messages if there is none.
inline CallSite siteOf(const Reader& reader, const std::string& format) {
    for (const CallSite& site : reader.callSites()) {
        if (site.format == format) {
            return site;
        }
    }
    return {};
}

inline std::vector<std::byte> contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> chars{std::istreambuf_iterator<char>(file), {}};
    std::vector<std::byte> bytes(chars.size());
    for (std::size_t i = 0; i < chars.size(); ++i) {
        bytes[i] = static_cast<std::byte>(chars[i]);
    }
    return bytes;
}

inline void write(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

// What a program prints on standard output, line by line.
inline std::vector<std::string> outputOf(const std::string& command) {
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
inline std::size_t mappingsOf(const std::string& directory) {
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
    const pid_t child = ::fork();
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
