#include <Brixo/constants.h>

#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(constants, AreWhatClientsAgreedOn) {
    EXPECT_EQ(unusedEntryPattern(), 3735928559u);
    EXPECT_EQ(maxBulkTransactionSizeInBytes(), 1048576u);
}

} // namespace
} // namespace Brixo
