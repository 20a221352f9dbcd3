// TypeSection.h - which types a shared library provides, read from its file.
//
// Section: ".vel.type" holds the qualified names of the library's types: each ends with a NUL, and
//          further NULs may stand between them. They are listed in the order in which they stand.
//          docs/type-section.md has the details.
// Files:   little-endian ELF of either word size, whatever this process has. Nothing is loaded or
//          run, and no byte outside of the file is touched, whatever the file says of itself.
// Cost:    two short reads a section, and one of the names; a library's size does not matter.
// Errors:  RangeException for what is in the file, Exception with Id::connection for what the
//          system says of it. Each text names the file and ends with the reason:
//              cannot read the types of 'libX.so': it has no section .vel.type
// Threads: any; nothing is shared.
#pragma once

#include <Vel/Export.h>
#include <Vel/Integers.h>
#include <Vel/String8.h>
#include <span>
#include <vector>

namespace Vel {

// Of the regular file at `path`.
VEL_API std::vector<String8> typeSectionOfFile(const String8& path);

// Of a file that is in memory already; `name` is what its errors call it.
VEL_API std::vector<String8> typeSectionOfImage(std::span<const U8> image, const String8& name);

} // namespace Vel
