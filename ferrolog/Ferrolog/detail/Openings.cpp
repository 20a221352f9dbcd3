#include <Ferrolog/detail/Openings.h>

#include <Ferrolog/detail/Complaint.h>

#include <atomic>
#include <cerrno>
#include <new>
#include <optional>
#include <sys/mman.h>

namespace Ferrolog::detail {

// Stays where it is for ever: who comes late may count itself in and out of what it finds there.
struct Opening {
    enum class Stage {
        free,
        open,
        closed,  // and a thread may be in its mapping
        deserted // and none was when a file was closed
    };

    bool isDeserted() const { return visitors == 0 && !recorder->isLent(); }

    std::atomic<U32> visitors = 0;
    Stage stage = Stage::free; // this and the others: with a turn, but for reading while open
    std::optional<Recorder> recorder;
    Opening* next = nullptr;
};

namespace {

using Stage = Opening::Stage;

constinit std::atomic<Opening*> present = nullptr;
constinit std::atomic<Opening*> all = nullptr; // a list
[[gnu::tls_model("initial-exec")]] constinit thread_local U32 visitsOfThread = 0;

template <class Call>
void forEach(Call call) {
    for (Opening* opening = all; opening != nullptr; opening = opening->next) call(*opening);
}

// Null: there is no memory.
Opening* freeOpening() {
    Opening* found = nullptr;
    forEach([&](Opening& opening) {
        if (opening.stage == Stage::free) found = &opening;
    });
    if (found != nullptr) return found;
    void* const memory = ::mmap(nullptr, sizeof(Opening), PROT_READ | PROT_WRITE,
                                MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return nullptr;
    auto* const made = new (memory) Opening;
    made->next = all;
    all = made;
    return made;
}

void unmapWhatIsDeserted() {
    forEach([](Opening& opening) {
        if (opening.stage == Stage::deserted) {
            opening.recorder->unmap();
            opening.recorder.reset();
            opening.stage = Stage::free;
        }
    });
}

void findWhatIsDeserted() {
    forEach([](Opening& opening) {
        if (opening.stage == Stage::closed && opening.isDeserted()) opening.stage = Stage::deserted;
    });
}

// The present one, with us among its visitors; null: no file is open.
Opening* enter() {
    for (;;) {
        Opening* const opening = present;
        if (opening == nullptr) return nullptr;
        // Announce first, then look again: what is still present now is not deserted.
        ++opening->visitors;
        if (present == opening) return opening;
        --opening->visitors;
    }
}

} // namespace

Visit::Visit() {
    ++visitsOfThread;
    // The visit is counted before it begins.
    opening_ = enter(); // NOLINT(cppcoreguidelines-prefer-member-initializer)
}

Visit::~Visit() {
    if (opening_ != nullptr) --opening_->visitors;
    --visitsOfThread;
}

Recorder& Visit::recorder() const { return *opening_->recorder; }

int beginOpening(const char* path, U32 ringBytes, U32 epoch) {
    unmapWhatIsDeserted();
    Opening* const opening = freeOpening();
    if (opening == nullptr) {
        complain({"cannot open \"", path, "\": ", textOfError(ENOMEM), "; tracing stays off"});
        return ENOMEM;
    }
    TraceFile file;
    if (const int error = file.open(path, ringBytes); error != 0) return error;
    opening->recorder.emplace(file, epoch);
    opening->stage = Stage::open;
    present = opening;
    return 0;
}

void endOpening() {
    Opening* const opening = present.exchange(nullptr);
    if (opening == nullptr) return;
    opening->recorder->close();
    opening->stage = Stage::closed;
    findWhatIsDeserted();
}

void forgetParent() {
    if (visitsOfThread ==
        0) // else we forked in a handler, and whom we interrupted counts itself out
        forEach([](Opening& opening) { opening.visitors = 0; });
    forEach([](Opening& opening) {
        if (opening.stage != Stage::free) opening.recorder->forgetParent();
    });
}

} // namespace Ferrolog::detail
