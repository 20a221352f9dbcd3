// The library, loaded by a process that has used up what it would like to have. Nothing here links
// it; each test loads it in a child.
#include <Ferrolog/Ferrolog.h>

#include <Ferrolog/testing/Allocations.h>

#include <array>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <pthread.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using Ferrolog::testing::allocationsOf;

class Loading : public testing::Test {
protected:
    Loading() {
        std::string name = std::filesystem::temp_directory_path() / "ferrolog.XXXXXX";
        EXPECT_NE(::mkdtemp(name.data()), nullptr);
        directory = name;
    }

    ~Loading() override { std::filesystem::remove_all(directory); }

    void load() {
        void* const library = ::dlopen(LIBRARY, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr) << ::dlerror();
        open = reinterpret_cast<decltype(open)>(::dlsym(library, "ferrolog_open"));
        append = reinterpret_cast<decltype(append)>(::dlsym(library, "ferrolog_append"));
        ASSERT_EQ(open(path().c_str(), 16 << 10), 0);
    }

    std::string path() const { return directory + "/trace"; }

    // The last line that ferrolog-cat prints if no message is lost.
    bool hasAll(int messages) const {
        const std::string command = CAT " " + path() + " | tail -n 1 | grep -qx -e '-- " +
                                    std::to_string(messages) + " messages, 0 lost'";
        return std::system(command.c_str()) == 0;
    }

    template <class Body>
    static int inChild(Body body) {
        const pid_t child = ::fork();
        if (child == 0) {
            body();
            ::_exit(HasFailure() ? 1 : 0);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        return status;
    }

    std::string directory;
    decltype(&ferrolog_open) open = nullptr;
    decltype(&ferrolog_append) append = nullptr;
    ferrolog_site site{"T", "message", "", 1, 0};
};

std::vector<pthread_key_t> takenKeys(std::size_t most) {
    std::vector<pthread_key_t> keys;
    for (pthread_key_t key = 0; keys.size() < most && ::pthread_key_create(&key, nullptr) == 0;) {
        keys.push_back(key);
    }
    return keys;
}

// Lanes of threads that ended are found all the same; there are fifteen.
TEST_F(Loading, WithoutAKeyThreadsTraceAndLeaveTheKeysOfOthersAlone) {
    EXPECT_EQ(inChild([&] {
                  const std::vector<pthread_key_t> keys = takenKeys(PTHREAD_KEYS_MAX);
                  ASSERT_NO_FATAL_FAILURE(load());
                  for (int i = 0; i < 50; ++i) {
                      std::thread([&] {
                          append(&site, nullptr);
                          for (const pthread_key_t key : keys) {
                              ASSERT_EQ(::pthread_getspecific(key), nullptr);
                          }
                      }).join();
                  }
              }),
              0);
    EXPECT_TRUE(hasAll(50));
}

// Beyond some number the data of a key is allocated with a thread's first, and the first message
// may come in a signal handler.
TEST_F(Loading, WithALateKeyTheFirstMessageOfAThreadAllocatesNothing) {
    EXPECT_EQ(inChild([&] {
                  takenKeys(200);
                  ASSERT_NO_FATAL_FAILURE(load());
                  for (int i = 0; i < 50; ++i) {
                      std::thread([&] {
                          EXPECT_EQ(allocationsOf([&] { append(&site, nullptr); }), 0);
                      }).join();
                  }
              }),
              0);
    EXPECT_TRUE(hasAll(50));
}

} // namespace
