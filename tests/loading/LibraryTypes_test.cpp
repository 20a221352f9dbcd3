// What the file of libBrixoTypes says of its types, to a program that does not load it.
#include <Vel/TypeSection.h>

#include "library_types.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

TEST(LibraryTypes, AreListedInTheFileInTheirOrder) {
    EXPECT_THAT(Vel::typeSectionOfFile(LIBRARY), testing::ElementsAreArray(libraryTypes()));
}

} // namespace
