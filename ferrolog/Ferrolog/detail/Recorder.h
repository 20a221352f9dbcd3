// Recorder.h - this process as a writer into one opened trace file.
//
// Owns:      nothing: Openings.h says how long the mapping stays.
// Threads:   all calls may be made from any thread and, but for close() and unmap(), from a signal
//            handler.
#pragma once

#include <Ferrolog/Ferrolog.h>
#include <Ferrolog/detail/Lane.h>
#include <Ferrolog/detail/SiteTable.h>
#include <Ferrolog/detail/TraceFile.h>

#include <atomic>

namespace Ferrolog::detail {

class Recorder {
public:
    // `file` is open; `epoch` tells this opening from earlier ones. Begins a session and a life in
    // the file.
    Recorder(const TraceFile& file, U32 epoch);

    U32 epoch() const { return epoch_; }

    // Writes a last anchor and gives up file and lock. Whoever is late in a call comes to no harm;
    // what it writes from now on does not reach the file, and it takes nothing anew.
    void close();

    // Ends the mapping. Precondition: !isLent(), and nobody is in another call.
    void unmap() { file_.unmap(); }

    // Whether a living thread has a lane. Once it has none after a close, that stays.
    bool isLent() const;

    // Counts messages that nobody could record, under the site for those without room.
    void countAsLost(U32 messages);

    // The tag of the messages of this site; enters the site at its first call.
    U32 tagOf(ferrolog_site& site);

    // Appends by way of the lane, lending one to the thread if it has none, or else by way of lane
    // 0.
    void append(Lane& lane, U32 tag, const U32* arguments);

    // Gives the lane of a thread that ends to the next one, with the chunk that it was filling.
    static void giveBack(Lane& lane);

    // In a forked child, before anything else runs there: what the parent holds is not ours.
    void forgetParent();

private:
    bool take(U32& owner, U32 value) const;
    bool prepare(Lane& lane, U32 words);
    bool borrow(Lane& lane);
    U32 claimLane();
    bool claimFromTheDead(U32 number, U32 thread);
    bool isOfDeadProcess(U32 lifeNumber) const;
    bool renewChunk(Lane& lane);
    ChunkHeader* takeChunk(U32 lane, U32 thread);
    void release(ChunkHeader& chunk) const;
    U32 life();
    U32 beginLife();
    void renewAnchor(U64 now);
    void appendShared(U32 tag, const U32* arguments);
    bool tryAppendShared(ChunkHeader& chunk, U32 tag, const U32* arguments);
    void replaceSharedChunk(ChunkHeader* full);

    TraceFile file_;
    ClockKind clock_;
    U32 epoch_;
    U32 session_;
    Anchor first_;
    U64 ticksPerSecond_;
    std::atomic<bool> isClosed_ = false;
    std::atomic<U32> life_ = 0;
    std::atomic<U64> anchorTicks_ = 0;
    std::atomic<bool> anchorBusy_ = false;
    std::atomic<ChunkHeader*> sharedChunk_ = nullptr;
    std::atomic_flag entering_{}; // a call site is just being entered
    std::atomic<bool> noRoomSaid_ = false;
    std::array<std::atomic<U32>, maxLanes> threads_{}; // by lane: who has it, of this process
};

} // namespace Ferrolog::detail
