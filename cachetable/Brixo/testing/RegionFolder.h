// RegionFolder.h - a folder for the regions of one test, gone with it. Not installed.
//
// Environment: PINBUF_DIR names the folder while the object lives; PINBUF_BACKEND and
//              AGENT_PROCESS_NAME are unset.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <unistd.h>

namespace Brixo::Testing {

class RegionFolder {
public:
    RegionFolder() {
        const bool hasShm = ::access("/dev/shm", W_OK) == 0;
        std::string pattern =
            hasShm ? "/dev/shm/cachetable-test-XXXXXX"
                   : (std::filesystem::temp_directory_path() / "cachetable-test-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) std::abort();
        outside_ = pattern;
        ::setenv("PINBUF_DIR", path().c_str(), 1);
        ::unsetenv("PINBUF_BACKEND");
        ::unsetenv("AGENT_PROCESS_NAME");
        clear();
    }

    ~RegionFolder() {
        ::unsetenv("PINBUF_DIR");
        std::error_code ignored;
        std::filesystem::remove_all(outside_, ignored);
    }

    RegionFolder(const RegionFolder&) = delete;
    RegionFolder& operator=(const RegionFolder&) = delete;

    std::string path() const { return outside_ + "/regions"; }

    std::string path(const std::string& leaf) const { return path() + "/" + leaf; }

    // A place that is no region and vanishes with the folder.
    std::string beside(const std::string& leaf) const { return outside_ + "/" + leaf; }

    // Leaves no region.
    void clear() const {
        std::filesystem::remove_all(path());
        std::filesystem::create_directory(path());
        std::filesystem::permissions(path(), std::filesystem::perms::owner_all);
    }

    bool has(const std::string& leaf) const { return std::filesystem::exists(path(leaf)); }

    // A region as ordinary tools see it, and as they would make it.
    std::string bytes(const std::string& leaf) const {
        std::ifstream file(path(leaf), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    void put(const std::string& leaf, const std::string& bytes) const {
        std::ofstream(path(leaf), std::ios::binary)
            .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }

private:
    std::string outside_;
};

} // namespace Brixo::Testing
