// DemoFolder.h - the folder that the demo works in: regions, journal and trace, as plain files.
//
// Marker:   the demo writes a marker file into it before anything else. A folder with it was made
//           by a demo.
// Contents: .made-by-pci_agent_demo, journal, trace, regions/ and in there what a cache table's
//           regions need; nothing else.
// Deletes:  of a folder that an earlier demo made exactly those, each by its name, the marker
//           excepted. It looks at all of them first, and refuses the folder as a whole when it
//           holds anything else. It follows no link.
// Lock:     one demo at a time works in a folder; the lock goes with its process.
#pragma once

#include <stdexcept>
#include <string>
#include <unistd.h>

namespace PciAgent {

class DemoFolder {
public:
    // The folder cannot be used, and nothing in it was touched; what() says why.
    class Refused : public std::runtime_error {
    public:
        using runtime_error::runtime_error;
    };

    static constexpr unsigned agentId = 7; // whose regions lie in the folder

    // Makes the folder, but not its parent, or empties the one that an earlier demo made. Throws
    // Refused, and std::system_error when the system fails on the way.
    explicit DemoFolder(std::string path);
    DemoFolder(const DemoFolder&) = delete;
    DemoFolder& operator=(const DemoFolder&) = delete;

    const std::string& path() const noexcept { return path_; }

    std::string journal() const { return path_ + "/journal"; }

    std::string trace() const { return path_ + "/trace"; }

    std::string regions() const { return path_ + "/regions"; }

private:
    class Descriptor {
    public:
        Descriptor() = default;
        Descriptor(const Descriptor&) = delete;
        Descriptor& operator=(const Descriptor&) = delete;

        ~Descriptor() {
            if (file_ >= 0) ::close(file_);
        }

        void open(int folder, const char* name, int flags);

        operator int() const noexcept { return file_; }

    private:
        int file_ = -1;
    };

    void writeMarker();
    void checkMarker();
    void empty();
    [[noreturn]] void refuse(const std::string& why) const;

    std::string path_;
    Descriptor folder_;
    Descriptor marker_; // holds the lock
};

} // namespace PciAgent
