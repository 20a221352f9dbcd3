// ShmBackend.h - regions as files of a folder; needs no privilege.
//
// Region:  one file, named after the region, its bytes the region's bytes. Its address stands in
// the
//          folder's directory file. The addresses are agreed, not real: no device reaches them.
// Memory:  is reserved when the file is made, so that a full file system is a Failure then and not
// a
//          bus error later.
// Making:  all under the folder's exclusive lock, in an order that a kill may interrupt anywhere:
//            1. choose an address and a free record   nothing to undo
//            2. make the file under a dotted name     left over: the next making removes it
//            3. reserve its bytes                     as 2
//            4. write the record, its state last      a record without a file: given up when met
//            5. rename the file to the region's name  complete
//          So what has a region's name is complete, whoever died. A step that fails is undone.
// Adopted: a file that somebody else put there has no record, or one with another size; it gets a
//          record then.
#pragma once

#include <optional>
#include <pinbuf/detail/Backend.h>
#include <pinbuf/detail/Directory.h>
#include <pinbuf/detail/Folder.h>
#include <pinbuf/detail/FolderFile.h>
#include <pinbuf/detail/Integers.h>
#include <string_view>
#include <vector>

namespace pinbuf {

// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor): final, and its base cannot be deleted
class ShmBackend final : public Backend {
public:
    static constexpr const char* unfinishedLeaf = ".region.unfinished";

    static const ShmBackend& instance();

    // `reserve` gives a new region its memory; another one than the default is for tests.
    explicit constexpr ShmBackend(Reserve reserve = reserveBytes) : reserve_(reserve) {}

    U32 alloc(const RegionName& name, U32 sizeBytes, std::string_view owner) const override;
    void* map(const RegionName& name, const PlatformConstants& constants) const override;
    RegionHolder hold(const RegionName& name) const override;
    std::optional<RegionInfo> find(const RegionName& name) const override;
    std::vector<RegionInfo> list() const override;

private:
    U32 make(const Folder& folder, Directory& directory, const RegionName& name, U32 sizeBytes,
             std::string_view owner) const;

    Reserve reserve_;
};

} // namespace pinbuf
