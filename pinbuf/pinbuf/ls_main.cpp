// ls_main.cpp - pinbuf-ls: lists the regions of a folder, a line each.
//
//     pinbuf-ls [FOLDER]
//     pinbuf-ls --help | --version
//
// A line is four words: name, owner, physical address, size in bytes. Names and owners come from
// files: whatever in them could break a line, end a word or steer a terminal is printed as \xNN.
//
// Exit status: 0 if the folder could be read; 1 if not; 2 for wrong arguments.
#include <pinbuf/pinbuf.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <getopt.h>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace {

constexpr const char* usageText = "usage: pinbuf-ls [FOLDER]\n";
constexpr const char* helpText =
    "usage: pinbuf-ls [FOLDER]\n"
    "\n"
    "Lists the DMA regions of FOLDER, a line each: name, owner, physical address, size in bytes.\n"
    "A dash stands for an owner or an address that is not known; blanks, control characters and\n"
    "what is no UTF-8 are printed as \\xNN.\n"
    "\n"
    "  FOLDER     by default $PINBUF_DIR, and without that /dev/shm/pinbuf-<effective user id>\n"
    "  --help     prints this\n"
    "  --version  prints the version\n"
    "\n"
    "Exit status: 0 if the folder could be read, 1 if not, 2 for wrong arguments.\n";
constexpr const char* versionText = "pinbuf-ls " BRIXO_VERSION "\n";

// The number of bytes of the well-formed UTF-8 character at the front of `text`; 0 if there is
// none.
std::size_t characterBytes(std::string_view text) {
    // First bytes `from` to `to` begin a character of `bytes` bytes, the second of which lies
    // between `low` and `high`: no longer form of a shorter one, no surrogate, nothing above
    // U+10FFFF.
    struct Lead {
        unsigned char from, to, bytes, low, high;
    };

    static constexpr std::array<Lead, 9> leads{{{0x00, 0x7f, 1, 0, 0},
                                                {0xc2, 0xdf, 2, 0x80, 0xbf},
                                                {0xe0, 0xe0, 3, 0xa0, 0xbf},
                                                {0xe1, 0xec, 3, 0x80, 0xbf},
                                                {0xed, 0xed, 3, 0x80, 0x9f},
                                                {0xee, 0xef, 3, 0x80, 0xbf},
                                                {0xf0, 0xf0, 4, 0x90, 0xbf},
                                                {0xf1, 0xf3, 4, 0x80, 0xbf},
                                                {0xf4, 0xf4, 4, 0x80, 0x8f}}};
    const auto at = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    for (const Lead& lead : leads) {
        if (at(0) < lead.from || at(0) > lead.to) continue;
        if (text.size() < lead.bytes) return 0;
        if (lead.bytes > 1 && (at(1) < lead.low || at(1) > lead.high)) return 0;
        for (std::size_t i = 2; i < lead.bytes; ++i)
            if (at(i) < 0x80 || at(i) > 0xbf) return 0;
        return lead.bytes;
    }
    return 0;
}

// Whether a character may stand in a word as it is: it is no blank, no control character (C0, DEL,
// C1, line and paragraph separator, a change of direction) and not the mark of an escape.
bool isPlain(std::string_view character) {
    const auto first = static_cast<unsigned char>(character[0]);
    if (character.size() == 1) return first > 0x20 && first != 0x7f && first != '\\';
    if (character.size() == 2) return character > "\xc2\xa0" && character != "\xd8\x9c";
    return !(character >= "\xe2\x80\x80" &&
             character <= "\xe2\x80\x8f") && // blanks, joiners, marks
           !(character >= "\xe2\x80\xa8" &&
             character <= "\xe2\x80\xaf") && // separators, embeddings
           !(character >= "\xe2\x81\x9f" && character <= "\xe2\x81\xaf") && // blank, isolates
           character != "\xe3\x80\x80" &&
           character != "\xef\xbb\xbf"; // wide blank, mark
}

// A text as one word, printable whatever it holds; "-" if it is empty.
std::string asWord(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    if (text.empty()) return "-";
    if (text == "-") return "\\x2d";
    std::string word;
    while (!text.empty()) {
        const std::size_t bytes = characterBytes(text);
        const std::string_view character = text.substr(0, std::max<std::size_t>(bytes, 1));
        text.remove_prefix(character.size());
        if (bytes > 0 && isPlain(character)) {
            word += character;
            continue;
        }
        for (const char c : character) {
            const auto byte = static_cast<unsigned char>(c);
            word += {'\\', 'x', digits[byte >> 4U], digits[byte & 0xfU]};
        }
    }
    return word;
}

// Characters, not bytes: columns stay straight.
std::size_t width(std::string_view word) {
    return static_cast<std::size_t>(
        std::ranges::count_if(word, [](char c) { return (c & '\xc0') != '\x80'; }));
}

using Row = std::array<std::string, 4>;

Row rowOf(const pinbuf_region& region) {
    std::array<char, sizeof "0x00000000"> address{};
    std::snprintf(address.data(), address.size(), "0x%08x", region.physical_address);
    return {asWord(region.name), asWord(region.owner),
            region.physical_address == 0 ? "-" : address.data(), std::to_string(region.size_bytes)};
}

void print(const std::vector<Row>& rows) {
    std::array<std::size_t, 3> widths{};
    for (const Row& row : rows)
        for (std::size_t i = 0; i < widths.size(); ++i)
            widths[i] = std::max(widths[i], width(row[i]));
    for (const Row& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < widths.size(); ++i)
            line += row[i] + std::string(widths[i] - width(row[i]) + 2, ' ');
        std::puts((line + row.back()).c_str());
    }
}

// The exit status, once what was printed has arrived or not.
int finish() {
    if (std::ferror(stdout) == 0 && std::fflush(stdout) == 0) return 0;
    std::fputs("pinbuf-ls: cannot write to standard output\n", stderr);
    return 1;
}

int answer(const char* text) {
    std::fputs(text, stdout);
    return finish();
}

int wrongArguments() {
    std::fputs(usageText, stderr);
    return 2;
}

// The library takes an absent folder for one without regions: where somebody names it, it is an
// error.
bool choose(const char* folder) {
    if (::access(folder, F_OK) == 0) return ::setenv("PINBUF_DIR", folder, 1) == 0;
    std::fprintf(stderr, "pinbuf-ls: %s: %s\n", asWord(folder).c_str(), std::strerror(errno));
    return false;
}

int list() {
    std::vector<Row> rows;
    const pinbuf_visitor keep = [](const pinbuf_region* region, void* context) {
        static_cast<std::vector<Row>*>(context)->push_back(rowOf(*region));
        return 0;
    };
    if (pinbuf_list(keep, &rows) < 0) return 1; // the library has said why
    print(rows);
    return finish();
}

} // namespace

int main(int argc, char** argv) {
    static constexpr option options[] = {
        {"help", no_argument, nullptr, 'h'}, {"version", no_argument, nullptr, 'v'}, {}};
    for (int chosen = 0; (chosen = ::getopt_long(argc, argv, "", options, nullptr)) != -1;) {
        if (chosen == 'h') return answer(helpText);
        if (chosen == 'v') return answer(versionText);
        return wrongArguments();
    }
    if (argc - optind > 1) return wrongArguments();
    if (optind < argc && !choose(argv[optind])) return 1;
    return list();
}
