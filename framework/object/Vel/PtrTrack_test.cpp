#include <Vel/PtrTrack.h>

#include <Vel/Ptr.h>
#include <Vel/PtrInterface.h>
#include <gtest/gtest.h>

namespace Vel {
namespace {

class Node : public PtrInterface {};

TEST(PtrTrack, KnowsWhatIsAliveAndWhatIsKeptOnPurpose) {
    const Ptr<Node> before = new Node;
    PtrTrack::clear();
    PtrTrack::ptrifTrackOn_ = true;
    {
        const Ptr<Node> a = new Node;
        const Ptr<Node> b = new Node;
        EXPECT_EQ(PtrTrack::alive(), 2u);
        b->referencesLeak();
        EXPECT_EQ(b->references(), 2u);
        EXPECT_EQ(PtrTrack::alive(), 1u);
        EXPECT_EQ(PtrTrack::leaked(), 1u);
        before->referencesLeak();
        EXPECT_EQ(PtrTrack::leaked(), 1u);
        b->referencesDec();
        before->referencesDec();
    }
    EXPECT_EQ(PtrTrack::alive(), 0u);
    EXPECT_EQ(PtrTrack::leaked(), 0u);
    PtrTrack::ptrifTrackOn_ = false;
    const Ptr<Node> untracked = new Node;
    EXPECT_EQ(PtrTrack::alive(), 0u);
}

} // namespace
} // namespace Vel
