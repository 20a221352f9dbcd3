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
// Memory:    the process remembers the file that it used last, checked. What others changed since
//            then is counted in the header, and read again; everything is, when the file is not the
//            same, when they changed too much, or when its bytes changed without being counted.
// Cost:      opening reads the header, and 256 bytes per change by others; else the whole file,
//            O(n log n) for n records. A change takes O(log n) and three system calls.
// Threads:   the folder is locked for as long as the object lives: exclusively to change, shared to
//            look.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <pinbuf/detail/DirectoryLayout.h>
#include <pinbuf/detail/DirectorySnapshot.h>
#include <pinbuf/detail/Folder.h>
#include <pinbuf/detail/FolderFile.h>
#include <pinbuf/detail/Integers.h>
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

    ~Directory();
    Directory(Directory&&) noexcept = default;
    Directory& operator=(Directory&&) = delete;

    // The valid record of that name, or null. Valid until the next change.
    const DirectoryRecord* find(std::string_view name) const;

    // A free record, and an address range that no valid record takes. Throws Failure when there is
    // no room for `sizeBytes`. Changes nothing that a kill could spoil: it may give up vanished
    // regions and lengthen the file.
    struct Place {
        std::size_t index;
        U32 address;
    };

    Place placeFor(U64 sizeBytes);

    // Enters a region at `place`. The name has no valid record yet. An owner is cut to 111 bytes.
    void enter(Place place, const RegionName& name, U32 sizeBytes, std::string_view owner,
               RegionOrigin origin);

    // Gives up the record of that name, if there is one.
    void forget(std::string_view name);

private:
    Directory(const Folder& folder, std::unique_ptr<DirectorySnapshot> snapshot);

    static bool isUntouched(const DirectorySnapshot& known);
    static std::unique_ptr<DirectorySnapshot> read(const Folder& folder, FolderFile file,
                                                   bool mayChange,
                                                   std::unique_ptr<DirectorySnapshot> known);
    static bool bringUpToDate(DirectorySnapshot& known, const FolderFile& file,
                              const DirectoryHeader& header);
    static DirectoryHeader readHeader(const FolderFile& file);
    static std::vector<DirectoryRecord> readRecords(const FolderFile& file);
    static DirectoryRecord readRecord(const FolderFile& file, std::size_t index);
    static DirectoryIndex checked(const FolderFile& file, std::vector<DirectoryRecord> records);

    bool isVanished(const DirectoryRecord& record) const;
    void forgetVanished(std::size_t begin, std::size_t count);
    void grow();
    void makeRoom(U64 sizeBytes);
    void count(std::size_t index);
    void writeState(std::size_t index, U32 state);
    void forgetAt(std::size_t record);

    DirectoryIndex& index() const { return snapshot_->index; }

    const FolderFile& file() const { return snapshot_->file; }

    const Folder* folder_;
    std::unique_ptr<DirectorySnapshot> snapshot_; // the file as it is; null: moved

    enum class State { asRead, inDoubt, changed } state_ = State::asRead;
};

} // namespace pinbuf
