// Directory.h - the directory file of a folder: which region lies at which physical address.
//
// Invariant: the valid records have region names that differ, and address ranges inside the window
//            that do not overlap. To open a file that is not so, or is no directory file, is a
//            Failure that names the record; nothing is repaired, for nobody could tell which record
//            to believe.
// Vanished:  a record whose region has no file any more, or a file of another size, speaks of a
//            region that is gone. It keeps its address out of use until its name, its record or its
//            address is needed; then it is given up.
// Kill:      every change is one store of a state word (see DirectoryLayout.h).
// Cost:      opening reads the whole file and checks it, O(n log n) for n records; 256 bytes of
//            memory per record.
// Threads:   the folder is locked for as long as the object lives: exclusively to change, shared to
//            look.
#ifndef PINBUF_DETAIL_DIRECTORY_H
#define PINBUF_DETAIL_DIRECTORY_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <pinbuf/detail/AddressWindow.h>
#include <pinbuf/detail/DirectoryLayout.h>
#include <pinbuf/detail/Folder.h>
#include <pinbuf/detail/FolderFile.h>
#include <pinbuf/detail/RegionName.h>
#include <string_view>
#include <vector>

namespace pinbuf {

class Directory {
public:
    static constexpr const char* leaf = ".regions";
    static constexpr const char* unfinishedLeaf = ".regions.unfinished";

    // Opens the folder's directory file; makes an empty one when there is none.
    static Directory openOrMake(const Folder& folder);

    // The same to look only; empty when there is no directory file.
    static std::optional<Directory> openToRead(const Folder& folder);

    // The valid record of that name, or null. Valid until the next change.
    const DirectoryRecord* find(std::string_view name) const;

    // A free record, and an address range that no valid record takes. Throws Failure when there is
    // no room for `sizeBytes`. Changes nothing that a kill could spoil: it may give up vanished
    // regions and lengthen the file.
    struct Place {
        std::size_t index;
        std::uint32_t address;
    };

    Place placeFor(std::uint64_t sizeBytes);

    // Enters a region at `place`. The name has no valid record yet. An owner is cut to 111 bytes.
    void enter(Place place, const RegionName& name, std::uint32_t sizeBytes, std::string_view owner,
               RegionOrigin origin);

    // Gives up the record of that name, if there is one.
    void forget(std::string_view name);

private:
    Directory(const Folder& folder, FolderFile file);

    void load();
    void requireHeader(std::uint64_t fileBytes) const;
    void requireConsistentRecords() const;
    std::vector<Extent> takenExtents() const; // in ascending order
    std::optional<std::size_t> freeIndex() const;
    bool isVanished(const DirectoryRecord& record) const;
    void forgetVanished();
    void grow();
    void writeState(std::size_t index, std::uint32_t state);

    const Folder* folder_;
    FolderFile file_;
    std::vector<DirectoryRecord> records_; // as they stand in the file
};

} // namespace pinbuf

#endif // PINBUF_DETAIL_DIRECTORY_H
