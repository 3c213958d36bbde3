#pragma once

#include <gtest/gtest.h>

#include "support/ElementUnderTest.hpp"
#include "support/FakeServer.hpp"

namespace ElementTest {

using Texts = std::vector<std::string>;

/// An element that plays from a fake server.
class SourceFixture : public ::testing::Test {
protected:
    /// A recorded clip of 60 s unless told otherwise; a first packet lies ready.
    void Serve(const std::vector<FakeServer::Description>& aTracks, double aDuration = 60) {
        mServer.Describe(aTracks);
        mServer.Range(0, aDuration);
        mServer.Push(0, 0, "first");
    }
    void ServeH264(double aDuration = 60) { Serve({FakeServer::H264()}, aDuration); }
    /// When this is asked of the server it has a packet of track 0 to send, which nobody can have taken before.
    void PushOn(const std::string& aOperation, gint64 aPlayTime, const std::string& aBytes) {
        mServer.On(aOperation, [this, aPlayTime, aBytes] { mServer.Push(0, aPlayTime, aBytes); });
    }
    /// PLAYING, with the first packet through.
    void StartPlaying() {
        ASSERT_TRUE(mElement.Play());
        ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
        EXPECT_EQ(Texts{"Play rtsp://host/clip 0.000000"}, mServer.TakeCalls());
        EXPECT_EQ(Texts(), mElement.TakeMessages());
        mElement.Sink(0)->Clear();
    }
    /// READY to PAUSED, with the location already set.
    GstStateChangeReturn Preroll(const char* aLocation = "rtsp://host/clip") {
        mElement.SetText("location", aLocation);
        return mElement.Set(GST_STATE_PAUSED);
    }

    FakeServer mServer;
    ElementUnderTest mElement;
};

}  // namespace ElementTest
