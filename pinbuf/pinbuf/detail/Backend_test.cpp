#include <pinbuf/detail/Backend.h>

#include <cstdlib>
#include <gtest/gtest.h>
#include <pinbuf/detail/ShmBackend.h>
#include <pinbuf/detail/TestSupport.h>

namespace pinbuf {
namespace {

class ChosenBackend : public testing::Test {
protected:
    void TearDown() override { ::unsetenv("PINBUF_BACKEND"); }
};

TEST_F(ChosenBackend, IsShmUnlessSaidOtherwise) {
    ::unsetenv("PINBUF_BACKEND");
    EXPECT_EQ(&chosenBackend(), &ShmBackend::instance());
    ::setenv("PINBUF_BACKEND", "", 1);
    EXPECT_EQ(&chosenBackend(), &ShmBackend::instance());
    ::setenv("PINBUF_BACKEND", "shm", 1);
    EXPECT_EQ(&chosenBackend(), &ShmBackend::instance());
}

TEST_F(ChosenBackend, IsNeverGuessed) {
    for (const char* name : {"vfio", "SHM", "shm ", "sh"}) {
        ::setenv("PINBUF_BACKEND", name, 1);
        EXPECT_EQ(test::failureOf([] { chosenBackend(); }),
                  std::string("PINBUF_BACKEND names no back end: \"") + name +
                      "\", known is \"shm\"");
    }
}

} // namespace
} // namespace pinbuf
