#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "Player/MediaPlayer.hpp"
#include "support/ReportCapture.hpp"
#include "support/ScriptedServer.hpp"

namespace Player {

// Parts of dialogues. {n} is the CSeq of the request, which the response echoes.

inline constexpr char kAgent[] = "C: User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/Generic; )\n";

inline std::string OkTo(const std::string& aCSeq) {
    return "S: RTSP/1.0 200 OK\nS: CSeq: " + aCSeq + "\n";
}

inline std::string Describe(const std::string& aCSeq, const std::string& aPath = "clip") {
    return "C: DESCRIBE rtsp://127.0.0.1:{port}/" + aPath + " RTSP/1.0\nC: CSeq: " + aCSeq + "\n" + kAgent +
           "C: Supported: 3gpp-pipelined, 3gpp-switch-req-sdp\nC: Accept: application/sdp\n";
}

inline constexpr char kVideo[] = R"(
        S| m=video 0 RTP/AVP 96
        S| a=rtpmap:96 H264/90000
        S| a=fmtp:96 packetization-mode=1
        S| a=control:track1
)";
inline constexpr char kAudio[] = R"(
        S| m=audio 0 RTP/AVP 97
        S| a=rtpmap:97 mpeg4-generic/44100/2
        S| a=fmtp:97 mode=AAC-hbr; sizeLength=13; indexLength=3; indexDeltaLength=3; config=1210
        S| a=control:track2
)";

inline std::string Description(const std::string& aMedia) {
    return R"(
        S: Content-Base: rtsp://127.0.0.1:{port}/clip/
        S: Content-Type: application/sdp
        S: Content-Length: {length}
        S:
        S| v=0
        S| a=range:npt=0-60
)" + aMedia;
}

inline std::string Described(const std::string& aMedia, const std::string& aHeaders = "") {
    return Describe("1") + "C:\n" + OkTo("1") + aHeaders + Description(aMedia);
}

inline constexpr char kPlayed[] = R"(
        S: Session: 12345
        S: RTP-Info: url=rtsp://127.0.0.1/clip/track1;seq=1;rtptime=0
        S:
)";

/// Whatever set-up and PLAY there are, they are answered; {range} of the PLAY is for the test to see.
inline const std::string kToTheRange = Described(kVideo) + "C: SETUP {*} RTSP/1.0\nC: CSeq: 2\nC...\n" + OkTo("2") +
                                       "S: Session: 12345\nS:\n"
                                       "C: PLAY {*} RTSP/1.0\nC: CSeq: 3\n" +
                                       kAgent +
                                       "C: Session: 12345\n"
                                       "C: Range: {range}\nC:\n" +
                                       OkTo("3") + kPlayed + "C: TEARDOWN {*}\nC...\n" + OkTo("4") + "S:\n";

/// A player and what the library reports of it.
class RTSPRequestsTest : public ::testing::Test {
protected:
    TestSupport::ReportCapture mReports;
    MediaPlayer mPlayer;
};

}  // namespace Player
