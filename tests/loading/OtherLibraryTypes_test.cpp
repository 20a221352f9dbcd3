// The same of the other word size's file, which this process could not load.
#include <Vel/TypeSection.h>

#include "library_types.h"
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace {

TEST(OtherLibraryTypes, AreListedInTheFileInTheirOrder) {
    const char* const build = std::getenv("BRIXO_OTHER_BUILD");
    ASSERT_NE(build, nullptr);
    const std::string library = std::string(build) + "/libBrixoTypes.so";
    EXPECT_THAT(Vel::typeSectionOfFile(library.c_str()), testing::ElementsAreArray(libraryTypes()));
}

} // namespace
