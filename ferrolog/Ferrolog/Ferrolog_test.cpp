#include <Ferrolog/Ferrolog.h>

#include <Ferrolog/Trace.h>
#include <Ferrolog/testing/TestFile.h>

#include <atomic>
#include <barrier>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <sys/time.h>
#include <thread>

namespace {

using Ferrolog::CallSite;
using Ferrolog::Message;
using Ferrolog::Reader;
using namespace Ferrolog::testing;

void append(ferrolog_site& site, std::uint32_t word) { ferrolog_append(&site, &word); }

TEST(Ferrolog, OneFileIsOpenAtATime) {
    TestFile file;
    ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
    EXPECT_NE(ferrolog_state, 0U);
    EXPECT_EQ(complaintsOf([&] { EXPECT_EQ(ferrolog_open("/other", 0), EBUSY); }),
              "Ferrolog: cannot open \"/other\": a trace file is open already\n");
    EXPECT_STREQ(ferrolog_error(),
                 "Ferrolog: cannot open \"/other\": a trace file is open already");
    ferrolog_close();
    EXPECT_EQ(ferrolog_state, 0U);
    ferrolog_close();
}

TEST(Ferrolog, AFailedOpeningLeavesTracingOff) {
    TestFile file;
    complaintsOf([&] { EXPECT_EQ(ferrolog_open((file.path + "/x").c_str(), 0), ENOENT); });
    EXPECT_EQ(ferrolog_state, 0U);
    FERROLOG("T", "nowhere");
}

// Texts that a program prints on a closed stream go nowhere; they must not go into the trace.
TEST(Ferrolog, ClosedStandardStreamsStayClosed) {
    TestFile file;
    EXPECT_EQ(inChild([&] {
                  ::close(STDIN_FILENO);
                  ::close(STDOUT_FILENO);
                  ::close(STDERR_FILENO);
                  ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
                  FERROLOG("T", "before the failure");
                  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
                      EXPECT_EQ(::write(stream, "assertion failed", 16), -1);
                  }
              }),
              0);
    EXPECT_EQ(texts(Reader(file.path)), std::vector<std::string>{"before the failure"});
    EXPECT_EQ(Reader(file.path).notes(), std::vector<std::string>{});
}

TEST(Ferrolog, NothingHappensWhileNoFileIsOpen) {
    TestFile file;
    ferrolog_site site{"T", "%i", "i", 1, 0};
    append(site, 1);
    EXPECT_EQ(ferrolog_register(&site), 0);
    EXPECT_EQ(site.ticket, 0U);
}

TEST(Ferrolog, RegisteringEntersTheSiteWithoutAMessage) {
    TestFile file;
    ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
    ferrolog_site site{"File", "text %i", "i", 7, 0};
    EXPECT_EQ(ferrolog_register(&site), 1);
    EXPECT_EQ(ferrolog_register(&site), 1);
    const Reader reader(file.path);
    EXPECT_EQ(siteOf(reader, "text %i").file, "File");
    EXPECT_EQ(siteOf(reader, "text %i").line, 7U);
    EXPECT_EQ(reader.messages().size(), 0U);
}

TEST(Ferrolog, NullTextsAreEmpty) {
    TestFile file;
    ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
    ferrolog_site site{nullptr, nullptr, nullptr, 0, 0};
    ferrolog_append(&site, nullptr);
    EXPECT_EQ(texts(Reader(file.path)), std::vector<std::string>{""});
}

TEST(Ferrolog, MessagesTellTimeProcessAndThread) {
    TestFile file;
    timespec before{};
    clock_gettime(CLOCK_REALTIME, &before);
    ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
    FERROLOG("T", "here");
    std::thread([] { FERROLOG("T", "there"); }).join();
    ferrolog_close();
    timespec after{};
    clock_gettime(CLOCK_REALTIME, &after);

    const Reader reader(file.path);
    ASSERT_EQ(texts(reader), (std::vector<std::string>{"here", "there"}));
    const auto ns = [](const timespec& t) {
        return std::uint64_t(t.tv_sec) * 1'000'000'000U + std::uint64_t(t.tv_nsec);
    };
    constexpr std::uint64_t slackNs = 10'000'000; // the clocks are read one after the other
    for (const Message& message : reader.messages()) {
        EXPECT_GE(message.timeNs + slackNs, ns(before));
        EXPECT_LE(message.timeNs, ns(after) + slackNs);
        EXPECT_EQ(reader.life(message.life)->pid, std::uint32_t(::getpid()));
    }
    EXPECT_EQ(reader.messages()[0].thread, std::uint32_t(::gettid()));
    EXPECT_NE(reader.messages()[1].thread, std::uint32_t(::gettid()));
}

TEST(Ferrolog, TheRingKeepsTheNewestAndCountsTheOthersPerSite) {
    TestFile file;
    ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
    ferrolog_site often{"T", "often %i", "i", 1, 0};
    ferrolog_site seldom{"T", "seldom %i", "i", 2, 0};
    for (std::uint32_t i = 0; i < 10000; ++i) {
        append(often, i);
        if (i % 100 == 0) {
            append(seldom, i);
        }
    }
    const Reader reader(file.path);
    const CallSite o = siteOf(reader, "often %i");
    const CallSite s = siteOf(reader, "seldom %i");
    EXPECT_EQ(o.present + o.lost, 10000U);
    EXPECT_EQ(s.present + s.lost, 100U);
    EXPECT_EQ(reader.lost(), o.lost + s.lost);
    // All but the chunk that is being filled are full: 12 messages of 4 words behind the owner's
    // record.
    EXPECT_GT(reader.messages().size(), 63U * 12);
    EXPECT_LE(reader.messages().size(), 64U * 12);
    std::uint32_t next = 10000 - static_cast<std::uint32_t>(o.present);
    for (const Message& message : reader.messages()) {
        if (reader.callSites()[message.site].format != "often %i") {
            continue;
        }
        EXPECT_EQ(reader.words(message)[0], next);
        ++next;
    }
    EXPECT_EQ(next, 10000U);
    EXPECT_EQ(reader.notes(), std::vector<std::string>{});
}

TEST(Ferrolog, TheNextLifeGoesOnInTheSameFile) {
    TestFile file;
    ferrolog_site site{"T", "message %i", "i", 1, 0};
    for (std::uint32_t i = 0; i < 3; ++i) {
        ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
        append(site, i);
        ferrolog_close();
        append(site, 99);
    }
    const Reader reader(file.path);
    EXPECT_EQ(texts(reader), (std::vector<std::string>{"message 0", "message 1", "message 2"}));
    EXPECT_EQ(reader.lives().size(), 3U);
    EXPECT_EQ(reader.messages()[0].life, 1U);
    EXPECT_EQ(reader.messages()[2].life, 3U);
    EXPECT_EQ(siteOf(reader, "message %i").present, 3U); // one site, found again by its content
}

TEST(Ferrolog, ASiteIsEnteredAnewIntoAnotherFile) {
    TestFile file;
    ferrolog_site site{"T", "message %i", "i", 1, 0};
    ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
    append(site, 1);
    ferrolog_close();
    const std::string other = file.directory + "/other";
    ASSERT_EQ(ferrolog_open(other.c_str(), smallRing), 0);
    ferrolog_site before{"T", "before %i", "i", 1, 0};
    append(before, 1);
    append(site, 2);
    EXPECT_EQ(texts(Reader(other)), (std::vector<std::string>{"before 1", "message 2"}));
    EXPECT_EQ(texts(Reader(file.path)), std::vector<std::string>{"message 1"});
}

TEST(Ferrolog, MessagesOfSitesWithoutRoomKeepTheirWords) {
    TestFile file;
    ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
    std::vector<ferrolog_site> sites;
    for (std::uint32_t line = 1; line <= 64; ++line) {
        sites.push_back({"T", "%i %i", "ii", line, 0});
    }
    EXPECT_EQ(complaintsOf([&] {
                  for (std::uint32_t line = 1; line <= 64; ++line) {
                      const std::uint32_t words[] = {5, line};
                      ferrolog_append(&sites[line - 1], words);
                  }
              }),
              "Ferrolog: no room for call site T:63; its messages are kept without their text\n");
    EXPECT_EQ(ferrolog_register(&sites[61]), 1);
    EXPECT_EQ(ferrolog_register(&sites[62]), 0);
    const Reader reader(file.path);
    ASSERT_EQ(reader.messages().size(), 64U);
    EXPECT_EQ(reader.text(reader.messages()[61]), "5 62");
    EXPECT_EQ(reader.text(reader.messages()[62]),
              "call site without room for its text, words: 0x5 0x3f");
    EXPECT_EQ(reader.text(reader.messages()[63]),
              "call site without room for its text, words: 0x5 0x40");
}

// With threads that live on, and that have nothing to do with the file any more.
TEST(Ferrolog, OpeningOftenKeepsOneMapping) {
    TestFile file;
    std::barrier step(2);
    std::atomic<bool> stop = false;
    ferrolog_site site{"T", "%i", "i", 1, 0};
    std::thread other([&] {
        for (;;) {
            step.arrive_and_wait();
            if (stop) {
                return;
            }
            append(site, 1);
            step.arrive_and_wait();
        }
    });
    for (int round = 0; round < 100; ++round) {
        const std::string path = file.path + std::to_string(round % 3);
        ASSERT_EQ(ferrolog_open(path.c_str(), smallRing), 0);
        append(site, 0);
        step.arrive_and_wait();
        step.arrive_and_wait();
        // The other thread has left the last file only just now.
        ASSERT_EQ(mappingsOf(file.directory), round == 0 ? 1U : 2U);
        ferrolog_close();
    }
    stop = true;
    step.arrive_and_wait();
    other.join();
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
        ferrolog_close();
    }
    ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
    EXPECT_EQ(mappingsOf(file.directory), 1U);
}

TEST(Ferrolog, ThreadsMayAppendWhileFilesComeAndGo) {
    TestFile file;
    std::atomic<bool> stop = false;
    std::vector<std::thread> writers;
    for (std::uint32_t thread = 0; thread < 3; ++thread) {
        writers.emplace_back([&] {
            for (std::uint32_t number = 0; !stop; ++number) {
                FERROLOG("T", "message ", number, " ", ~number);
            }
        });
    }
    for (int round = 0; round < 300; ++round) {
        const std::string path = file.path + std::to_string(round % 3);
        ASSERT_EQ(ferrolog_open(path.c_str(), smallRing), 0);
        EXPECT_LE(mappingsOf(file.directory), 1U + 3 * 2);
        ferrolog_close();
    }
    stop = true;
    for (std::thread& writer : writers) {
        writer.join();
    }
    for (const char* digit : {"0", "1", "2"}) {
        const Reader reader(file.path + digit);
        EXPECT_EQ(reader.error(), "");
        for (const Message& message : reader.messages()) {
            const auto words = reader.words(message);
            ASSERT_EQ(words.size(), 2U);
            EXPECT_EQ(words[0], ~words[1]) << "torn";
        }
    }
}

// Every thread's messages are there or counted as lost; what is there are each thread's newest, in
// their order.
void expectWholeTraceOf(const Reader& reader, std::uint32_t threads, std::uint32_t each) {
    const CallSite site = siteOf(reader, "%i %i");
    EXPECT_EQ(site.present + site.lost, std::uint64_t{threads} * each);
    EXPECT_EQ(reader.unfinished(), 0U);
    EXPECT_EQ(reader.notes(), std::vector<std::string>{});
    std::vector<std::uint32_t> last(threads, 0);
    for (const Message& message : reader.messages()) {
        const std::uint32_t thread = reader.words(message)[0];
        const std::uint32_t number = reader.words(message)[1];
        ASSERT_LT(thread, threads);
        EXPECT_TRUE(last[thread] == 0 || number == last[thread] + 1)
            << thread << ": " << last[thread] << ", " << number;
        last[thread] = number;
    }
    for (const std::uint32_t number : last) {
        EXPECT_TRUE(number == 0 || number == each);
    }
}

void writeFromThreads(std::uint32_t threads, std::uint32_t each) {
    static ferrolog_site site;
    site = {"T", "%i %i", "ii", 1, 0};
    std::barrier together(static_cast<std::ptrdiff_t>(threads));
    std::vector<std::thread> running;
    for (std::uint32_t thread = 0; thread < threads; ++thread) {
        running.emplace_back([&together, thread, each] {
            together.arrive_and_wait();
            for (std::uint32_t number = 1; number <= each; ++number) {
                const std::uint32_t words[] = {thread, number};
                ferrolog_append(&site, words);
            }
            together.arrive_and_wait(); // no lane is given back before all have one
        });
    }
    for (std::thread& thread : running) {
        thread.join();
    }
}

TEST(Ferrolog, FourThreadsLoseNothingWithoutCountingIt) {
    TestFile file;
    ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
    writeFromThreads(4, 20000);
    expectWholeTraceOf(Reader(file.path), 4, 20000);
}

TEST(Ferrolog, MoreThreadsThanLanesLoseNothingWithoutCountingIt) {
    TestFile file;
    ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
    writeFromThreads(24, 1000);
    const Reader reader(file.path);
    const CallSite site = siteOf(reader, "%i %i");
    EXPECT_EQ(site.present + site.lost, 24U * 1000);
    EXPECT_EQ(reader.unfinished(), 0U);
    EXPECT_EQ(reader.notes(), std::vector<std::string>{});
}

TEST(Ferrolog, ShortThreadsShareAChunk) {
    TestFile file;
    ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
    ferrolog_site site{"T", "%i", "i", 1, 0};
    for (std::uint32_t i = 0; i < 200; ++i) {
        std::thread([&] { append(site, i); }).join();
    }
    const Reader reader(file.path);
    EXPECT_EQ(reader.messages().size(), 200U);
    EXPECT_EQ(reader.lost(), 0U);
}

TEST(Ferrolog, ReadersDuringWritingSeeWholeMessagesAndExactLosses) {
    TestFile file;
    ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
    ferrolog_site site{"T", "%i %i %i", "iii", 1, 0};
    std::atomic<bool> stop = false;
    std::atomic<std::uint32_t> begun[4] = {};
    std::vector<std::thread> writers;
    for (std::uint32_t thread = 0; thread < 4; ++thread) {
        writers.emplace_back([&, thread] {
            for (std::uint32_t number = 0; !stop; ++number) {
                begun[thread] = number + 1;
                const std::uint32_t words[] = {thread, number, ~number};
                ferrolog_append(&site, words);
                if (number % 64 == 0) {
                    std::this_thread::yield();
                }
            }
        });
    }
    for (int round = 0; round < 50; ++round) {
        const Reader reader(file.path);
        EXPECT_EQ(reader.error(), "");
        std::vector<std::uint32_t> next(4, 0);
        for (const Message& message : reader.messages()) {
            const auto words = reader.words(message);
            ASSERT_EQ(words.size(), 3U);
            ASSERT_LT(words[0], 4U);
            EXPECT_EQ(words[1], ~words[2]) << "torn";
            EXPECT_GE(words[1], next[words[0]]) << "out of order";
            next[words[0]] = words[1] + 1;
        }
        std::uint64_t total = 0;
        for (const auto& count : begun) {
            total += count;
        }
        EXPECT_LE(siteOf(reader, "%i %i %i").present + siteOf(reader, "%i %i %i").lost, total);
    }
    stop = true;
    for (std::thread& writer : writers) {
        writer.join();
    }
    std::uint64_t total = 0;
    for (const auto& count : begun) {
        total += count;
    }
    const Reader reader(file.path);
    EXPECT_EQ(siteOf(reader, "%i %i %i").present + siteOf(reader, "%i %i %i").lost, total);
    EXPECT_EQ(reader.unfinished(), 0U);
}

TEST(Ferrolog, AForkedChildIsALifeOfItsOwn) {
    TestFile file;
    ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
    FERROLOG("T", "parent before");
    const pid_t child = ::fork();
    if (child == 0) {
        FERROLOG("T", "child");
        ::_exit(0);
    }
    ::waitpid(child, nullptr, 0);
    FERROLOG("T", "parent after");
    const Reader reader(file.path);
    ASSERT_EQ(texts(reader), (std::vector<std::string>{"parent before", "child", "parent after"}));
    EXPECT_EQ(reader.life(reader.messages()[0].life)->pid, std::uint32_t(::getpid()));
    EXPECT_EQ(reader.life(reader.messages()[1].life)->pid, std::uint32_t(child));
    EXPECT_EQ(reader.life(reader.messages()[2].life)->pid, std::uint32_t(::getpid()));
}

TEST(Ferrolog, ChildrenThatEndWithoutAWordLeaveNoLaneBehind) {
    TestFile file;
    ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
    FERROLOG("T", "parent");
    for (int i = 0; i < 40; ++i) {
        EXPECT_EQ(inChild([&] {
                      FERROLOG("T", "child ", i);
                      if (i % 2 == 0) {
                          ::kill(::getpid(), SIGKILL);
                      }
                  }),
                  i % 2 == 0 ? -SIGKILL : 0);
    }
    const Reader reader(file.path);
    EXPECT_EQ(reader.messages().size(), 41U);
    EXPECT_EQ(reader.lost(), 0U);
    EXPECT_EQ(reader.text(reader.messages()[40]), "child 39");
    EXPECT_EQ(siteOf(reader, "child %d").present, 40U);
}

// What a child does that a thread of its parent must not keep it from.
void traceInChild(const TestFile& file) {
    ::alarm(60); // kills who waits for ever
    ferrolog_close();
    EXPECT_EQ(ferrolog_open("/nowhere/trace", 0), ENOENT);
    EXPECT_STREQ(ferrolog_error(), "Ferrolog: cannot open \"/nowhere/trace\": No such file or "
                                   "directory; tracing stays off");
    const std::string path = file.directory + "/child";
    EXPECT_EQ(ferrolog_open(path.c_str(), smallRing), 0);
    FERROLOG("T", "child");
    ferrolog_close();
}

void forkWhile(const TestFile& file, void (*act)(const std::string& path)) {
    complaintsOf([&] {
        std::atomic<bool> stop = false;
        std::thread other([&] {
            while (!stop) {
                act(file.path);
            }
        });
        for (int round = 0; round < 50; ++round) {
            EXPECT_EQ(inChild([&] { traceInChild(file); }), 0);
        }
        stop = true;
        other.join();
    });
    EXPECT_EQ(texts(Reader(file.directory + "/child")), std::vector<std::string>(50, "child"));
}

TEST(Ferrolog, AForkedChildIsNotHeldUpByAnOpening) {
    TestFile file;
    forkWhile(file, [](const std::string& path) {
        ferrolog_open(path.c_str(), smallRing);
        ferrolog_close();
    });
}

TEST(Ferrolog, AForkedChildIsNotHeldUpByAComplaint) {
    TestFile file;
    forkWhile(file, [](const std::string&) { ferrolog_open("/nowhere/else", 0); });
}

ferrolog_site handlerSite{"T", "handler %i", "i", 1, 0};
std::uint32_t handled = 0;

void onSignal(int) {
    ++handled;
    ferrolog_append(&handlerSite, &handled);
}

TEST(Ferrolog, SignalHandlersMayTraceAtAnyMoment) {
    TestFile file;
    ASSERT_EQ(ferrolog_open(file.path.c_str(), smallRing), 0);
    handlerSite.ticket = 0;
    handled = 0;

    struct sigaction action {};

    action.sa_handler = onSignal;
    ASSERT_EQ(::sigaction(SIGALRM, &action, nullptr), 0);
    ferrolog_site site{"T", "main %i %i", "ii", 2, 0};
    std::uint32_t written = 0;
    // The next signal is ordered when the last has come: on a machine so slow that a handler takes
    // longer than a period, we would come no further.
    for (std::uint32_t ordered = 0; handled < 2000;) {
        if (ordered == handled) {
            const itimerval soon{{0, 0}, {0, 50}};
            ASSERT_EQ(::setitimer(ITIMER_REAL, &soon, nullptr), 0);
            ++ordered;
        }
        const std::uint32_t words[] = {written, ~written};
        ferrolog_append(&site, words);
        ++written;
    }
    ::signal(SIGALRM, SIG_IGN);
    const Reader reader(file.path);
    EXPECT_EQ(siteOf(reader, "main %i %i").present + siteOf(reader, "main %i %i").lost, written);
    EXPECT_EQ(siteOf(reader, "handler %i").present + siteOf(reader, "handler %i").lost, handled);
    for (const Message& message : reader.messages()) {
        const auto words = reader.words(message);
        if (words.size() == 2) {
            EXPECT_EQ(words[0], ~words[1]);
        }
    }
    EXPECT_EQ(reader.notes(), std::vector<std::string>{});
}

// In a process of its own: the environment is looked at once, at the first message.
class FerrologEnvironment : public testing::TestWithParam<const char*> {
protected:
    FerrologEnvironment() {
        GTEST_FLAG_SET(death_test_style, "threadsafe"); // starts the program anew, from main
        // The new process has another id, but our environment.
        const char* const given = ::getenv("FERROLOG_TEST_PATH");
        path = given != nullptr ? given
                                : std::filesystem::temp_directory_path() /
                                      ("ferrolog-environment." + std::to_string(::getpid()));
        ::setenv("FERROLOG_TEST_PATH", path.c_str(), 1);
        ::unlink(path.c_str());
    }

    ~FerrologEnvironment() override {
        ::unlink(path.c_str());
        for (const char* name : {"FERROLOG_FILE", "FERROLOG_SIZE", "FERROLOG_TEST_PATH"}) {
            ::unsetenv(name);
        }
    }

    std::string path;
};

int stateAfterTwoMessages() {
    FERROLOG("T", "first");
    FERROLOG("T", "second");
    return ferrolog_state != 0 ? 1 : 0;
}

TEST_F(FerrologEnvironment, NamesTheFileAndItsSize) {
    ::setenv("FERROLOG_FILE", path.c_str(), 1);
    ::setenv("FERROLOG_SIZE", "16384", 1);
    EXPECT_EXIT(::_exit(stateAfterTwoMessages()), testing::ExitedWithCode(1), "^$");
    EXPECT_EQ(texts(Reader(path)), (std::vector<std::string>{"first", "second"}));
    EXPECT_EQ(contents(path).size(), 45056U);
}

TEST_F(FerrologEnvironment, WithoutANameTracingIsOff) {
    EXPECT_EXIT(::_exit(stateAfterTwoMessages()), testing::ExitedWithCode(0), "^$");
    ::setenv("FERROLOG_FILE", "", 1);
    EXPECT_EXIT(::_exit(stateAfterTwoMessages()), testing::ExitedWithCode(0), "^$");
}

TEST_F(FerrologEnvironment, AFileThatCannotBeOpenedIsSaidOnce) {
    ::setenv("FERROLOG_FILE", "/nowhere/trace", 1);
    EXPECT_EXIT(::_exit(stateAfterTwoMessages()), testing::ExitedWithCode(0),
                "^Ferrolog: cannot open \"/nowhere/trace\": No such file or directory; tracing "
                "stays off\n$");
}

TEST_P(FerrologEnvironment, ASizeThatIsNoNumberIsIgnored) {
    ::setenv("FERROLOG_FILE", path.c_str(), 1);
    ::setenv("FERROLOG_SIZE", GetParam(), 1);
    EXPECT_EXIT(::_exit(stateAfterTwoMessages()), testing::ExitedWithCode(1),
                "^Ferrolog: FERROLOG_SIZE \"" + std::string(GetParam()) +
                    "\" is not a number of bytes; it is ignored\n$");
    EXPECT_EQ(contents(path).size(), 1511424U);
}

INSTANTIATE_TEST_SUITE_P(Sizes, FerrologEnvironment,
                         testing::Values("abc", "-1", "12k", "99999999999"));

} // namespace
