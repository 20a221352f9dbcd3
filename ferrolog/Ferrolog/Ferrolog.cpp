#include <Ferrolog/Ferrolog.h>

#include <Ferrolog/detail/Complaint.h>
#include <Ferrolog/detail/Openings.h>
#include <Ferrolog/detail/Recorder.h>
#include <Ferrolog/detail/Turn.h>

#include <atomic>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <pthread.h>

using namespace Ferrolog::detail;

namespace {

// Values of ferrolog_state. Every opening has a number of its own, from firstEpoch up.
constexpr U32 stateOff = 0;
constexpr U32 stateUnknown = 1; // nobody has looked at the environment yet
constexpr U32 firstEpoch = 2;
constexpr U32 lastEpoch = 0xFFFF; // the upper half of a ticket

constinit U32 epochs = firstEpoch;     // with a turn
constinit std::atomic<U32> missed = 0; // messages that came while the file was being opened

// ferrolog_state in the upper half of a word, as tickets have it. The library's own: the other may
// lie in the executable, which costs a look-up.
constinit U32 presentTickets = stateUnknown << 16;

U32 state() { return load(presentTickets) >> 16; }

// The call sites' copy last when it turns tracing on, first when it turns it off.
void stateIs(U32 value) {
    if (value == stateOff) storeLast(ferrolog_state, value);
    storeLast(presentTickets, value << 16);
    if (value != stateOff) storeLast(ferrolog_state, value);
}

// In the static block of the thread, so that reaching it is no call.
[[gnu::tls_model("initial-exec")]] constinit thread_local Lane thisThread;

constinit pthread_key_t threadEnd = 0;
constinit bool threadsAreWatched = false;
constinit bool forksAreWatched = false;

// Thread-specific data with a larger key is allocated when a thread sets it first.
constexpr pthread_key_t keysWithRoomOfTheirOwn = 32;

void onThreadEnd(void* lane) { Recorder::giveBack(*static_cast<Lane*>(lane)); }

void onForkInChild() {
    thisThread = Lane{};
    forgetParent();
    forgetComplainers();
    Turn::giveInChild();
}

// At load: all this allocates, which the first message must not, for it may come in a signal
//          handler.
// The library is never unloaded (-z nodelete), so what is registered stays callable.
[[gnu::constructor]] void watchThreadsAndForks() {
    forksAreWatched = ::pthread_atfork(Turn::takeForFork, Turn::giveInParent, onForkInChild) == 0;
    // Without a key the lane of a thread that ended is lent again when there is no other.
    if (::pthread_key_create(&threadEnd, onThreadEnd) == 0) {
        threadsAreWatched = threadEnd < keysWithRoomOfTheirOwn;
        if (!threadsAreWatched) ::pthread_key_delete(threadEnd);
    }
}

// With a turn, while no file is open.
int openNow(const char* path, U32 ringBytes) {
    if (!forksAreWatched) {
        complain({"cannot open \"", path,
                  "\": there was no memory to prepare for forks; tracing stays off"});
        return ENOMEM;
    }
    if (state() != stateUnknown) missed = 0;
    if (const int error = beginOpening(path, ringBytes, epochs); error != 0) return error;
    stateIs(epochs);
    epochs = epochs == lastEpoch ? firstEpoch : epochs + 1;
    Visit().recorder().countAsLost(missed.exchange(0));
    return 0;
}

U32 ringBytesOfEnvironment() {
    const char* const text = ::secure_getenv("FERROLOG_SIZE");
    if (text == nullptr || *text == '\0') return 0;
    U32 bytes = 0;
    const char* const end = text + std::strlen(text);
    const auto [rest, error] = std::from_chars(text, end, bytes);
    if (rest != end || error != std::errc{}) {
        complain({"FERROLOG_SIZE \"", text, "\" is not a number of bytes; it is ignored"});
        return 0;
    }
    return bytes;
}

void openFromEnvironment() {
    const Turn turn = Turn::ifFree();
    if (!turn || state() != stateUnknown) return;
    const char* const path = ::secure_getenv("FERROLOG_FILE");
    if (path == nullptr || *path == '\0' || openNow(path, ringBytesOfEnvironment()) != 0)
        stateIs(stateOff);
}

void lookForFile() {
    if (state() == stateUnknown) openFromEnvironment();
}

void append(Recorder& recorder, ferrolog_site& site, const U32* words) {
    Lane& lane = thisThread;
    if (lane.recorder != &recorder && !lane.busy)
        Recorder::giveBack(lane); // to the opening that it is from
    const bool hadLane = lane.recorder != nullptr;
    recorder.append(lane, recorder.tagOf(site), words);
    if (!hadLane && lane.recorder != nullptr && threadsAreWatched) {
        // Cannot fail, as the key has room of its own; if it did, the lane would be found anyway.
        static_cast<void>(::pthread_setspecific(threadEnd, &lane));
    }
}

// Another thread, or what we interrupted, is opening the file: counted by whoever comes later, it
// or we.
void miss() {
    ++missed;
    if (const Visit visit; visit) visit.recorder().countAsLost(missed.exchange(0));
}

[[gnu::noinline, gnu::cold]] void appendSlowly(ferrolog_site& site, const U32* words) {
    const int savedErrno = errno;
    lookForFile();
    if (const Visit visit; visit)
        append(visit.recorder(), site, words);
    else if (state() != stateOff)
        miss();
    errno = savedErrno;
}

// The usual way, if the site and the lane are of the present opening and the lane goes by the clock
// that `laneTickets` and `kind` say; else, or when something must be prepared first, false.
template <ClockKind kind>
bool tryAppend(Lane& lane, const U32& laneTickets, const ferrolog_site& site, const U32* words) {
    const U32 tickets = load(presentTickets);
    const U32 tag = load(site.ticket) ^ tickets;
    return laneTickets == tickets && tag <= 0xFFFF && lane.tryAppend(tag, words, ticksNow(kind));
}

// Where there is no time stamp counter that one can trust, and where something must be prepared.
// Apart, so that the usual way needs no stack frame: this is jumped to.
[[gnu::noinline]] void appendOtherwise(ferrolog_site& site, const U32* words) {
    Lane& lane = thisThread;
    if (!tryAppend<ClockKind::monotonicNs>(lane, lane.monotonicTickets, site, words))
        appendSlowly(site, words);
}

} // namespace

constinit uint32_t ferrolog_state = stateUnknown;

int ferrolog_open(const char* path, uint32_t ringBytes) {
    const Turn turn = Turn::waitedFor();
    if (!turn || state() >= firstEpoch) {
        complain({"cannot open \"", path, "\": a trace file is open already"});
        return EBUSY;
    }
    return openNow(path, ringBytes);
}

void ferrolog_close() {
    const Turn turn = Turn::waitedFor();
    if (!turn) return;
    stateIs(stateOff);
    if (!thisThread.busy) Recorder::giveBack(thisThread);
    endOpening();
}

const char* ferrolog_error() { return lastComplaint(); }

int ferrolog_register(ferrolog_site* site) {
    lookForFile();
    const Visit visit;
    return visit && tagSite(visit.recorder().tagOf(*site)) != noRoomSiteId ? 1 : 0;
}

void ferrolog_append(ferrolog_site* site, const uint32_t* words) {
    Lane& lane = thisThread;
    if (!tryAppend<ClockKind::timeStampCounter>(lane, lane.tickets, *site, words)) [[unlikely]]
        appendOtherwise(*site, words);
}
