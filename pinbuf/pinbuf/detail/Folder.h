// Folder.h - the open folder of the regions; what happens in it goes through this descriptor.
//
// Owns:      one descriptor of the folder. Renaming or replacing the folder later does not affect
//            it.
// Invariant: it was reached through no symbolic link in its last component.
// Errors:    throws Failure.
#pragma once

#include <optional>
#include <pinbuf/detail/Descriptor.h>
#include <pinbuf/detail/FileStatus.h>
#include <string>
#include <string_view>

namespace pinbuf {

class Folder {
public:
    // The path that the environment names, or the default one (see pinbuf.h). Who starts a program
    // that has more rights than himself does not choose it.
    static std::string chosenPath();

    // The folder in which regions may be made: absent, it is created with mode 0700; present, it
    // must be a directory, belong to the effective user and be writable by nobody else; its owner
    // gets the access that he lacks.
    static Folder openOrMake(const std::string& path);

    // The folder as it is, whoever owns it; empty when there is none. To look, not to change.
    static std::optional<Folder> openToRead(const std::string& path);

    // The folder's open file, which finds again the folder of an earlier call.
    int descriptor() const { return directory_.number(); }

    const FileIdentity& identity() const { return status_.identity; }

    // For texts.
    std::string quotedPath() const;

    std::string pathOf(std::string_view leaf) const;

    // The same, quoted, for texts.
    std::string quotedPathOf(std::string_view leaf) const;

private:
    Folder(std::string path, Descriptor directory);

    void requireOurs() const;
    void requireAccess() const;

    std::string path_;
    Descriptor directory_;
    FileStatus status_;
};

} // namespace pinbuf
