#include <Vel/TypeSection.h>

#include <Vel/RangeException.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <vector>

namespace Vel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::literals;

// An ELF file written byte by byte. Its parts stand in this order: header, names of the sections,
// bytes of .vel.type, headers of the sections.
class Elf {
public:
    explicit Elf(unsigned wordBits) : bits(wordBits) {}

    unsigned bits; // of a word: 32 or 64

    // The fields of the file's header.
    unsigned magic = 0x464c457f;
    unsigned elfClass = bits == 64 ? 2 : 1;
    unsigned byteOrder = 1;
    unsigned version = 1;
    unsigned fileType = 3; // shared object
    unsigned sectionHeaderBytes = bits == 64 ? 64 : 40;
    unsigned sectionCount = 3;
    unsigned namesIndex = 2;

    struct Section {
        unsigned name = 0;
        unsigned type = 0;
        U64 flags = 0;
        U64 offset = 0;
        U64 size = 0;
        unsigned link = 0;
    };

    std::string names = "\0.vel.type\0.shstrtab\0"s;
    std::string types;
    Section none;
    Section vel = {.name = 1, .type = 1, .flags = 3}; // bytes of the program, allocated, writable
    Section table = {.name = 11, .type = 3};          // table of strings

    std::vector<Section> more; // behind the table
    U64 sectionHeaders = 0;

    // Gives every part its place. What a test wants otherwise, it changes afterwards.
    Elf& layOut(std::string_view typeNames) {
        types = typeNames;
        table.offset = headerBytes();
        table.size = names.size();
        vel.offset = table.offset + table.size;
        vel.size = types.size();
        sectionHeaders = vel.offset + vel.size;
        return *this;
    }

    std::string bytes() const {
        std::string file;
        put(file, magic, 4);
        put(file, elfClass, 1);
        put(file, byteOrder, 1);
        put(file, version, 1);
        put(file, 0, 9);
        put(file, fileType, 2);
        put(file, bits == 64 ? 62 : 3, 2); // machine
        put(file, 1, 4);                   // version
        put(file, 0, word());              // entry
        put(file, 0, word());              // program headers
        put(file, sectionHeaders, word());
        put(file, 0, 4); // flags
        put(file, headerBytes(), 2);
        put(file, 0, 2);
        put(file, 0, 2); // no program headers
        put(file, sectionHeaderBytes, 2);
        put(file, sectionCount, 2);
        put(file, namesIndex, 2);
        EXPECT_EQ(file.size(), headerBytes());
        file += names + types;
        std::vector<Section> sections = {none, vel, table};
        sections.insert(sections.end(), more.begin(), more.end());
        for (const Section& section : sections) {
            put(file, section.name, 4);
            put(file, section.type, 4);
            put(file, section.flags, word());
            put(file, 0, word()); // address
            put(file, section.offset, word());
            put(file, section.size, word());
            put(file, section.link, 4);
            put(file, 0, 4);      // info
            put(file, 1, word()); // alignment
            put(file, 0, word()); // entry size
            if (sectionHeaderBytes > naturalSectionHeaderBytes())
                file.append(sectionHeaderBytes - naturalSectionHeaderBytes(), '\xee');
        }
        return file;
    }

    unsigned headerBytes() const { return bits == 64 ? 64 : 52; }

    unsigned naturalSectionHeaderBytes() const { return bits == 64 ? 64 : 40; }

    U64 largestOffset() const { return bits == 64 ? ~U64{0} : 0xffffffffU; }

private:
    unsigned word() const { return bits / 8; }

    static void put(std::string& file, U64 value, unsigned bytes) {
        for (unsigned i = 0; i < bytes; ++i, value >>= 8) file += static_cast<char>(value & 0xff);
    }
};

std::vector<std::string> typesIn(const std::string& file) {
    const std::vector<U8> bytes(file.begin(), file.end()); // its end is watched by the sanitizer
    std::vector<std::string> types;
    for (const String8& name : typeSectionOfImage(bytes, "lib.so")) types.emplace_back(name.view());
    return types;
}

// Why the file is refused; "" when it is not.
std::string refusal(const std::string& file) {
    try {
        typesIn(file);
        return "";
    } catch (const RangeException& error) {
        const std::string_view text = error.text();
        const std::string_view opening = "cannot read the types of 'lib.so': ";
        EXPECT_TRUE(text.starts_with(opening)) << text;
        return std::string(text.substr(opening.size()));
    }
}

class TypeSection : public testing::TestWithParam<unsigned> {
protected:
    Elf elf = Elf(GetParam());
};

INSTANTIATE_TEST_SUITE_P(WordSizes, TypeSection, testing::Values(32U, 64U),
                         testing::PrintToStringParamName());

TEST_P(TypeSection, ListsTheNamesInTheirOrder) {
    elf.layOut("B::Second\0A\0C::Third\0"sv);
    EXPECT_THAT(typesIn(elf.bytes()), ElementsAre("B::Second", "A", "C::Third"));
}

TEST_P(TypeSection, SkipsTheNulsBetweenGroups) {
    elf.layOut("\0\0A\0\0\0\0B\0C\0\0"sv);
    EXPECT_THAT(typesIn(elf.bytes()), ElementsAre("A", "B", "C"));
    elf.layOut("\0\0\0"sv);
    EXPECT_THAT(typesIn(elf.bytes()), IsEmpty());
    elf.layOut("");
    EXPECT_THAT(typesIn(elf.bytes()), IsEmpty());
}

TEST_P(TypeSection, TakesLettersOfEveryAlphabet) {
    elf.layOut("N::List<unsigned int>\0Größe\0"sv);
    EXPECT_THAT(typesIn(elf.bytes()), ElementsAre("N::List<unsigned int>", "Größe"));
}

TEST_P(TypeSection, MayHaveWiderSectionHeaders) {
    elf.sectionHeaderBytes += 8;
    elf.layOut("A\0"sv);
    EXPECT_THAT(typesIn(elf.bytes()), ElementsAre("A"));
}

TEST_P(TypeSection, MayStandInPieces) {
    elf.layOut("A\0B\0C\0"sv);
    elf.vel.size = 2;
    Elf::Section piece = elf.vel;
    piece.offset += 2;
    piece.size = 4;
    elf.more = {piece};
    elf.sectionCount = 4;
    EXPECT_THAT(typesIn(elf.bytes()), ElementsAre("A", "B", "C"));
    elf.none = piece;
    elf.sectionCount = 3;
    EXPECT_THAT(typesIn(elf.bytes()), ElementsAre("A")) << "section 0 is none";
}

TEST_P(TypeSection, IsFoundWhereTheNumbersOfSectionsAreInSectionZero) {
    elf.layOut("A\0"sv);
    elf.none.size = elf.sectionCount;
    elf.none.link = elf.namesIndex;
    elf.sectionCount = 0;
    elf.namesIndex = 0xffff;
    EXPECT_THAT(typesIn(elf.bytes()), ElementsAre("A"));
    for (const U64 count : {U64{4}, U64{0x10000}, U64{0x80000000}, elf.largestOffset()}) {
        elf.none.size = count;
        EXPECT_EQ(refusal(elf.bytes()), "its section headers lie outside of the file") << count;
    }
    elf.none.size = 0;
    EXPECT_EQ(refusal(elf.bytes()), "its sections have no names");
}

TEST_P(TypeSection, OfAFileCutAnywhereIsRefused) {
    const std::string whole = elf.layOut("A::B\0C\0"sv).bytes();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const std::string why = refusal(whole.substr(0, size));
        if (size == 0)
            EXPECT_EQ(why, "it is empty");
        else if (size < elf.headerBytes())
            EXPECT_EQ(why, "it ends within its header") << size;
        else
            EXPECT_EQ(why, "its section headers lie outside of the file") << size;
    }
}

TEST_P(TypeSection, OfAFileWithAnyByteChangedIsReadOrRefusedInOneLine) {
    const std::string whole = elf.layOut("A::B\0C\0"sv).bytes();
    for (std::size_t at = 0; at < whole.size(); ++at)
        for (const char change : {'\x01', '\x80', '\xff'}) {
            std::string file = whole;
            file[at] = static_cast<char>(file[at] ^ change);
            EXPECT_EQ(refusal(file).find_first_of("\n\1"), std::string::npos) << at;
        }
}

TEST_P(TypeSection, OfForeignFilesIsRefused) {
    EXPECT_EQ(refusal("\n"), "it is not an ELF file");
    EXPECT_EQ(refusal("#!/bin/sh\necho this is a script and long enough for a header\n"),
              "it is not an ELF file");
    elf.layOut("A\0"sv);
    Elf other = elf;
    other.elfClass = 3;
    EXPECT_EQ(refusal(other.bytes()), "its word size, ELF class 3, is unknown");
    other = elf;
    other.byteOrder = 2;
    EXPECT_EQ(refusal(other.bytes()), "it is big-endian");
    other = elf;
    other.byteOrder = 0;
    EXPECT_EQ(refusal(other.bytes()), "its byte order 0 is unknown");
    other = elf;
    other.version = 7;
    EXPECT_EQ(refusal(other.bytes()), "its ELF version 7 is unknown");
    other = elf;
    other.fileType = 1;
    EXPECT_EQ(refusal(other.bytes()), "it is not a shared library (ELF type 1)");
    other = elf;
    other.vel.name = 11;
    EXPECT_EQ(refusal(other.bytes()), "it has no section .vel.type");
    other = elf;
    other.sectionHeaders = 0;
    EXPECT_EQ(refusal(other.bytes()), "it has no section headers");
}

TEST_P(TypeSection, IsFoundByItsWholeName) {
    elf.layOut("A\0"sv);
    elf.names[10] = 's'; // .vel.types.shstrtab
    EXPECT_EQ(refusal(elf.bytes()), "it has no section .vel.type");
    elf.vel.name = 2;
    EXPECT_EQ(refusal(elf.bytes()), "it has no section .vel.type");
}

TEST_P(TypeSection, IsNotSoughtPastTheNames) {
    elf.names = "\0.shstrtab\0.vel.type\0"s;
    elf.table.name = 1;
    elf.vel.name = 11;
    elf.layOut("A\0"sv);
    EXPECT_THAT(typesIn(elf.bytes()), ElementsAre("A"));
    --elf.table.size;
    EXPECT_EQ(refusal(elf.bytes()), "it has no section .vel.type") << "its NUL is no more a name's";
    elf.table.size = 12;
    EXPECT_EQ(refusal(elf.bytes()), "it has no section .vel.type");
    for (const unsigned size : {11U, 1U, 0U}) {
        elf.table.size = size;
        EXPECT_EQ(refusal(elf.bytes()),
                  "the name of a section lies outside of the names of its sections");
    }
}

TEST_P(TypeSection, WithDamagedSectionHeadersIsRefused) {
    const std::string outside = "its section headers lie outside of the file";
    elf.layOut("A\0"sv);
    Elf other = elf;
    other.sectionHeaderBytes = elf.naturalSectionHeaderBytes() - 1;
    EXPECT_EQ(refusal(other.bytes()), "its section headers of " +
                                          std::to_string(other.sectionHeaderBytes) +
                                          " bytes are too short");
    for (const U64 offset : {elf.sectionHeaders + 1, U64{elf.bytes().size()},
                             elf.largestOffset() - 39, elf.largestOffset()}) {
        other = elf;
        other.sectionHeaders = offset;
        EXPECT_EQ(refusal(other.bytes()), outside) << offset;
    }
    for (const unsigned count : {4U, 0xffffU}) {
        other = elf;
        other.sectionCount = count;
        EXPECT_EQ(refusal(other.bytes()), outside) << count;
    }
    for (const unsigned index : {0U, 3U, 0xfffeU, 0xffffU}) {
        other = elf;
        other.namesIndex = index;
        EXPECT_EQ(refusal(other.bytes()), "its sections have no names") << index;
    }
    other = elf;
    other.namesIndex = 1;
    EXPECT_EQ(refusal(other.bytes()), "the names of its sections are no string table");
}

TEST_P(TypeSection, OutsideOfItsFileIsRefused) {
    const U64 fileBytes = elf.layOut("A\0"sv).bytes().size();

    struct Place {
        U64 offset, size;
    };

    for (const Place place :
         {Place{fileBytes, 1}, Place{fileBytes - 1, 2}, Place{0, fileBytes + 1},
          Place{fileBytes + 1, 0}, Place{1, elf.largestOffset()}, Place{elf.largestOffset(), 1},
          Place{elf.largestOffset() - 1, 2}, Place{elf.largestOffset(), elf.largestOffset()}}) {
        Elf other = elf;
        other.vel.offset = place.offset;
        other.vel.size = place.size;
        EXPECT_EQ(refusal(other.bytes()), "its section .vel.type lies outside of the file")
            << place.offset << ", " << place.size;
        other = elf;
        other.table.offset = place.offset;
        other.table.size = place.size;
        EXPECT_EQ(refusal(other.bytes()), "the names of its sections lie outside of the file")
            << place.offset << ", " << place.size;
    }
    elf.vel.offset = fileBytes;
    elf.vel.size = 0;
    EXPECT_THAT(typesIn(elf.bytes()), IsEmpty()) << "nothing, at the end";
}

TEST_P(TypeSection, ThatIsNotStoredAsItIsIsRefused) {
    Elf other = elf.layOut("A\0"sv);
    other.vel.type = 8; // as in a file of debugging information alone
    EXPECT_EQ(refusal(other.bytes()), "its section .vel.type is not stored in it");
    other = elf;
    other.vel.flags |= 0x800;
    EXPECT_EQ(refusal(other.bytes()), "its section .vel.type is compressed");
}

TEST_P(TypeSection, LargerThanAnyLibrarysIsRefused) {
    EXPECT_THAT(typesIn(elf.layOut(std::string(1 << 20, '\0')).bytes()), IsEmpty());
    EXPECT_EQ(refusal(elf.layOut(std::string((1 << 20) + 1, '\0')).bytes()),
              "its section .vel.type has 1048577 bytes, more than 1048576");
}

TEST_P(TypeSection, WithADamagedNameIsRefused) {
    EXPECT_EQ(refusal(elf.layOut("A::B\0\0C\0"sv).bytes()), "");
    EXPECT_EQ(refusal(elf.layOut("A::B\0\0C"sv).bytes()),
              "the name at byte 6 of its section .vel.type has no end");
    EXPECT_EQ(refusal(elf.layOut("A").bytes()),
              "the name at byte 0 of its section .vel.type has no end");
    EXPECT_EQ(refusal(elf.layOut("A::B\0C\x1b[2J\0"sv).bytes()),
              "the name at byte 5 of its section .vel.type holds byte 0x1b");
    EXPECT_EQ(refusal(elf.layOut("\x7f\0"sv).bytes()),
              "the name at byte 0 of its section .vel.type holds byte 0x7f");
}

// What reading the file throws; "" when nothing.
std::string failure(const std::string& path, Exception::Id id) {
    try {
        typeSectionOfFile(path.c_str());
        return "";
    } catch (const Exception& error) {
        EXPECT_TRUE(error.ids().has(id));
        return std::string(error.text().view());
    }
}

// A folder that goes with the test.
class TypeSectionFile : public testing::Test {
protected:
    TypeSectionFile() {
        std::string name = (std::filesystem::temp_directory_path() / "vel-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) std::abort();
        folder = name;
    }

    ~TypeSectionFile() override { std::filesystem::remove_all(folder); }

    std::string write(const char* name, std::string_view bytes) const {
        const std::string path = folder / name;
        std::ofstream(path, std::ios::binary) << bytes;
        return path;
    }

    std::filesystem::path folder;
};

TEST_F(TypeSectionFile, IsReadInEitherWordSize) {
    for (const unsigned bits : {32U, 64U}) {
        const std::string path = write("lib.so", Elf(bits).layOut("A::B\0C\0"sv).bytes());
        EXPECT_THAT(typeSectionOfFile(path.c_str()), ElementsAre("A::B", "C"));
    }
}

TEST_F(TypeSectionFile, OfTheLinkerHasTheNamesOfItsModulesInTheirOrder) {
    EXPECT_THAT(typeSectionOfFile(TYPED_LIBRARY),
                ElementsAre("Sample::Second", "Sample::First", "Other::Third"));
}

TEST_F(TypeSectionFile, ThatIsDamagedIsNamed) {
    const std::string path = write("lib.so", "\x7f"
                                             "ELF");
    EXPECT_EQ(failure(path, Exception::Id::range),
              "cannot read the types of '" + path + "': it ends within its header");
}

TEST_F(TypeSectionFile, ThatTheSystemRefusesIsNamedWithTheReason) {
    const std::string path = folder / "missing.so";
    EXPECT_EQ(failure(path, Exception::Id::connection),
              "cannot read the types of '" + path + "': No such file or directory");
    const std::string looped = folder / "loop.so";
    std::filesystem::create_symlink(looped, looped);
    EXPECT_EQ(failure(looped, Exception::Id::connection),
              "cannot read the types of '" + looped + "': Too many levels of symbolic links");
}

TEST_F(TypeSectionFile, MustBeARegularOne) {
    const std::string pipe = folder / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& path : {folder.string(), pipe, std::string("/dev/zero")})
        EXPECT_EQ(failure(path, Exception::Id::range),
                  "cannot read the types of '" + path + "': it is not a regular file");
}

TEST_F(TypeSectionFile, MayBeLargerThanTheAddressSpace) {
    constexpr U64 far = U64{5} << 30;
    Elf elf = Elf(64).layOut("A\0"sv);
    elf.vel.offset = far;
    const std::string path = write("lib.so", elf.bytes());
    std::ofstream(path, std::ios::binary | std::ios::in).seekp(std::streamoff{far}) << "B\0"sv;
    ASSERT_EQ(std::filesystem::file_size(path), far + 2);
    EXPECT_THAT(typeSectionOfFile(path.c_str()), ElementsAre("B"));
}

} // namespace
} // namespace Vel
