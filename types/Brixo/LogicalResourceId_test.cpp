#include <Brixo/LogicalResourceId.h>

#include <Brixo/testing/ResourceIdConformance.h>
#include <gtest/gtest.h>

namespace Brixo {
namespace {

TEST(LogicalResourceId, IsAKindAndANumber) {
    Testing::expectResourceId<LogicalResourceId>("LogicalResourceId");
}

TEST(LogicalResourceId, ReadsTheTolerantGrammar) {
    Testing::expectResourceIdGrammar<LogicalResourceId>("LogicalResourceId");
}

} // namespace
} // namespace Brixo
