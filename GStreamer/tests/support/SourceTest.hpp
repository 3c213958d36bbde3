#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "support/ElementUnderTest.hpp"
#include "support/ScriptedServer.hpp"

namespace ElementTest {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using TestSupport::ScriptedServer;

/// An element with a player that really speaks RTSP, and servers that play a dialogue with it. The players
/// wait for no media to be buffered before they deliver. Every dialogue has to have gone as written.
///
/// In addition to the shorthand of `Dialogue` there are
///     VIDEO 1 0.0 0.5      access units of track 0, sequence numbers from 1, at these seconds
///     VIDEO1 1 0.0 0.5     the same to the ports of track 1
///     AUDIO 1 0.0 0.5      the same for AAC, to the ports of track 1
///     OPEN 3 1.0           VIDEO without the mark of an access unit's last packet
///     VIDEO$, AUDIO$       VIDEO and AUDIO in frames on channel 0, on channel 2
///     VISUAL 1 0.0 0.5     pictures of MPEG-4 visual, to the ports of track 0
///     BYE 0                the end of track 0
///     PAUSE, TEARDOWN      that request, whatever its number; it succeeds
/// and "AAC" in a description, which stands for a track of MPEG-4 audio that the element plays.
class SourceTest : public testing::Test {
protected:
    SourceTest();
    ~SourceTest() override;
    void TearDown() override;

    ScriptedServer& Serve(const std::string& aDialogue);
    ElementUnderTest& Element() { return *mElement; }
    GstElement* Get() const { return mElement->Get(); }
    void SetLocation(const std::string& aLocation) { mElement->SetText("location", aLocation.c_str()); }
    /// With the location set, to that state step by step.
    void To(GstState aState);
    void Start(const std::string& aDialogue, GstState aState);
    /// All that the element has posted of these kinds up to now.
    std::vector<std::string> Messages(const std::vector<std::string>& aKinds = {"error", "other"});

    /// For the players made from now on, in seconds; 0 for the library's own.
    static void TimeOutAfter(unsigned aSeconds);
    /// For the players made from now on: media is to come within the RTSP connection.
    static void Interleave();
    /// Ends the element, then the dialogues.
    void Finish();

    std::vector<std::unique_ptr<ScriptedServer>> mServers;
    std::unique_ptr<ElementUnderTest> mElement;
};

/// One track of video, twenty seconds long. It plays, and two access units have come.
extern const char* const kClip;
/// The same without a range: a live presentation.
extern const char* const kLive;
/// Video and AAC, twenty seconds long.
extern const char* const kTwoTracks;

}  // namespace ElementTest
