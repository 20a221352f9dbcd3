#include <Ferrolog/Reader.h>

#include <Ferrolog/detail/Render.h>
#include <Ferrolog/detail/SiteTable.h>
#include <Ferrolog/detail/Snapshot.h>

#include <algorithm>
#include <map>
#include <optional>
#include <tuple>

namespace Ferrolog {

using namespace detail;

namespace {

constexpr std::size_t maxNotes = 100;

// Turns the ticks of one life into wall-clock time, along the line through its first and its latest
// anchor.
class LifeClock {
public:
    LifeClock() = default;

    explicit LifeClock(const LifeRecord& record) : latest_(record.latest[record.latestIndex & 1]) {
        const U64 ticks = latest_.ticks - record.first.ticks;
        const U64 span = latest_.monotonicNs - record.first.monotonicNs;
        if (ticks != 0 && ticks <= maxSpan && span <= maxSpan)
            nsPerTick_ = static_cast<double>(span) / static_cast<double>(ticks);
    }

    U64 timeNs(U64 ticks) const {
        const auto distance = static_cast<std::int64_t>(ticks - latest_.ticks);
        const double ns = static_cast<double>(distance) * nsPerTick_;
        if (!(ns > -maxDistance && ns < maxDistance)) return latest_.realtimeNs;
        return latest_.realtimeNs + static_cast<U64>(static_cast<std::int64_t>(ns));
    }

private:
    static constexpr U64 maxSpan = U64{1} << 62;
    static constexpr double maxDistance = 4e18;

    Anchor latest_{};
    double nsPerTick_ = 1.0;
};

struct KnownLife {
    U32 session = 0;
    LifeClock clock;
};

// What messages are sorted by: time stamps of one session are of one clock.
struct Place {
    U32 session;
    U64 ticks;
    std::size_t message;
};

} // namespace

// Reads one snapshot into a Reader. The functions stand in the order in which read() calls them.
class [[gnu::visibility("hidden")]] Reader::Parser {
public:
    Parser(Reader & reader, const Snapshot& snapshot) : out_(reader), snapshot_(snapshot) {}

    void read() {
        if (!findLayout()) return;
        readLives();
        readSites();
        for (const U32 slot : chunksOldestFirst()) readChunk(slot);
        sortMessages();
        countLost();
        if (moreNotes_ > 0) out_.notes_.push_back("and " + std::to_string(moreNotes_) + " more");
    }

private:
    bool findLayout();
    std::optional<U32> ringBytesOfHeader(const FileHeader& header);
    void readLives();
    void readSites();
    U32 siteIndex(U32 id);
    std::vector<U32> chunksOldestFirst();
    bool isForeign(U32 slot, const ChunkHeader& chunk) const;
    void readChunk(U32 slot);
    bool isPlausible(U32 word0, U32 room) const;
    void readOwner(U64 at);
    void readMessage(const ChunkHeader& chunk, U64 at, U32 word0);
    void sortMessages();
    void countLost();
    void note(std::string text);

    Reader& out_;
    const Snapshot& snapshot_;
    Layout layout_{};
    std::map<U32, KnownLife> lives_;
    std::vector<std::optional<U32>> siteIndices_; // by id: index into callSites_
    std::vector<U32> siteWords_;  // by id: words of its messages, if the record is good
    std::vector<U32> presentOld_; // by lane and id: those that the counters include
    std::vector<Place> places_;
    U32 currentLife_ = 0;
    U32 currentThread_ = 0;
    U32 currentSession_ = 0;
    std::size_t moreNotes_ = 0;
};

Reader::Reader(const std::string& path) {
    const Snapshot snapshot = Snapshot::ofFile(path);
    error_ = snapshot.error;
    if (error_.empty()) Parser(*this, snapshot).read();
}

Reader::Reader(std::span<std::byte const> bytes) {
    const Snapshot snapshot = Snapshot::ofBytes(bytes);
    Parser(*this, snapshot).read();
}

const Life* Reader::life(std::uint32_t number) const {
    const auto at = std::ranges::lower_bound(lives_, number, {}, &Life::number);
    return at != lives_.end() && at->number == number ? &*at : nullptr;
}

std::string Reader::text(const Message& message) const {
    const CallSite& site = callSites_[message.site];
    return harmless(render(site.known ? site.format : "call site with a damaged record, words:",
                           words(message)));
}

std::string Reader::origin(const CallSite& site) const {
    return site.known ? harmless(site.file) + ':' + std::to_string(site.line) : "?";
}

std::string Reader::harmless(std::string_view text) { return detail::harmless(text); }

bool Reader::Parser::findLayout() {
    const auto header = snapshot_.first.get<FileHeader>(0);
    const auto ringBytes = ringBytesOfHeader(header);
    if (!ringBytes) return false;
    layout_ = layoutOf(*ringBytes);
    if (const U64 size = snapshot_.first.size(); size < layout_.fileBytes) {
        note("the file ends after " + std::to_string(size) + " of " +
             std::to_string(layout_.fileBytes) + " bytes");
    }
    return true;
}

// The header's word if it is good; else the file's size, if the rest of the header looks like ours.
std::optional<U32> Reader::Parser::ringBytesOfHeader(const FileHeader& header) {
    const bool good = header.check == headerCheck(header);
    const bool ours = header.magic == fileMagic;
    if (ours && good && header.byteOrder == fileByteOrder && header.version == fileVersion &&
        isRingSize(header.ringBytes))
        return header.ringBytes;
    if (ours && good && header.version != fileVersion) {
        out_.error_ = "it is a trace file of version " + std::to_string(header.version) +
                      "; this reader knows version " + std::to_string(fileVersion);
        return std::nullopt;
    }
    const int likeness = int{ours} + int{header.byteOrder == fileByteOrder} +
                         int{header.version == fileVersion} + int{isRingSize(header.ringBytes)};
    for (U32 bytes = minRingBytes; bytes <= maxRingBytes && likeness >= 2; bytes *= 2) {
        if (layoutOf(bytes).fileBytes == snapshot_.first.size()) {
            note("the header is damaged; the layout is taken from the file's size");
            return bytes;
        }
    }
    out_.error_ = "it is not a trace file";
    return std::nullopt;
}

void Reader::Parser::readLives() {
    for (U32 index = 0; index < layout_.lives; ++index) {
        const auto record = snapshot_.third.get<LifeRecord>(layout_.lifeAt(index + 1));
        if (record.number == 0) continue;
        if ((record.number - 1) % layout_.lives != index) {
            note("life record " + std::to_string(index) + " is damaged");
            continue;
        }
        const LifeClock clock(record);
        lives_[record.number] = {record.session, clock};
        const std::string_view name(record.name.data(), record.name.size());
        out_.lives_.push_back({record.number, record.pid,
                               std::string(name.substr(0, name.find('\0'))),
                               clock.timeNs(record.beganTicks)});
    }
    std::ranges::sort(out_.lives_, {}, &Life::number);
}

void Reader::Parser::readSites() {
    siteIndices_.resize(layout_.siteCapacity);
    siteWords_.assign(layout_.siteCapacity, maxArgumentWords + 1);
    presentOld_.assign(std::size_t{layout_.lanes} * layout_.siteCapacity, 0);
    std::map<std::tuple<std::string, U32, std::string, std::string>, U32> known;
    for (U32 id = noRoomSiteId; id < layout_.siteCapacity; ++id) {
        const auto record = snapshot_.third.get<SiteRecord>(layout_.siteAt(id));
        if (record.valid == 0) continue;
        const U64 at = U64{layout_.textAt} + record.textOffset;
        const U64 end =
            U64{record.textOffset} + record.fileBytes + record.formatBytes + record.letterBytes;
        CallSite site;
        if (end <= layout_.textBytes) {
            site.file = snapshot_.third.text(at, record.fileBytes);
            site.format = snapshot_.third.text(at + record.fileBytes, record.formatBytes);
            site.letters = snapshot_.third.text(at + record.fileBytes + record.formatBytes,
                                                record.letterBytes);
        }
        site.line = record.line;
        site.known = end <= layout_.textBytes && record.words == wordsOf(site.letters) &&
                     record.check == siteCheck({site.file, site.format, site.letters, site.line});
        if (!site.known) {
            note("the record of call site " + std::to_string(id) + " is damaged");
            continue;
        }
        siteWords_[id] = record.words;
        // Two threads may have entered one site at the same moment: one call site for the reader.
        const auto [entry, isNew] =
            known.try_emplace({site.file, site.line, site.format, site.letters},
                              static_cast<U32>(out_.callSites_.size()));
        siteIndices_[id] = entry->second;
        if (isNew) out_.callSites_.push_back(std::move(site));
    }
}

// The index of this site, also if its record is damaged.
U32 Reader::Parser::siteIndex(U32 id) {
    if (!siteIndices_[id]) {
        siteIndices_[id] = static_cast<U32>(out_.callSites_.size());
        out_.callSites_.emplace_back();
    }
    return *siteIndices_[id];
}

std::vector<U32> Reader::Parser::chunksOldestFirst() {
    std::vector<std::pair<U64, U32>> found;
    for (U32 slot = 0; slot < layout_.chunks; ++slot) {
        const auto chunk = snapshot_.first.get<ChunkHeader>(layout_.chunkAt(slot));
        if (chunk.ordinal == 0) continue;
        if (isForeign(slot, chunk)) {
            note("the header of chunk " + std::to_string(slot) +
                 " is damaged; the chunk is skipped");
        } else if (snapshot_.second.get<U64>(layout_.chunkAt(slot)) != chunk.ordinal ||
                   snapshot_.third.get<U64>(layout_.chunkAt(slot)) != chunk.ordinal) {
            note("chunk " + std::to_string(slot) + " was overwritten while it was read");
        } else {
            found.emplace_back(chunk.ordinal, slot);
        }
    }
    std::ranges::sort(found);
    std::vector<U32> slots;
    slots.reserve(found.size());
    for (const auto& [ordinal, slot] : found) slots.push_back(slot);
    return slots;
}

bool Reader::Parser::isForeign(U32 slot, const ChunkHeader& chunk) const {
    return chunk.ordinal % layout_.chunks != slot || chunk.lane >= layout_.lanes;
}

void Reader::Parser::readChunk(U32 slot) {
    const U64 chunkAt = layout_.chunkAt(slot);
    const auto chunk = snapshot_.first.get<ChunkHeader>(chunkAt);
    const U64 wordsAt = chunkAt + sizeof(ChunkHeader);
    const U32 limit = std::min(chunk.usedWords, layout_.chunkWords());
    const bool full = chunk.usedWords > layout_.chunkWords();
    currentLife_ = 0;
    currentThread_ = 0;
    for (U32 at = 0; at < limit;) {
        const U64 messageAt = wordsAt + U64{at} * 4;
        const auto word0 = snapshot_.first.get<U32>(messageAt);
        if (word0 == 0) {
            // A full chunk ends with what the last message did not fit into. Else a message was
            // begun here, and its length is not known.
            if (!full) ++out_.unfinished_;
            return;
        }
        if (!isPlausible(word0, limit - at)) {
            note("chunk " + std::to_string(slot) + " is damaged: its last " +
                 std::to_string(limit - at) + " words are skipped");
            return;
        }
        if (tagState(word0) == statePending || snapshot_.second.get<U32>(messageAt) != word0)
            ++out_.unfinished_;
        else if (tagSite(word0) == ownerSiteId)
            readOwner(messageAt);
        else
            readMessage(chunk, messageAt, word0);
        at += messageHeadWords + tagWords(word0);
    }
}

bool Reader::Parser::isPlausible(U32 word0, U32 room) const {
    const U32 id = tagSite(word0);
    const U32 words = tagWords(word0);
    if (tagState(word0) != stateCommitted && (word0 & 0xFFFF0003) != statePending) return false;
    if (messageHeadWords + words > room || id >= layout_.siteCapacity) return false;
    if (id == ownerSiteId) return words == ownerArgumentWords;
    return id == noRoomSiteId || siteWords_[id] > maxArgumentWords || siteWords_[id] == words;
}

void Reader::Parser::readOwner(U64 at) {
    currentLife_ = snapshot_.second.get<U32>(at + U64{4} * messageHeadWords);
    currentThread_ = snapshot_.second.get<U32>(at + U64{4} * (messageHeadWords + 1));
    const auto known = lives_.find(currentLife_);
    if (known != lives_.end()) {
        currentSession_ = known->second.session;
    } else {
        note("life " + std::to_string(currentLife_) +
             " is not in the file any more; its times are unknown");
    }
}

void Reader::Parser::readMessage(const ChunkHeader& chunk, U64 at, U32 word0) {
    const U32 id = tagSite(word0);
    const U64 age = U64{word0 >> 16} << 32 | snapshot_.second.get<U32>(at + 4);
    const U64 ticks = chunk.baseTicks + age;
    const auto ordinal = snapshot_.second.get<U32>(at + 8);

    // The counters were copied before the messages: what came in between is present, but not
    // counted yet.
    const auto counted =
        static_cast<U32>(snapshot_.first.get<U64>(layout_.counterAt(chunk.lane, id)));
    if (static_cast<std::int32_t>(ordinal - counted) < 0)
        ++presentOld_[std::size_t{chunk.lane} * layout_.siteCapacity + id];

    Message message;
    const auto known = lives_.find(currentLife_);
    message.timeNs = known == lives_.end() ? 0 : known->second.clock.timeNs(ticks);
    message.life = currentLife_;
    message.thread = currentThread_;
    message.site = siteIndex(id);
    message.firstWord = static_cast<U32>(out_.words_.size());
    message.wordCount = tagWords(word0);
    for (U32 i = 0; i < message.wordCount; ++i)
        out_.words_.push_back(snapshot_.second.get<U32>(at + 4 * (U64{messageHeadWords} + i)));
    ++out_.callSites_[message.site].present;
    places_.push_back({currentSession_, ticks, out_.messages_.size()});
    out_.messages_.push_back(message);
}

// Stable: the chunks came in order of their ordinals, so messages of one thread keep theirs within
//         one tick.
void Reader::Parser::sortMessages() {
    std::ranges::stable_sort(places_, {},
                             [](const Place& p) { return std::pair(p.session, p.ticks); });
    std::vector<Message> sorted;
    sorted.reserve(places_.size());
    for (const Place& place : places_) sorted.push_back(out_.messages_[place.message]);
    out_.messages_ = std::move(sorted);
}

void Reader::Parser::countLost() {
    for (U32 lane = 0; lane < layout_.lanes; ++lane) {
        for (U32 id = noRoomSiteId; id < layout_.siteCapacity; ++id) {
            const auto begun = snapshot_.first.get<U64>(layout_.counterAt(lane, id));
            const U32 present = presentOld_[std::size_t{lane} * layout_.siteCapacity + id];
            if (begun <= present) continue;
            out_.callSites_[siteIndex(id)].lost += begun - present;
            out_.lost_ += begun - present;
        }
    }
}

void Reader::Parser::note(std::string text) {
    if (out_.notes_.size() < maxNotes)
        out_.notes_.push_back(std::move(text));
    else
        ++moreNotes_;
}

} // namespace Ferrolog
