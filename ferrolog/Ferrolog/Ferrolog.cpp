#include <Ferrolog/Ferrolog.h>

#include <Ferrolog/detail/Complaint.h>
#include <Ferrolog/detail/Recorder.h>

#include <cerrno>
#include <cstdlib>
#include <mutex>
#include <pthread.h>

using namespace Ferrolog::detail;

namespace {

// Values of ferrolog_state. Every opening has a number of its own, from firstEpoch up.
constexpr U32 stateOff = 0;
constexpr U32 stateUnknown = 1; // nobody has looked at the environment yet
constexpr U32 firstEpoch = 2;
constexpr U32 lastEpoch = 0xFFFF; // the upper half of a ticket

constinit std::mutex openingMutex;
constinit std::atomic<Recorder*> recorder = nullptr;
constinit U32 epochs = firstEpoch;
pthread_key_t threadEnd;

// ferrolog_state in the upper half of a word, as tickets have it. The library's own: the other may lie in the executable,
// which costs a look-up.
constinit U32 presentTickets = stateUnknown << 16;

U32 state() { return load(presentTickets) >> 16; }

// The call sites' copy last when it turns tracing on, first when it turns it off.
void stateIs(U32 value) {
    if (value == stateOff) {
        storeLast(ferrolog_state, value);
    }
    storeLast(presentTickets, value << 16);
    if (value != stateOff) {
        storeLast(ferrolog_state, value);
    }
}

// In the static block of the thread, so that reaching it is no call.
[[gnu::tls_model("initial-exec")]] constinit thread_local Lane thisThread;

void onThreadEnd(void* lane) { Recorder::giveBack(*static_cast<Lane*>(lane)); }

void onForkInChild() {
    thisThread = Lane{};
    if (Recorder* const r = recorder) {
        r->forgetParent();
    }
}

// Once, at the first opening. The library is never unloaded (-z nodelete), so what is registered
// stays callable.
void watchThreadsAndForks() {
    static constinit bool done = false;
    if (done) {
        return;
    }
    done = true;
    pthread_key_create(&threadEnd, onThreadEnd);
    pthread_atfork(nullptr, nullptr, onForkInChild);
}

// Precondition: openingMutex is held and no file is open.
int openLocked(char const* path, U32 ringBytes) {
    TraceFile file;
    if (int const error = file.open(path, ringBytes); error != 0) {
        return error;
    }
    watchThreadsAndForks();
    recorder = new Recorder(file, epochs, recorder);
    stateIs(epochs);
    epochs = epochs == lastEpoch ? firstEpoch : epochs + 1;
    return 0;
}

U32 ringBytesOfEnvironment() {
    char const* const text = secure_getenv("FERROLOG_SIZE");
    if (text == nullptr || *text == '\0') {
        return 0;
    }
    char* end = nullptr;
    errno = 0;
    unsigned long long const bytes = std::strtoull(text, &end, 10);
    if (*text < '0' || *text > '9' || *end != '\0' || errno != 0 || bytes > ~U32{0}) {
        complain({"FERROLOG_SIZE \"", text, "\" is not a number of bytes; it is ignored"});
        return 0;
    }
    return static_cast<U32>(bytes);
}

void openFromEnvironment() {
    // Never wait: the caller may be a signal handler that interrupted the one who opens.
    std::unique_lock const lock(openingMutex, std::try_to_lock);
    if (!lock || state() != stateUnknown) {
        return;
    }
    char const* const path = secure_getenv("FERROLOG_FILE");
    if (path == nullptr || *path == '\0' || openLocked(path, ringBytesOfEnvironment()) != 0) {
        stateIs(stateOff);
    }
}

// The recorder of the open file; null: tracing is off.
Recorder* openRecorder() {
    if (state() == stateUnknown) {
        openFromEnvironment();
    }
    return state() < firstEpoch ? nullptr : recorder.load();
}

[[gnu::noinline, gnu::cold]] void appendSlowly(ferrolog_site& site, U32 const* words) {
    int const savedErrno = errno;
    if (Recorder* const r = openRecorder()) {
        Lane& lane = thisThread;
        if (lane.recorder != r && lane.recorder != nullptr && !lane.busy) {
            lane = Lane{};
        }
        bool const hadLane = lane.recorder != nullptr;
        r->append(lane, r->tagOf(site), words);
        if (!hadLane && lane.recorder != nullptr) {
            pthread_setspecific(threadEnd, &lane);
        }
    }
    errno = savedErrno;
}

// The usual way, if the site and the lane are of the present opening and the lane goes by the clock that `laneTickets` and
// `kind` say; else, or when something must be prepared first, false.
template <ClockKind kind>
bool tryAppend(Lane& lane, U32 const& laneTickets, ferrolog_site const& site, U32 const* words) {
    U32 const tickets = load(presentTickets);
    U32 const tag = load(site.ticket) ^ tickets;
    return laneTickets == tickets && tag <= 0xFFFF && lane.tryAppend(tag, words, ticksNow(kind));
}

// Where there is no time stamp counter that one can trust, and where something must be prepared. Apart, so that the usual
// way needs no stack frame: this is jumped to.
[[gnu::noinline]] void appendOtherwise(ferrolog_site& site, U32 const* words) {
    Lane& lane = thisThread;
    if (!tryAppend<ClockKind::monotonicNs>(lane, lane.monotonicTickets, site, words)) {
        appendSlowly(site, words);
    }
}

} // namespace

constinit uint32_t ferrolog_state = stateUnknown;

int ferrolog_open(char const* path, uint32_t ringBytes) {
    std::lock_guard const lock(openingMutex);
    if (state() >= firstEpoch) {
        complain({"cannot open \"", path, "\": a trace file is open already"});
        return EBUSY;
    }
    return openLocked(path, ringBytes);
}

void ferrolog_close() {
    std::lock_guard const lock(openingMutex);
    bool const wasOpen = state() >= firstEpoch;
    stateIs(stateOff);
    if (wasOpen) {
        recorder.load()->close();
    }
}

char const* ferrolog_error() { return lastComplaint(); }

int ferrolog_register(ferrolog_site* site) {
    Recorder* const r = openRecorder();
    return r != nullptr && tagSite(r->tagOf(*site)) != noRoomSiteId ? 1 : 0;
}

void ferrolog_append(ferrolog_site* site, uint32_t const* words) {
    Lane& lane = thisThread;
    if (!tryAppend<ClockKind::timeStampCounter>(lane, lane.tickets, *site, words)) [[unlikely]] {
        appendOtherwise(*site, words);
    }
}
