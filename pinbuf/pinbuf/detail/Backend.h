// Backend.h - what gives regions their memory and their address.
//
// A back end keeps the promises of pinbuf.h about regions; the face keeps those about names and
// errors. The environment variable PINBUF_BACKEND chooses it at each call.
//
// Errors:  throws Failure.
// Threads: every operation may be called from several threads and processes at once.
#pragma once

#include <optional>
#include <pinbuf/detail/Integers.h>
#include <pinbuf/detail/RegionName.h>
#include <string>
#include <string_view>
#include <vector>

namespace pinbuf {

// The three constants of the platform that pinbuf_map passes on.
struct PlatformConstants {
    int values[3];
};

struct RegionInfo {
    std::string name;
    std::string owner;
    U32 address; // 0: none yet
    U32 sizeBytes;
    bool isMade; // by this library, with exactly sizeBytes; false also when that is not known
};

// Who holds a region.
struct RegionHolder {
    bool isNew;        // this process, since just now
    int process;       // its id; 0: not visible from here
    std::string owner; // of the region, as it is on record
};

class Backend {
public:
    Backend() = default;
    Backend(const Backend&) = delete;
    Backend& operator=(const Backend&) = delete;

    // The physical address of a region that has at least `sizeBytes` bytes (1 or more); never 0.
    virtual U32 alloc(const RegionName& name, U32 sizeBytes, std::string_view owner) const = 0;

    // The virtual address of an existing region; never null.
    virtual void* map(const RegionName& name, const PlatformConstants& constants) const = 0;

    // Holds an existing region until the process ends, unless somebody does already.
    virtual RegionHolder hold(const RegionName& name) const = 0;

    // The region of that name; empty when there is none.
    virtual std::optional<RegionInfo> find(const RegionName& name) const = 0;

    // The regions that exist, by ascending name.
    virtual std::vector<RegionInfo> list() const = 0;

protected:
    ~Backend() = default; // nobody deletes a back end through this interface
};

// The back end that the environment chooses, unless the program has more rights than who started
// it; lives as long as the process.
const Backend& chosenBackend();

} // namespace pinbuf
