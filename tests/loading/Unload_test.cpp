// A bare process, which links none of the libraries, loads them, uses them in threads and unloads
// them.
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <latch>
#include <string>
#include <thread>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

// Ends the process, which is a test's child, with the reason.
void need(bool holds, const char* what) {
    if (holds) return;
    const char* const error = ::dlerror();
    std::fprintf(stderr, "%s: %s\n", what, error == nullptr ? "" : error);
    std::_Exit(1);
}

bool isLoaded(const char* library) {
    void* const handle = ::dlopen(library, RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr) ::dlclose(handle);
    return handle != nullptr;
}

// The module and, for it, the libraries.
class Plugin {
public:
    Plugin() : handle_(::dlopen(PLUGIN, RTLD_NOW | RTLD_LOCAL)) {
        need(handle_ != nullptr, "the module is loaded");
    }

    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    ~Plugin() { need(::dlclose(handle_) == 0, "the module is unloaded"); }

    void use() const {
        using Use = bool();
        Use* const call = reinterpret_cast<Use*>(::dlsym(handle_, "useTheLibraries"));
        need(call != nullptr && call(), "the libraries are used");
    }

private:
    void* handle_;
};

class Unload : public testing::Test {
protected:
    Unload() {
        GTEST_FLAG_SET(death_test_style, "threadsafe"); // each child is a program of its own
        std::string name = (fs::temp_directory_path() / "unload-XXXXXX").string();
        need(::mkdtemp(name.data()) != nullptr, "there is a folder");
        folder = name;
        ::setenv("PINBUF_DIR", name.c_str(), 1);
        ::setenv("FERROLOG_FILE", (folder / "trace").c_str(), 1);
    }

    ~Unload() override { fs::remove_all(folder); }

    fs::path folder;
};

TEST_F(Unload, EachLibraryStaysOnceItIsLoaded) {
    for (const char* const library : {LIBRARIES}) {
        const auto loadAndUnload = [library] {
            need(!isLoaded(library), "it is not there before");
            void* const handle = ::dlopen(library, RTLD_NOW | RTLD_LOCAL);
            need(handle != nullptr, "it is loaded");
            need(::dlclose(handle) == 0, "it is unloaded");
            need(isLoaded(library), "it is still there");
            std::exit(0);
        };
        EXPECT_EXIT(loadAndUnload(), testing::ExitedWithCode(0), "^$") << library;
    }
}

TEST_F(Unload, WhileAThreadThatUsedThemLivesOn) {
    const auto unloadUnderAThread = [] {
        std::latch used(1);
        std::latch unloaded(1);
        std::thread user;
        {
            const Plugin plugin;
            user = std::thread([&] {
                plugin.use();
                used.count_down();
                unloaded.wait();
            });
            used.wait();
        }
        need(!isLoaded(PLUGIN), "the module is gone");
        unloaded.count_down();
        user.join();
        std::exit(0);
    };
    EXPECT_EXIT(unloadUnderAThread(), testing::ExitedWithCode(0), "^$");
}

TEST_F(Unload, AndLoadedAgainTheyGoOn) {
    const auto loadOften = [] {
        for (int time = 0; time < 3; ++time) {
            const Plugin plugin;
            std::thread([&] { plugin.use(); }).join();
            plugin.use();
        }
        std::exit(0);
    };
    EXPECT_EXIT(loadOften(), testing::ExitedWithCode(0), "^$");
}

} // namespace
