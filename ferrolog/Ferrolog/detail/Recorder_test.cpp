#include <Ferrolog/detail/Recorder.h>

#include <Ferrolog/testing/TestFile.h>

#include <array>
#include <barrier>
#include <csignal>
#include <thread>

namespace {

using namespace Ferrolog::detail;
using namespace Ferrolog::testing;
using Ferrolog::Message;
using Ferrolog::Reader;

// A recorder whose lanes the test holds in its hands, in place of threads.
class RecorderTest : public testing::Test {
protected:
    RecorderTest() {
        EXPECT_EQ(trace.open(file.path.c_str(), minRingBytes), 0);
        recorder.emplace(trace, 7);
    }

    ~RecorderTest() override { recorder->close(); }

    void append(Lane& lane, U32 number) { recorder->append(lane, recorder->tagOf(site), &number); }

    static U32 tagOfTicket(const ferrolog_site& of) { return of.ticket & 0xFFFF; }

    TestFile file;
    TraceFile trace;
    std::optional<Recorder> recorder;
    ferrolog_site site{"T", "%i", "i", 1, 0};
};

TEST_F(RecorderTest, ATicketHoldsTheEpochAndTheTag) {
    EXPECT_EQ(recorder->tagOf(site), messageTag(2, 1));
    EXPECT_EQ(site.ticket, 7U << 16 | messageTag(2, 1));
}

TEST_F(RecorderTest, ALaneFillsOneChunkAndTakesTheNext) {
    Lane lane;
    // 56 words: the owner record takes 5, each message 4.
    for (U32 i = 0; i < 12; ++i) {
        append(lane, i);
    }
    EXPECT_EQ(lane.number, 1U);
    EXPECT_EQ(trace.header().lanes[1].chunk, 2U); // slot 1, plus 1
    EXPECT_EQ(trace.chunk(1).usedWords, 53U);
    append(lane, 12);
    EXPECT_EQ(trace.header().lanes[1].chunk, 3U);
    EXPECT_EQ(trace.chunk(1).owner, 0U);
    EXPECT_EQ(trace.chunk(2).owner, 2U);
    EXPECT_EQ(Reader(file.path).messages().size(), 13U);
}

TEST_F(RecorderTest, TheNextThreadGoesOnInTheChunkOfTheLast) {
    for (U32 i = 0; i < 5; ++i) {
        Lane lane;
        append(lane, i);
        Recorder::giveBack(lane);
        EXPECT_EQ(lane.recorder, nullptr);
    }
    EXPECT_EQ(trace.header().nextChunk, 2U);
    EXPECT_EQ(trace.chunk(1).usedWords, 45U);
    EXPECT_EQ(texts(Reader(file.path)), (std::vector<std::string>{"0", "1", "2", "3", "4"}));
}

TEST_F(RecorderTest, AThreadThatFindsTheChunkFullTakesANewOne) {
    Lane first;
    for (U32 i = 0; i < 12; ++i) {
        append(first, i);
    }
    Recorder::giveBack(first);
    Lane second;
    append(second, 12);
    EXPECT_EQ(trace.header().nextChunk, 3U);
    EXPECT_EQ(Reader(file.path).messages().size(), 13U);
    EXPECT_EQ(Reader(file.path).unfinished(), 0U);
}

TEST_F(RecorderTest, ALaneThatSomebodyElseHoldsByNowIsNotGivenBack) {
    Lane lane;
    append(lane, 0);
    trace.header().lanes[1].owner = 99;
    Recorder::giveBack(lane);
    EXPECT_EQ(trace.header().lanes[1].owner, 99U);
}

TEST_F(RecorderTest, WithoutAFreeLaneMessagesGoThroughLaneZero) {
    std::vector<Lane> lanes(17);
    for (U32 i = 0; i < 17; ++i) {
        append(lanes[i], i);
    }
    EXPECT_EQ(lanes[14].number, 15U);
    EXPECT_EQ(lanes[15].recorder, nullptr);
    EXPECT_EQ(lanes[16].recorder, nullptr);
    const Reader reader(file.path);
    EXPECT_EQ(reader.messages().size(), 17U);
    EXPECT_EQ(trace.counters(0)[2], 2U);
    EXPECT_EQ(trace.chunk(16).usedWords, 5U + 2 * (5 + 4)); // an owner record before each message
    EXPECT_EQ(trace.chunk(16).users, 0U);
    EXPECT_EQ(reader.messages().back().thread, static_cast<U32>(::gettid()));
}

TEST_F(RecorderTest, LaneZeroTakesNewChunksToo) {
    std::vector<Lane> lanes(15);
    for (Lane& lane : lanes) {
        append(lane, 0);
    }
    Lane none;
    for (U32 i = 0; i < 1000; ++i) {
        append(none, i);
    }
    const Reader reader(file.path);
    // Five to a chunk, 49 chunks beside those of the fifteen lanes; the newest of the 1000 are
    // there, in order.
    const auto all = texts(reader);
    EXPECT_EQ(reader.messages().size() + reader.lost(), 1015U);
    EXPECT_EQ(siteOf(reader, "%i").lost, reader.lost());
    const std::size_t kept = all.size() - 15;
    for (std::size_t i = 0; i < kept; ++i) {
        EXPECT_EQ(all[15 + i], std::to_string(1000 - kept + i));
    }
    EXPECT_GT(kept, 48U * 5);
}

TEST_F(RecorderTest, ASignalHandlerThatInterruptsThePreparingGoesThroughLaneZero) {
    Lane lane;
    lane.busy = true; // as the handler would find it
    append(lane, 5);
    EXPECT_EQ(lane.recorder, nullptr);
    EXPECT_TRUE(lane.busy);
    EXPECT_EQ(trace.counters(0)[2], 1U);
    EXPECT_EQ(texts(Reader(file.path)), std::vector<std::string>{"5"});
}

TEST_F(RecorderTest, AChunkThatAThreadOfLaneZeroIsLateInIsNotTaken) {
    trace.chunk(1).users = 1;
    trace.chunk(2).owner = 9;
    Lane lane;
    append(lane, 0);
    EXPECT_EQ(trace.header().lanes[1].chunk, 4U);
    EXPECT_EQ(trace.chunk(1).owner, 0U);
}

TEST_F(RecorderTest, AMessageThatFindsNoChunkIsLostAndCounted) {
    for (U32 slot = 0; slot < 64; ++slot) {
        trace.chunk(slot).owner = 9;
    }
    Lane lane;
    append(lane, 0);
    append(lane, 1);
    const Reader reader(file.path);
    EXPECT_EQ(reader.messages().size(), 0U);
    EXPECT_EQ(reader.lost(), 2U);
    for (U32 slot = 0; slot < 64; ++slot) {
        trace.chunk(slot).owner = 0;
    }
    append(lane, 2);
    EXPECT_EQ(texts(Reader(file.path)), std::vector<std::string>{"2"});
}

// A thread may stand anywhere in an append while the file is closed, and go on when others write
// into it.
TEST_F(RecorderTest, AThreadThatIsLateLeavesAClosedFileAlone) {
    Lane late;
    append(late, 0);
    recorder->close();
    const std::vector<std::byte> closed = contents(file.path);

    const std::array<U32, maxArgumentWords> words{1};
    EXPECT_TRUE(late.tryAppend(tagOfTicket(site), words.data(), ticksNow(chooseClock())));
    EXPECT_EQ(contents(file.path), closed) << "past the look at its ticket";
    for (U32 i = 0; i < 30; ++i) {
        append(late, i);
    }
    EXPECT_EQ(late.chunk, nullptr);
    EXPECT_EQ(contents(file.path), closed) << "in want of a chunk";
    Lane without;
    append(without, 0);
    EXPECT_EQ(without.recorder, nullptr);
    EXPECT_EQ(contents(file.path), closed) << "in want of a lane";
    ferrolog_site unknown{"T", "unknown %i", "i", 2, 0};
    EXPECT_EQ(complaintsOf([&] { recorder->tagOf(unknown); }), "");
    recorder->countAsLost(1);
    Recorder::giveBack(late);
    EXPECT_EQ(contents(file.path), closed) << "at anything else";
}

TEST_F(RecorderTest, AThreadThatIsLateHarmsNoLaterMessage) {
    Lane late;
    append(late, 0);
    recorder->close();
    TraceFile again;
    ASSERT_EQ(again.open(file.path.c_str(), minRingBytes), 0);
    Recorder next(again, 8);
    Lane lane;
    const U32 tag = next.tagOf(site);
    for (U32 i = 1; i < 1000; ++i) {
        const std::array<U32, maxArgumentWords> words{i};
        next.append(lane, tag, words.data());
        late.tryAppend(tag, words.data(), ticksNow(chooseClock()));
    }
    const Reader reader(file.path);
    EXPECT_EQ(reader.messages().size() + reader.lost(), 1000U);
    EXPECT_EQ(texts(reader).back(), "999");
    EXPECT_EQ(reader.unfinished(), 0U);
    EXPECT_EQ(reader.notes(), std::vector<std::string>{});
    next.close();
    again.unmap();
}

TEST_F(RecorderTest, LanesOfDeadProcessesAreLentAgain) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(0);
    }
    ::waitpid(child, nullptr, 0);
    trace.life(2).number = 2;
    trace.life(2).pid = static_cast<U32>(child); // nobody any more
    trace.life(3).number = 3;
    trace.life(3).pid = static_cast<U32>(::getppid());
    for (U32 i = 1; i < 16; ++i) {
        trace.header().lanes[i].owner = i == 5 ? 2 : 3;
    }
    trace.header().lanes[5].chunk = 1 + 11;
    trace.chunk(11).owner = 6;
    Lane lane;
    append(lane, 0);
    EXPECT_EQ(lane.number, 5U);
    EXPECT_EQ(trace.header().lanes[5].owner, 1U);
    EXPECT_EQ(trace.chunk(11).owner, 0U);
    EXPECT_EQ(trace.chunk(11).usedWords, 0U);
}

TEST_F(RecorderTest, AHostileNextChunkHarmsNobody) {
    trace.header().nextChunk = ~U64{0};
    Lane lane;
    for (U32 i = 0; i < 30; ++i) {
        append(lane, i);
    }
    EXPECT_EQ(Reader(file.path).messages().size(), 30U);
}

TEST_F(RecorderTest, AnOldAnchorIsRenewedBesideTheOneThatHolds) {
    Lane lane;
    append(lane, 0);
    const LifeRecord before = trace.life(1);
    lane.horizonTicks = 0; // as if a second had passed
    append(lane, 1);
    // Not yet a second since the anchor: only the lane looked again.
    EXPECT_EQ(trace.life(1).latestIndex, before.latestIndex);
    recorder->close();
    TraceFile again;
    ASSERT_EQ(again.open(file.path.c_str(), minRingBytes), 0);
    const LifeRecord after = again.life(1);
    again.close();
    again.unmap();
    EXPECT_EQ(after.latestIndex, 1 - before.latestIndex);
    EXPECT_GT(after.latest[after.latestIndex].ticks, before.latest[before.latestIndex].ticks);
    EXPECT_EQ(after.latest[before.latestIndex].ticks, before.latest[before.latestIndex].ticks);
}

TEST_F(RecorderTest, UnknownLettersAreSaidOnceAndTheMessageKept) {
    ferrolog_site wrong{"File", "a %z", "z", 12, 0};
    const U32 word = 5;
    Lane lane;
    EXPECT_EQ(
        complaintsOf([&] {
            for (int i = 0; i < 2; ++i) {
                recorder->append(lane, recorder->tagOf(wrong), &word);
            }
        }),
        "Ferrolog: call site File:12 has the letters \"z\"; its arguments are not recorded\n");
    EXPECT_EQ(texts(Reader(file.path)), (std::vector<std::string>{"a %z", "a %z"}));
}

} // namespace
