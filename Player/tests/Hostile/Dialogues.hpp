#pragma once

#include <string>

/// How the dialogues begin that a hostile server goes on with, and what comes of them.
namespace Player::Hostile {

// Every dialogue is interleaved and has two tracks.
inline const std::string kDescribe = "> DESCRIBE clip 1\n";
inline const std::string kFirstSetup = kDescribe + R"(
    < 200 1 | SDP clip/ video audio range=0-20
    > SETUP clip/video 2
)";
inline const std::string kSecondSetup = kFirstSetup + R"(
    < 200 2 | Session: 5 | TCP 0
    > SETUP clip/audio 3
)";
inline const std::string kPlay = kSecondSetup + R"(
    < 200 3 | Session: 5 | TCP 1
    > PLAY clip 4
)";

/// What is thrown, as `Thrown` tells it.
inline constexpr char kNoCSeq[] = "17/2 RTSP::RecvResponse(): Invalid response: CSeq missing";
inline constexpr char kOtherCSeq[] = "17/2 RTSP::RecvResponse(): Invalid response: CSeq mismatch";
inline constexpr char kBadLength[] = "17/2 RTSP::RecvResponse(): Invalid response: Bad Content-Length";
inline constexpr char kNoSDP[] = "18/2 RTSP::HandleSDP(): Invalid or incomplete SDP";
inline constexpr char kNoSession[] = "17/2 RTSP::RecvSetup(): Invalid SETUP response: Session missing";
inline constexpr char kPlays[] = "nothing";

}  // namespace Player::Hostile
