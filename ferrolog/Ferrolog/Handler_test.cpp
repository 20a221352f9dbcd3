// What the first messages of a process do that come in a signal handler, whatever it interrupted.
// Each test has a process of its own: the environment is looked at once.
#include <Ferrolog/Ferrolog.h>

#include <Ferrolog/testing/Allocations.h>
#include <Ferrolog/testing/TestFile.h>

#include <array>
#include <csignal>
#include <pthread.h>
#include <sys/time.h>
#include <thread>

namespace {

using Ferrolog::Reader;
using namespace Ferrolog::testing;

class Handler : public testing::Test {
protected:
    Handler() {
        ::setenv("FERROLOG_FILE", file.path.c_str(), 1);
        ::setenv("FERROLOG_SIZE", "16384", 1);
    }

    ~Handler() override {
        ::unsetenv("FERROLOG_FILE");
        ::unsetenv("FERROLOG_SIZE");
    }

    TestDirectory file;
};

ferrolog_site handlerSite{"T", "handler %i", "i", 1, 0};
int allocated = 0;

void onSignal(int number) {
    const auto word = static_cast<std::uint32_t>(number);
    allocated += allocationsOf([&] { ferrolog_append(&handlerSite, &word); });
}

TEST_F(Handler, TheFirstMessageAllocatesNothing) {
    EXPECT_EQ(inChild([] {
                  ::signal(SIGUSR1, onSignal);
                  ::raise(SIGUSR1);
                  EXPECT_EQ(allocated, 0);
              }),
              0);
    EXPECT_EQ(texts(Reader(file.path)), std::vector<std::string>{"handler 10"});
}

TEST_F(Handler, TheFirstMessageOfAThreadAllocatesNothing) {
    EXPECT_EQ(inChild([] {
                  ::signal(SIGUSR1, onSignal);
                  ::raise(SIGUSR1);
                  std::array<pthread_key_t, 100> others{};
                  for (pthread_key_t& key : others) {
                      ASSERT_EQ(::pthread_key_create(&key, nullptr), 0);
                  }
                  std::thread([] { ::raise(SIGUSR1); }).join();
                  EXPECT_EQ(allocated, 0);
              }),
              0);
    EXPECT_EQ(texts(Reader(file.path)), (std::vector<std::string>{"handler 10", "handler 10"}));
}

TEST_F(Handler, AnOpeningThatFailsAllocatesNothing) {
    ::setenv("FERROLOG_FILE", file.directory.c_str(), 1);
    ::setenv("FERROLOG_SIZE", "16k", 1);
    EXPECT_EQ(inChild([&] {
                  ::signal(SIGUSR1, onSignal);
                  EXPECT_EQ(complaintsOf([] { ::raise(SIGUSR1); }),
                            "Ferrolog: FERROLOG_SIZE \"16k\" is not a number of bytes; it is "
                            "ignored\nFerrolog: cannot open \"" +
                                file.directory + "\": Is a directory; tracing stays off\n");
                  EXPECT_EQ(allocated, 0);
              }),
              0);
}

TEST_F(Handler, AFileMovedAsideAllocatesNothing) {
    write(file.path, "precious");
    EXPECT_EQ(inChild([] {
                  ::signal(SIGUSR1, onSignal);
                  complaintsOf([] { ::raise(SIGUSR1); });
                  EXPECT_EQ(allocated, 0);
              }),
              0);
    EXPECT_EQ(texts(Reader(file.path)), std::vector<std::string>{"handler 10"});
    EXPECT_EQ(contents(file.path + ".1").size(), 8U);
}

// The interrupted thread holds the allocator's lock as often as not.
TEST_F(Handler, TheFirstMessageMayInterruptTheAllocator) {
    for (int round = 0; round < 40; ++round) {
        SCOPED_TRACE(round);
        ::unlink(file.path.c_str());
        EXPECT_EQ(inChild([] {
                      static std::atomic<bool> handled = false;
                      ::signal(SIGALRM, [](int number) {
                          onSignal(number);
                          handled = true;
                          ::signal(SIGALRM, SIG_DFL); // kills who has come to a halt
                          ::alarm(20);
                      });
                      const itimerval soon{{0, 0}, {0, 300}};
                      ::alarm(0);
                      ::setitimer(ITIMER_REAL, &soon, nullptr);
                      std::thread([] {}).join(); // from now on the allocator takes its locks
                      while (!handled) {
                          void* volatile memory = std::malloc(5000);
                          std::free(memory);
                      }
                      ::alarm(0);
                  }),
                  0);
        EXPECT_EQ(texts(Reader(file.path)), std::vector<std::string>{"handler 14"});
    }
}

// A complaint that nobody reads is a signal in the middle of the opening.
void withoutAReaderOfComplaints(void (*handler)(int)) {
    ::signal(SIGPIPE, handler);
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    ::close(ends[0]);
    ::dup2(ends[1], STDERR_FILENO);
}

TEST_F(Handler, AMessageThatComesDuringTheOpeningIsCounted) {
    ::setenv("FERROLOG_SIZE", "none", 1);
    EXPECT_EQ(inChild([] {
                  withoutAReaderOfComplaints(onSignal);
                  onSignal(0);
                  EXPECT_EQ(allocated, 0);
              }),
              0);
    const Reader reader(file.path);
    EXPECT_EQ(texts(reader), std::vector<std::string>{"handler 0"});
    EXPECT_EQ(reader.lost(), 1U);
    EXPECT_EQ(siteOf(reader, "call site without room for its text, words:").lost, 1U);
}

TEST_F(Handler, AForkDuringTheOpeningHoldsNobodyUp) {
    ::setenv("FERROLOG_SIZE", "none", 1);
    EXPECT_EQ(inChild([] {
                  ::alarm(60);
                  withoutAReaderOfComplaints([](int) {
                      const int status = inChild([] {
                          onSignal(1); // not recorded: this child, too, has begun to open
                      });
                      EXPECT_EQ(status, 0);
                  });
                  onSignal(0);
              }),
              0);
    EXPECT_EQ(texts(Reader(file.path)), std::vector<std::string>{"handler 0"});
}

} // namespace
