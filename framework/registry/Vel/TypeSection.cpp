#include <Vel/TypeSection.h>

#include <Vel/RangeException.h>
#include <Vel/format.h>
#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstring>
#include <elf.h>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace Vel {

namespace {

static_assert(std::endian::native == std::endian::little, "headers are copied as they stand");

constexpr std::string_view sectionName = ".vel.type";

// No library has so many types; a damaged size does not allocate more.
constexpr U64 maxSectionBytes = U64{1} << 20;

String8 complaint(const String8& name, const String8& reason) {
    return "cannot read the types of '" + name + "': " + reason;
}

// The bytes of a library's file, wherever they are.
class Image {
public:
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;

    U64 sizeBytes() const noexcept { return sizeBytes_; }

    bool holds(U64 offset, U64 bytes) const noexcept {
        return offset <= sizeBytes_ && bytes <= sizeBytes_ - offset;
    }

    // The image holds these bytes.
    virtual void copy(U64 offset, std::span<U8> room) const = 0;

    template <class T>
    T at(U64 offset) const {
        std::array<U8, sizeof(T)> bytes;
        copy(offset, bytes);
        return std::bit_cast<T>(bytes);
    }

    [[noreturn]] void refuse(const String8& reason) const {
        throwRangeException(complaint(name_, reason));
    }

protected:
    explicit Image(const String8& name) : name_(name) {}

    ~Image() = default;

    const String8& name() const noexcept { return name_; }

    void sizeBytesIs(U64 bytes) noexcept { sizeBytes_ = bytes; }

private:
    String8 name_;
    U64 sizeBytes_ = 0;
};

class MemoryImage final : public Image {
public:
    MemoryImage(std::span<const U8> bytes, const String8& name) : Image(name), bytes_(bytes) {
        sizeBytesIs(bytes.size());
    }

    void copy(U64 offset, std::span<U8> room) const override {
        const auto from = bytes_.subspan(static_cast<std::size_t>(offset), room.size());
        std::ranges::copy(from, room.begin());
    }

private:
    std::span<const U8> bytes_;
};

// Open as long as this lives.
class Descriptor {
public:
    // Does not wait for the other end of a pipe.
    explicit Descriptor(const String8& path) noexcept
        : number_(::open(path.charPtr(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}

    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }

    // Negative when it could not be opened.
    int number() const noexcept { return number_; }

private:
    int number_;
};

class FileImage final : public Image {
public:
    explicit FileImage(const String8& path);
    void copy(U64 offset, std::span<U8> room) const override;

private:
    // With the reason that the system left in errno.
    [[noreturn]] void throwFailure() const {
        const int error = errno;
        throw Exception(complaint(name(), std::generic_category().message(error).c_str()),
                        Exception::Id::connection);
    }

    Descriptor descriptor_;
};

FileImage::FileImage(const String8& path) : Image(path), descriptor_(path) {
    struct stat status = {};
    if (descriptor_.number() < 0 || ::fstat(descriptor_.number(), &status) != 0) throwFailure();
    if (!S_ISREG(status.st_mode)) refuse("it is not a regular file");
    sizeBytesIs(static_cast<U64>(status.st_size));
}

// Others may cut the file meanwhile: the end is then found here.
void FileImage::copy(U64 offset, std::span<U8> room) const {
    while (!room.empty()) {
        const ssize_t count =
            ::pread(descriptor_.number(), room.data(), room.size(), static_cast<off_t>(offset));
        if (count == 0) refuse("it became shorter while it was read");
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throwFailure();
        offset += static_cast<U64>(count);
        room = room.subspan(static_cast<std::size_t>(count));
    }
}

struct Elf32 {
    using Header = Elf32_Ehdr;
    using SectionHeader = Elf32_Shdr;
};

struct Elf64 {
    using Header = Elf64_Ehdr;
    using SectionHeader = Elf64_Shdr;
};

// What is used of a section's header.
struct Section {
    U64 name = 0; // offset in the table of names
    U64 type = SHT_NULL;
    U64 flags = 0;
    U64 offset = 0;
    U64 sizeBytes = 0;
    U64 link = 0;
};

// The sections of a shared library, whose headers lie within its image.
template <class Elf>
class Sections {
public:
    explicit Sections(const Image& image) : image_(image) {
        readPlace();
        readCount();
        readNames();
    }

    // Section 0 is none, but counts.
    U64 count() const noexcept { return count_; }

    Section at(U64 index) const {
        const auto header = image_.at<typename Elf::SectionHeader>(offset_ + index * stride_);
        return {.name = header.sh_name,
                .type = header.sh_type,
                .flags = header.sh_flags,
                .offset = header.sh_offset,
                .sizeBytes = header.sh_size,
                .link = header.sh_link};
    }

    bool isNamed(const Section& section, std::string_view name) const;

private:
    void readPlace();
    void readCount();
    void readNames();

    const Image& image_;
    U64 offset_ = 0; // of the first section's header
    U64 stride_ = 0; // from one section's header to the next
    U64 count_ = 0;
    U64 namesIndex_ = 0;
    Section names_;
};

template <class Elf>
void Sections<Elf>::readPlace() {
    using Header = typename Elf::Header;
    if (!image_.holds(0, sizeof(Header))) image_.refuse("it ends within its header");
    const auto header = image_.at<Header>(0);
    if (header.e_type != ET_DYN)
        image_.refuse(format("it is not a shared library (ELF type %u)", header.e_type));
    if (header.e_shoff == 0) image_.refuse("it has no section headers");
    if (header.e_shentsize < sizeof(typename Elf::SectionHeader))
        image_.refuse(format("its section headers of %u bytes are too short", header.e_shentsize));
    offset_ = header.e_shoff;
    stride_ = header.e_shentsize;
    count_ = header.e_shnum;
    namesIndex_ = header.e_shstrndx;
}

// Numbers that are too large for the file's header stand in the header of section 0.
template <class Elf>
void Sections<Elf>::readCount() {
    if (!image_.holds(offset_, stride_))
        image_.refuse("its section headers lie outside of the file");
    const Section none = at(0);
    if (count_ == 0) count_ = none.sizeBytes;
    if (namesIndex_ == SHN_XINDEX) namesIndex_ = none.link;
    if (count_ > (image_.sizeBytes() - offset_) / stride_)
        image_.refuse("its section headers lie outside of the file");
}

template <class Elf>
void Sections<Elf>::readNames() {
    if (namesIndex_ == SHN_UNDEF || namesIndex_ >= count_)
        image_.refuse("its sections have no names");
    names_ = at(namesIndex_);
    if (names_.type != SHT_STRTAB) image_.refuse("the names of its sections are no string table");
    if (!image_.holds(names_.offset, names_.sizeBytes))
        image_.refuse("the names of its sections lie outside of the file");
}

template <class Elf>
bool Sections<Elf>::isNamed(const Section& section, std::string_view name) const {
    if (section.name >= names_.sizeBytes)
        image_.refuse("the name of a section lies outside of the names of its sections");
    std::array<U8, 32> bytes = {};
    const std::span<U8> found(bytes.data(), name.size() + 1); // with the NUL
    if (names_.sizeBytes - section.name < found.size()) return false;
    image_.copy(names_.offset + section.name, found);
    return found.back() == 0 && std::ranges::equal(found.first(name.size()), name);
}

std::vector<U8> bytesOf(const Section& section, const Image& image) {
    if (section.type == SHT_NOBITS) image.refuse("its section .vel.type is not stored in it");
    if ((section.flags & SHF_COMPRESSED) != 0) image.refuse("its section .vel.type is compressed");
    if (!image.holds(section.offset, section.sizeBytes))
        image.refuse("its section .vel.type lies outside of the file");
    if (section.sizeBytes > maxSectionBytes)
        image.refuse(format("its section .vel.type has %llu bytes, more than %llu",
                            static_cast<unsigned long long>(section.sizeBytes),
                            static_cast<unsigned long long>(maxSectionBytes)));
    std::vector<U8> bytes(static_cast<std::size_t>(section.sizeBytes));
    image.copy(section.offset, bytes);
    return bytes;
}

// Names go to terminals and logs: one that would disturb them is damage.
void checkName(std::string_view name, std::size_t offset, const Image& image) {
    for (const char c : name) {
        const unsigned byte = static_cast<U8>(c);
        if (byte < 0x20 || byte == 0x7f)
            image.refuse(format("the name at byte %zu of its section .vel.type holds byte 0x%02x",
                                offset, byte));
    }
}

void appendNames(std::vector<String8>& names, const std::vector<U8>& section, const Image& image) {
    const auto begin = section.begin();
    for (auto at = begin; at != section.end();) {
        const auto end = std::find(at, section.end(), U8{0});
        const auto offset = static_cast<std::size_t>(at - begin);
        if (end == section.end())
            image.refuse(
                format("the name at byte %zu of its section .vel.type has no end", offset));
        if (at != end) {
            const String8 name(std::string(at, end));
            checkName(name, offset, image);
            names.push_back(name);
        }
        at = end + 1;
    }
}

template <class Elf>
std::vector<String8> typesOf(const Image& image) {
    const Sections<Elf> sections(image);
    std::vector<String8> names;
    bool found = false;
    for (U64 index = 1; index < sections.count(); ++index) {
        const Section section = sections.at(index);
        if (!sections.isNamed(section, sectionName)) continue;
        appendNames(names, bytesOf(section, image), image);
        found = true;
    }
    if (!found) image.refuse("it has no section .vel.type");
    return names;
}

// The first bytes say how to read the rest.
std::vector<String8> typesOf(const Image& image) {
    if (image.sizeBytes() == 0) image.refuse("it is empty");
    std::array<U8, EI_NIDENT> ident = {};
    const auto identBytes =
        static_cast<std::size_t>(std::min<U64>(ident.size(), image.sizeBytes()));
    image.copy(0, std::span(ident).first(identBytes));
    if (std::memcmp(ident.data(), ELFMAG, std::min<std::size_t>(SELFMAG, identBytes)) != 0)
        image.refuse("it is not an ELF file");
    if (identBytes < ident.size()) image.refuse("it ends within its header");
    if (ident[EI_DATA] == ELFDATA2MSB) image.refuse("it is big-endian");
    if (ident[EI_DATA] != ELFDATA2LSB)
        image.refuse(format("its byte order %u is unknown", ident[EI_DATA]));
    if (ident[EI_VERSION] != EV_CURRENT)
        image.refuse(format("its ELF version %u is unknown", ident[EI_VERSION]));
    switch (ident[EI_CLASS]) {
    case ELFCLASS32: return typesOf<Elf32>(image);
    case ELFCLASS64: return typesOf<Elf64>(image);
    default: image.refuse(format("its word size, ELF class %u, is unknown", ident[EI_CLASS]));
    }
}

} // namespace

std::vector<String8> typeSectionOfFile(const String8& path) { return typesOf(FileImage(path)); }

std::vector<String8> typeSectionOfImage(std::span<const U8> image, const String8& name) {
    return typesOf(MemoryImage(image, name));
}

} // namespace Vel
