#include <Vel/forcePointerAccessH.h>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <string_view>

namespace Vel {
namespace {

// What a compiler sees through, it may drop together with the accessor.
TEST(ForcePointerAccessH, IsOutOfSightInTheLibrary) {
    void* const inLibrary = dlsym(RTLD_DEFAULT, "_ZN3Vel19forcePointerAccessHEPKv");
    ASSERT_NE(inLibrary, nullptr);
    EXPECT_EQ(inLibrary, reinterpret_cast<void*>(&forcePointerAccessH));
    Dl_info info{};
    ASSERT_NE(dladdr(inLibrary, &info), 0);
    EXPECT_NE(std::string_view(info.dli_fname).find("libVel"), std::string_view::npos);
}

} // namespace
} // namespace Vel
