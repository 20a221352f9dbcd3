#include <Ferrolog/detail/SiteTable.h>

#include <Ferrolog/detail/TraceFile.h>
#include <Ferrolog/detail/Words.h>

#include <cstring>

namespace Ferrolog::detail {

U32 siteCheck(const SiteText& site) {
    Check check;
    check.add(site.file.data(), site.file.size());
    check.add(site.format.data(), site.format.size());
    check.add(site.letters.data(), site.letters.size());
    check.add(site.line);
    check.add(wordsOf(site.letters));
    return check.value();
}

U32 SiteTable::find(const SiteText& site, U32 check) const {
    const Layout& layout = file_.layout();
    const U32 used = std::min(load(file_.header().sitesUsed), layout.siteCapacity);
    for (U32 id = noRoomSiteId; id < used; ++id) {
        const SiteRecord& record = file_.site(id);
        if (load(record.valid) != 1 || record.check != check || record.line != site.line ||
            record.fileBytes != site.file.size() || record.formatBytes != site.format.size() ||
            record.letterBytes != site.letters.size())
            continue;
        // An earlier life wrote the record: it may point anywhere.
        const U64 bytes = U64{record.fileBytes} + record.formatBytes + record.letterBytes;
        if (record.words != wordsOf(site.letters) || record.textOffset + bytes > layout.textBytes)
            continue;
        const char* text = file_.text() + record.textOffset;
        const auto matches = [&text](std::string_view expected) {
            const bool same = std::memcmp(text, expected.data(), expected.size()) == 0;
            text += expected.size();
            return same;
        };
        if (matches(site.file) && matches(site.format) && matches(site.letters)) return id;
    }
    return ownerSiteId;
}

U32 SiteTable::enter(const SiteText& site) const {
    const U32 check = siteCheck(site);
    if (const U32 id = find(site, check); id != ownerSiteId) return id;

    const Layout& layout = file_.layout();
    FileHeader& header = file_.header();
    const std::size_t bytes = site.file.size() + site.format.size() + site.letters.size();
    // Looked at before anything is taken, so that a table that is full stays as it is.
    if (load(header.sitesUsed) >= layout.siteCapacity ||
        bytes > std::min(layout.textBytes, 0xFFFFU) ||
        load(header.textUsed) > layout.textBytes - bytes)
        return noRoomSiteId;
    const U32 id = addShared(header.sitesUsed, 1);
    const U32 offset = addShared(header.textUsed, static_cast<U32>(bytes));
    if (id >= layout.siteCapacity || offset > layout.textBytes - bytes) return noRoomSiteId;

    char* text = file_.text() + offset;
    for (const std::string_view part : {site.file, site.format, site.letters}) {
        std::memcpy(text, part.data(), part.size());
        text += part.size();
    }
    SiteRecord& record = file_.site(id);
    record.line = site.line;
    record.textOffset = offset;
    record.fileBytes = static_cast<U16>(site.file.size());
    record.formatBytes = static_cast<U16>(site.format.size());
    record.letterBytes = static_cast<U16>(site.letters.size());
    record.words = static_cast<U16>(wordsOf(site.letters));
    record.check = check;
    storeLast(record.valid, 1);
    return id;
}

} // namespace Ferrolog::detail
