#include <Ferrolog/detail/Recorder.h>

#include <Ferrolog/detail/Complaint.h>
#include <Ferrolog/detail/Words.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <unistd.h>

namespace Ferrolog::detail {

namespace {

std::string_view orEmpty(const char* text) { return text == nullptr ? "" : text; }

constexpr U32 ownerTag = messageTag(ownerSiteId, ownerArgumentWords);
constexpr U32 ownerRecordWords = messageHeadWords + ownerArgumentWords;

U32 threadNow() { return static_cast<U32>(::gettid()); }

// Its number may be another thread's by now: then it seems to live for as long as that one does.
bool hasEnded(U32 thread) {
    return ::tgkill(::getpid(), static_cast<pid_t>(thread), 0) != 0 && errno == ESRCH;
}

// Says in the chunk who wrote the messages that follow.
void writeOwner(U32* to, U64 age, U32 life, U32 thread) {
    const U32 who[ownerArgumentWords] = {life, thread};
    writeMessage(to, ownerTag, age, who, [] { return 0U; });
}

} // namespace

Recorder::Recorder(const TraceFile& file, U32 epoch)
    : file_(file), clock_(chooseClock()), epoch_(epoch),
      session_(addShared(file.header().sessionsBegun, 1) + 1), first_(takeAnchor(clock_)),
      ticksPerSecond_(ticksPerSecond(first_, takeSecondAnchor(clock_, first_))) {
    life();
}

void Recorder::close() {
    renewAnchor(ticksNow(clock_));
    isClosed_ = true;
    file_.close();
}

// Takes the lane or chunk of this owner word if it is free. Of a closed file nothing: there a word
// says free that has an owner, who took it while it was the file's.
bool Recorder::take(U32& owner, U32 value) const { return replace(owner, 0, value) && !isClosed_; }

bool Recorder::isLent() const {
    return std::ranges::any_of(threads_,
                               [](U32 thread) { return thread != 0 && !hasEnded(thread); });
}

void Recorder::countAsLost(U32 messages) { addShared(file_.counters(0)[noRoomSiteId], messages); }

U32 Recorder::tagOf(ferrolog_site& site) {
    const U32 ticket = load(site.ticket);
    if (ticket >> 16 == epoch_) return ticket & 0xFFFF;

    SiteText text{orEmpty(site.file), orEmpty(site.format), orEmpty(site.letters), site.line};
    U32 words = wordsOf(text.letters);
    if (words > maxArgumentWords) {
        complain({"call site ", text.file, ":", site.line, " has the letters \"", text.letters,
                  "\"; its arguments are not recorded"});
        text.letters = "";
        words = 0;
    }
    // Keeps two threads from entering one site twice. That would do no harm, so nobody waits here:
    // a signal handler that interrupted the one who enters would wait for ever.
    const bool alone = !entering_.test_and_set();
    const U32 id = isClosed_ ? noRoomSiteId : SiteTable(file_).enter(text);
    if (alone) entering_.clear();
    if (id == noRoomSiteId && !isClosed_ && !noRoomSaid_.exchange(true)) {
        complain({"no room for call site ", text.file, ":", site.line,
                  "; its messages are kept without their text"});
    }
    const U32 tag = messageTag(id, words);
    storeLast(site.ticket, epoch_ << 16 | tag);
    return tag;
}

void Recorder::append(Lane& lane, U32 tag, const U32* arguments) {
    bool stored = false;
    if (!lane.busy) {
        lane.busy = true;
        lane.tickets = lane.monotonicTickets = Lane::notReady;
        std::atomic_signal_fence(std::memory_order_seq_cst);
        // A second time only if a second of preemption went by between preparing and appending.
        for (int attempt = 0; attempt < 2 && !stored; ++attempt) {
            if (!prepare(lane, tagWords(tag))) break;
            stored = lane.tryAppend(tag, arguments, ticksNow(clock_));
        }
        std::atomic_signal_fence(std::memory_order_seq_cst);
        if (stored) {
            (clock_ == ClockKind::timeStampCounter ? lane.tickets : lane.monotonicTickets) = epoch_
                                                                                             << 16;
        }
        lane.busy = false;
    }
    if (!stored) appendShared(tag, arguments);
}

// After it the lane has a chunk with room for a message of so many argument words, and an anchor
// that is not too old.
bool Recorder::prepare(Lane& lane, U32 words) {
    if (lane.recorder != this && !borrow(lane)) return false;
    U64 now = ticksNow(clock_);
    const U64 oldest = (U64{1} << ageBits) - 2 * ticksPerSecond_;
    const bool fits = lane.chunk != nullptr && now - lane.baseTicks < oldest &&
                      load(lane.chunk->usedWords) + messageHeadWords + words <= lane.chunkWords;
    if (!fits) {
        if (!renewChunk(lane)) return false;
        now = lane.baseTicks;
    }
    if (now - anchorTicks_.load(std::memory_order_relaxed) >= ticksPerSecond_) renewAnchor(now);
    lane.horizonTicks = now - lane.baseTicks + ticksPerSecond_;
    return true;
}

bool Recorder::borrow(Lane& lane) {
    const U32 number = claimLane();
    if (number == 0) return false;
    lane.recorder = this;
    lane.number = number;
    lane.thread = threadNow();
    lane.counters = file_.counters(number);
    lane.chunkWords = file_.layout().chunkWords();
    lane.chunk = nullptr;
    const U32 attached = load(file_.header().lanes[number].chunk);
    if (attached == 0) return true;

    // The thread before us left a chunk that is not full: go on in it, under our own name.
    ChunkHeader& chunk = file_.chunk(attached - 1);
    lane.chunk = &chunk;
    lane.baseTicks = chunk.baseTicks;
    const U64 age = ticksNow(clock_) - lane.baseTicks;
    const std::size_t at = addAsOnlyWriter(chunk.usedWords, ownerRecordWords);
    if (age >> ageBits == 0 && at + ownerRecordWords <= lane.chunkWords)
        writeOwner(wordsOf(chunk) + at, age, life(), lane.thread);
    else
        addAsOnlyWriter(chunk.usedWords, lane.chunkWords); // full for everybody
    return true;
}

// A free lane, or one whose process or thread is gone without giving it back; 0 if there is none.
U32 Recorder::claimLane() {
    const Layout& layout = file_.layout();
    const U32 mine = life();
    const U32 thread = threadNow();
    for (U32 number = 1; number < layout.lanes; ++number) {
        if (take(file_.header().lanes[number].owner, mine)) {
            threads_[number] = thread;
            return number;
        }
    }
    for (U32 number = 1; number < layout.lanes; ++number) {
        if (claimFromTheDead(number, thread)) {
            // Killed perhaps in the middle of a message: nothing is added behind that.
            LaneRecord& lane = file_.header().lanes[number];
            if (const U32 attached = load(lane.chunk); attached != 0) {
                storeLast(lane.chunk, 0);
                release(file_.chunk(attached - 1));
            }
            return number;
        }
    }
    return 0;
}

bool Recorder::claimFromTheDead(U32 number, U32 thread) {
    LaneRecord& lane = file_.header().lanes[number];
    const U32 mine = life();
    const U32 owner = load(lane.owner);
    if (owner == mine) {
        U32 former = threads_[number];
        return former != 0 && hasEnded(former) &&
               threads_[number].compare_exchange_strong(former, thread);
    }
    if (!isOfDeadProcess(owner) || !replace(lane.owner, owner, mine)) return false;
    threads_[number] = thread;
    return true;
}

bool Recorder::isOfDeadProcess(U32 lifeNumber) const {
    if (lifeNumber == 0) return false;
    const LifeRecord& record = file_.life(lifeNumber);
    const U32 pid = record.pid;
    return load(record.number) == lifeNumber && pid != 0 &&
           ::kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH;
}

void Recorder::giveBack(Lane& lane) {
    if (lane.recorder == nullptr) return;
    // Only if it is still ours: after a close it is not.
    Recorder& lender = *lane.recorder;
    const U32 number = lane.number;
    U32 thread = lane.thread;
    replace(lender.file_.header().lanes[number].owner, lender.life(), 0);
    lane = Lane{};
    // Last, for now the mapping may go; and only if no other thread has borrowed it meanwhile.
    lender.threads_[number].compare_exchange_strong(thread, 0);
}

bool Recorder::renewChunk(Lane& lane) {
    LaneRecord& record = file_.header().lanes[lane.number];
    if (lane.chunk != nullptr) {
        // The old one first: lanes never hold more than half of the chunks.
        ChunkHeader& old = *lane.chunk;
        lane.chunk = nullptr;
        storeLast(record.chunk, 0);
        release(old);
    }
    lane.chunk = takeChunk(lane.number, lane.thread);
    if (lane.chunk == nullptr) return false;
    lane.baseTicks = lane.chunk->baseTicks;
    const auto offset =
        reinterpret_cast<char*>(lane.chunk) - reinterpret_cast<char*>(&file_.chunk(0));
    storeLast(record.chunk, static_cast<U32>(offset) / file_.layout().chunkBytes + 1);
    return true;
}

// The oldest chunk that nobody fills. What it held is lost from here on; the counters tell how much
// that was.
ChunkHeader* Recorder::takeChunk(U32 lane, U32 thread) {
    const Layout& layout = file_.layout();
    for (U32 attempt = 0; attempt < layout.chunks && !isClosed_; ++attempt) {
        const U64 ordinal = addShared(file_.header().nextChunk, 1);
        ChunkHeader& chunk = file_.chunk(static_cast<U32>(ordinal % layout.chunks));
        if (ordinal == 0 || load(chunk.owner) != 0 || !take(chunk.owner, lane + 1)) continue;
        if (addShared(chunk.users, 0) != 0) { // somebody in lane 0 is late
            release(chunk);
            continue;
        }
        storeLast(chunk.ordinal, 0);
        std::atomic_thread_fence(std::memory_order_seq_cst);
        std::memset(wordsOf(chunk), 0, layout.chunkWords() * sizeof(U32));
        chunk.baseTicks = ticksNow(clock_);
        chunk.lane = lane;
        writeOwner(wordsOf(chunk), 0, life(), thread);
        store(chunk.usedWords, ownerRecordWords);
        storeLast(chunk.ordinal, ordinal);
        return &chunk;
    }
    return nullptr;
}

void Recorder::release(ChunkHeader& chunk) const { storeLast(chunk.owner, 0); }

U32 Recorder::life() {
    U32 number = life_.load(std::memory_order_acquire);
    if (number != 0) return number;
    // Two threads of a forked child may come here at once: the second life stays without messages.
    const U32 begun = beginLife();
    return life_.compare_exchange_strong(number, begun) ? begun : number;
}

U32 Recorder::beginLife() {
    U32 number = addShared(file_.header().livesBegun, 1) + 1;
    if (number == 0) number = addShared(file_.header().livesBegun, 1) + 1;
    LifeRecord& record = file_.life(number);
    storeLast(record.number, 0);
    std::atomic_thread_fence(std::memory_order_seq_cst);
    record.session = session_;
    record.pid = static_cast<U32>(::getpid());
    record.clock = clock_;
    record.name = {};
    std::memcpy(record.name.data(), program_invocation_short_name,
                ::strnlen(program_invocation_short_name, record.name.size()));
    record.first = first_;
    record.latest[0] = takeAnchor(clock_);
    record.latestIndex = 0;
    record.beganTicks = record.latest[0].ticks;
    anchorTicks_ = record.latest[0].ticks;
    storeLast(record.number, number);
    return number;
}

void Recorder::renewAnchor(U64 now) {
    if (anchorBusy_.exchange(true)) return;
    const U32 number = life();
    LifeRecord& record = file_.life(number);
    if (load(record.number) == number) { // else a thousand lives have begun since ours
        const U32 next = 1 - (record.latestIndex & 1);
        record.latest[next] = takeAnchor(clock_);
        storeLast(record.latestIndex, next);
    }
    anchorTicks_ = now;
    anchorBusy_ = false;
}

void Recorder::forgetParent() {
    life_ = 0;
    anchorBusy_ = false;
    sharedChunk_ = nullptr;
    entering_.clear();
    for (auto& thread : threads_) thread = 0;
}

// Lane 0: for threads beyond the number of lanes, and for signal handlers that interrupt the
// preparing of a lane. Each message goes with an owner record, and all steps are locked ones.
void Recorder::appendShared(U32 tag, const U32* arguments) {
    for (int attempt = 0; attempt < 64; ++attempt) {
        ChunkHeader* const chunk = sharedChunk_;
        if (chunk != nullptr) {
            // Announce first, then look again: a chunk that is still the current one now is not
            // taken from under us.
            addShared(chunk->users, 1);
            const bool current = sharedChunk_ == chunk;
            const bool done = current && tryAppendShared(*chunk, tag, arguments);
            addShared(chunk->users, ~U32{0});
            if (done) return;
            if (!current) continue;
        }
        replaceSharedChunk(chunk);
    }
    addShared(file_.counters(0)[tagSite(tag)], 1); // no chunk to be had: lost, and counted so
}

bool Recorder::tryAppendShared(ChunkHeader& chunk, U32 tag, const U32* arguments) {
    const U64 now = ticksNow(clock_);
    const U64 base = chunk.baseTicks;
    const U64 age = now > base ? now - base : 0;
    if (age >> ageBits != 0) return false;
    if (now - anchorTicks_.load(std::memory_order_relaxed) >= ticksPerSecond_) renewAnchor(now);
    const U32 need = ownerRecordWords + messageHeadWords + tagWords(tag);
    const U32 at = addShared(chunk.usedWords, need);
    if (at + need > file_.layout().chunkWords()) return false;
    U32* const to = wordsOf(chunk) + at;
    writeOwner(to, age, life(), threadNow());
    writeMessage(to + ownerRecordWords, tag, age, arguments,
                 [&] { return static_cast<U32>(addShared(file_.counters(0)[tagSite(tag)], 1)); });
    return true;
}

void Recorder::replaceSharedChunk(ChunkHeader* full) {
    ChunkHeader* const fresh = takeChunk(0, threadNow());
    if (fresh == nullptr) return;
    if (sharedChunk_.compare_exchange_strong(full, fresh)) {
        if (full != nullptr) release(*full);
    } else {
        storeLast(fresh->ordinal, 0); // another thread was first: ours stays empty
        release(*fresh);
    }
}

} // namespace Ferrolog::detail
