// LiveObjects.h - for fixtures: every counted object that a test makes is gone when the test ends.
// Not installed.
//
//     class NotifierTest : public testing::Test {
//         Vel::Testing::LiveObjects live; // first: it looks when every other member is gone
//         ...
#pragma once

#include <Vel/PtrTrack.h>
#include <gtest/gtest.h>

namespace Vel::Testing {

class LiveObjects {
public:
    LiveObjects() {
        PtrTrack::clear();
        PtrTrack::ptrifTrackOn_ = true;
    }

    LiveObjects(const LiveObjects&) = delete;
    LiveObjects& operator=(const LiveObjects&) = delete;

    ~LiveObjects() {
        PtrTrack::ptrifTrackOn_ = false;
        EXPECT_EQ(PtrTrack::alive(), 0U) << "objects of any class live on";
        PtrTrack::clear();
    }
};

} // namespace Vel::Testing
