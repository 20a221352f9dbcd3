#include "DemoFolder.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <vector>

namespace PciAgent {

namespace {

constexpr const char* markerName = ".made-by-pci_agent_demo";
constexpr std::string_view markerText =
    "The demo made this folder, and empties it when it runs here again.\n";
constexpr const char* regionsName = "regions";

bool isOfTheDemo(const std::string& name) {
    return name == "journal" || name == "trace" || name == regionsName || name == markerName;
}

// What pinbuf keeps beside the regions, and the regions of the demo's agent:
// CacheTable-<agent>-<number>-<number>.
bool isOfTheRegions(const std::string& name) {
    if (name == ".regions" || name == ".regions.unfinished" || name == ".region.unfinished")
        return true;
    const std::string prefix = "CacheTable-" + std::to_string(DemoFolder::agentId) + "-";
    if (!name.starts_with(prefix)) return false;
    const std::string numbers = name.substr(prefix.size());
    const std::size_t dash = numbers.find_first_not_of("0123456789");
    return dash != 0 && dash != numbers.npos && numbers[dash] == '-' && dash + 1 < numbers.size() &&
           numbers.find_first_not_of("0123456789", dash + 1) == numbers.npos;
}

[[noreturn]] void fail(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

std::vector<std::string> namesIn(int folder) {
    const int reading = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* const entries = reading < 0 ? nullptr : ::fdopendir(reading);
    if (entries == nullptr) fail("cannot read the folder");
    std::vector<std::string> names;
    while (const dirent* entry = ::readdir(entries)) names.emplace_back(entry->d_name);
    ::closedir(entries);
    std::erase(names, ".");
    std::erase(names, "..");
    std::ranges::sort(names);
    return names;
}

// S_IFREG, S_IFDIR, ... of what has this name, not of what a link leads to; 0 when it is another
// user's or not there.
mode_t kindOf(int folder, const std::string& name) {
    struct stat status {};

    if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return 0;
    return status.st_uid == ::geteuid() ? status.st_mode & S_IFMT : 0;
}

void remove(int folder, const std::string& name, int flags) {
    if (::unlinkat(folder, name.c_str(), flags) != 0) fail("cannot remove " + name);
}

// A name that somebody else chose must not steer the terminal.
std::string shown(std::string name) {
    std::ranges::replace_if(
        name, [](unsigned char byte) { return byte < 0x20 || byte == 0x7f; }, '?');
    return name;
}

} // namespace

void DemoFolder::Descriptor::open(int folder, const char* name, int flags) {
    file_ = ::openat(folder, name, flags | O_NOFOLLOW | O_CLOEXEC, 0600);
}

DemoFolder::DemoFolder(std::string path) : path_(std::move(path)) {
    while (path_.size() > 1 && path_.ends_with('/'))
        path_.pop_back(); // it would lead through a link
    const bool isNew = ::mkdir(path_.c_str(), 0700) == 0;
    if (!isNew && errno != EEXIST)
        throw Refused("cannot make " + shown(path_) + ": " + std::strerror(errno));
    const mode_t kind = kindOf(AT_FDCWD, path_);
    if (kind == S_IFLNK) refuse("it is a symbolic link");
    if (kind != S_IFDIR) refuse("it is no folder of yours");
    folder_.open(AT_FDCWD, path_.c_str(), O_RDONLY | O_DIRECTORY);
    if (folder_ < 0) refuse(std::strerror(errno));
    if (isNew)
        writeMarker();
    else {
        checkMarker();
        empty();
    }
    if (::mkdirat(folder_, regionsName, 0700) != 0) fail("cannot make " + regions());
}

void DemoFolder::writeMarker() {
    marker_.open(folder_, markerName, O_WRONLY | O_CREAT | O_EXCL);
    if (marker_ < 0 || ::flock(marker_, LOCK_EX | LOCK_NB) != 0 ||
        ::write(marker_, markerText.data(), markerText.size()) != ssize_t{markerText.size()})
        fail("cannot mark " + path_);
}

void DemoFolder::checkMarker() {
    const mode_t kind = kindOf(folder_, markerName);
    if (kind == 0)
        refuse(std::string("it exists, and no demo made it (there is no ") + markerName + ")");
    std::array<char, markerText.size() + 1> text;
    if (kind == S_IFREG) marker_.open(folder_, markerName, O_RDONLY | O_NONBLOCK);
    const ssize_t length = ::read(marker_, text.data(), text.size());
    if (length < 0 || std::string_view(text.data(), static_cast<std::size_t>(length)) != markerText)
        refuse(std::string("its ") + markerName + " is not the demo's");
    if (::flock(marker_, LOCK_EX | LOCK_NB) != 0) refuse("another demo is running in it");
}

// First every name is looked at, then every file is removed by its name.
void DemoFolder::empty() {
    const auto check = [this](int folder, const std::string& name, bool known, mode_t kind,
                              const std::string& path) {
        if (!known) refuse("it holds " + shown(path) + ", which no demo makes");
        if (kindOf(folder, name) != kind)
            refuse("it holds " + shown(path) + ", which no demo makes like this");
    };
    std::vector<std::string> files = namesIn(folder_);
    for (const std::string& name : files)
        check(folder_, name, isOfTheDemo(name), name == regionsName ? S_IFDIR : S_IFREG, name);
    if (std::erase(files, regionsName) != 0) {
        Descriptor folder;
        folder.open(folder_, regionsName, O_RDONLY | O_DIRECTORY);
        if (folder < 0) refuse(std::string(regionsName) + ": " + std::strerror(errno));
        const std::vector<std::string> regionFiles = namesIn(folder);
        for (const std::string& name : regionFiles)
            check(folder, name, isOfTheRegions(name), S_IFREG, regionsName + ("/" + name));
        for (const std::string& name : regionFiles) remove(folder, name, 0);
        remove(folder_, regionsName, AT_REMOVEDIR);
    }
    std::erase(files, markerName);
    for (const std::string& name : files) remove(folder_, name, 0);
}

void DemoFolder::refuse(const std::string& why) const {
    throw Refused(shown(path_) + " is refused, nothing in it was touched: " + why);
}

} // namespace PciAgent
