#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "MediaSessions/Dialogue.hpp"
#include "MediaSessions/RecordingHandler.hpp"
#include "Player/Exception.hpp"
#include "Player/MediaPlayer.hpp"
#include "support/Packets.hpp"
#include "support/ReportCapture.hpp"
#include "support/ScriptedServer.hpp"
#include "support/Throws.hpp"

namespace Player::MediaSessions {

/// A player, and a server that plays a dialogue with it. The dialogue has to have gone as written.
class SessionTest : public testing::Test {
protected:
    void TearDown() override {
        if (mServer) { EXPECT_EQ("", mServer->Failure()); }
    }

    void Serve(const std::string& aDialogue) {
        mServer = std::make_unique<TestSupport::ScriptedServer>(Dialogue(aDialogue));
    }
    std::string URL(const std::string& aPath = "clip") const { return mServer->URL(aPath); }
    void Play(const std::string& aPath = "clip", Time aFrom = Time(0)) { mPlayer.Play(URL(aPath), aFrom); }
    /// Takes the track's next sample out and tells its play time; -1 when there is none.
    Time TakeSample(TrackIdx aTrack) {
        const auto lSample = mPlayer.GetTrackPacket(aTrack);
        return lSample ? lSample->PlayTime() : Time(-1);
    }
    /// RTP within the RTSP connection.
    void Interleave() {
        mPlayer.SetConfigParam("RTSP:UseInterleavedRTP", "1");
        mHandler.SetConfigParam("RTSP:UseInterleavedRTP", "1");
    }

    /// Expects the call to report a failure at severity Error and to throw it with the same text.
    template <typename Kind, typename Call>
    void ExpectThrows(unsigned aError, const std::string& aMessage, Call aCall) {
        TestSupport::ExpectThrow<Kind>(mReports, aError, aMessage, aCall);
    }

    /// Reports that begin with the text, in order, without it.
    std::vector<std::string> Reported(const std::string& aPrefix) const {
        std::vector<std::string> lRest;
        for (const auto& lEntry : mReports.All()) {
            if (0 == lEntry.second.compare(0, aPrefix.size(), aPrefix)) {
                lRest.push_back(lEntry.second.substr(aPrefix.size()));
            }
        }
        return lRest;
    }
    /// The states entered so far.
    std::vector<std::string> States() const { return Reported("RTSP: State -> "); }

    TestSupport::ReportCapture mReports;
    std::unique_ptr<TestSupport::ScriptedServer> mServer;
    MediaPlayer mPlayer;
    /// To be used instead of the player where the session's calls are of interest.
    RecordingHandler mHandler;
};

}  // namespace Player::MediaSessions
