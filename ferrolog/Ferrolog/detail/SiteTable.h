// SiteTable.h - the call sites of a trace file: a table of records, and their texts one after
// another.
//
// Invariant: grows only; a valid record never changes. A kill in the middle of an entry costs that
//            entry.
// Threads:   safe, also from several processes. Two that enter the same site at the same moment may
//            both get an entry; readers take entries of equal content for one site.
#pragma once

#include <Ferrolog/detail/Layout.h>

#include <string_view>

namespace Ferrolog::detail {

class TraceFile;

struct SiteText {
    std::string_view file;
    std::string_view format;
    std::string_view letters;
    U32 line;
};

// How many argument words these letters take; more than maxArgumentWords if they are unknown or too
// many.
constexpr U32 wordsOf(std::string_view letters) {
    U32 words = 0;
    for (const char letter : letters) {
        switch (letter) {
        case 'i':
        case 'u':
        case 'd':
        case 'x': words += 1; break;
        case 'I':
        case 'U':
        case 'D':
        case 'X': words += 2; break;
        default: return maxArgumentWords + 1;
        }
        if (words > maxArgumentWords) break;
    }
    return words;
}

class SiteTable {
public:
    explicit SiteTable(const TraceFile& file) : file_(file) {}

    // The id of the site, entered if it is new; noRoomSiteId if it does not fit. O(sites).
    // Precondition: wordsOf(site.letters) <= maxArgumentWords.
    U32 enter(const SiteText& site) const;

private:
    U32 find(const SiteText& site, U32 check) const;

    const TraceFile& file_;
};

// The check that a record of this site carries.
U32 siteCheck(const SiteText& site);

} // namespace Ferrolog::detail
