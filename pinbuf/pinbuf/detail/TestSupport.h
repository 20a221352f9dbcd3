// TestSupport.h - what the tests of this folder share; not part of the library.
#pragma once

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace pinbuf::test {

// A folder for the regions of one test: PINBUF_DIR names it, it does not exist yet, and all of it
// vanishes afterwards.
class RegionFolder {
public:
    RegionFolder() {
        const bool hasShm = ::access("/dev/shm", W_OK) == 0;
        std::string pattern =
            hasShm ? "/dev/shm/pinbuf-test-XXXXXX"
                   : (std::filesystem::temp_directory_path() / "pinbuf-test-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) std::abort();
        outside_ = pattern;
        ::setenv("PINBUF_DIR", path().c_str(), 1);
        ::unsetenv("PINBUF_BACKEND");
    }

    ~RegionFolder() {
        ::unsetenv("PINBUF_DIR");
        std::error_code ignored;
        std::filesystem::remove_all(outside_, ignored);
    }

    RegionFolder(const RegionFolder&) = delete;
    RegionFolder& operator=(const RegionFolder&) = delete;

    std::string path() const { return outside_ + "/regions"; }

    std::string path(std::string_view leaf) const { return path() + "/" + std::string(leaf); }

    // A place beside the folder, inside what is cleaned up.
    std::string beside(std::string_view leaf) const { return outside_ + "/" + std::string(leaf); }

    void make() const {
        std::filesystem::create_directory(path());
        chmod(path(), 0700);
    }

    void clear() const { std::filesystem::remove_all(path()); }

    // Puts a file there as ordinary tools would.
    void put(std::string_view leaf, std::string_view bytes) const {
        std::ofstream(path(leaf), std::ios::binary)
            .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }

    // The same in place of a file that may be there: another file under its name.
    void replace(std::string_view leaf, std::string_view bytes) const {
        const std::string fresh = beside("fresh");
        std::ofstream(fresh, std::ios::binary)
            .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        std::filesystem::rename(fresh, path(leaf));
    }

    std::string bytes(std::string_view leaf) const {
        std::ifstream file(path(leaf), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    bool has(std::string_view leaf) const {
        return std::filesystem::symlink_status(path(leaf)).type() !=
               std::filesystem::file_type::not_found;
    }

    // Everything in the folder, hidden files included, sorted.
    std::vector<std::string> leaves() const {
        std::vector<std::string> result;
        for (const auto& entry : std::filesystem::directory_iterator(path()))
            result.push_back(entry.path().filename().string());
        std::sort(result.begin(), result.end());
        return result;
    }

    static void chmod(const std::string& path, unsigned mode) {
        std::filesystem::permissions(path, std::filesystem::perms(mode));
    }

    static unsigned modeOf(const std::string& path) {
        return static_cast<unsigned>(std::filesystem::symlink_status(path).permissions());
    }

private:
    std::string outside_;
};

// Collects what goes to standard error while it lives.
class StandardError {
public:
    StandardError() : file_(std::tmpfile()), saved_(::dup(STDERR_FILENO)) {
        ::dup2(::fileno(file_), STDERR_FILENO);
    }

    ~StandardError() {
        ::dup2(saved_, STDERR_FILENO);
        ::close(saved_);
        std::fclose(file_);
    }

    StandardError(const StandardError&) = delete;
    StandardError& operator=(const StandardError&) = delete;

    std::string text() const {
        std::rewind(file_);
        std::string result;
        for (int c = std::fgetc(file_); c != EOF; c = std::fgetc(file_))
            result += static_cast<char>(c);
        return result;
    }

private:
    std::FILE* file_;
    int saved_;
};

// The reason with which `step` fails; "" when it does not.
template <typename Step>
std::string failureOf(Step step) {
    try {
        step();
    } catch (const std::exception& failure) {
        return failure.what();
    }
    return "";
}

// Runs `body` in a process of its own and returns its exit status, or minus the signal that ended
// it.
template <typename Body>
int inChild(Body body) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(body());
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {}
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

// A child process that runs `body` and then lives until it is killed.
class Child {
public:
    explicit Child(const std::function<bool()>& body) {
        int ready[2];
        EXPECT_EQ(::pipe(ready), 0);
        process_ = ::fork();
        if (process_ == 0) {
            const char isDone = body() ? 'y' : 'n';
            if (::write(ready[1], &isDone, 1) != 1) ::_exit(1);
            for (;;) ::pause();
        }
        ::close(ready[1]);
        char isDone = 0;
        EXPECT_EQ(::read(ready[0], &isDone, 1), 1);
        EXPECT_EQ(isDone, 'y');
        ::close(ready[0]);
    }

    ~Child() { end(); }

    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    void end() {
        if (hasEnded_) return;
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
        hasEnded_ = true;
    }

    pid_t process() const { return process_; }

private:
    pid_t process_ = -1;
    bool hasEnded_ = false;
};

inline bool isRoot() { return ::geteuid() == 0; }

inline constexpr unsigned nobody = 65534;

} // namespace pinbuf::test
