// How devices ask for a name and a password.
#include "MediaSessions/Dialogues/Device.hpp"

namespace Player::MediaSessions {
namespace {

const Device kDevices[] = {
    {"DigestBesideBasic", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        S: RTSP/1.0 401 Unauthorized
        S: CSeq: 1
        S: WWW-Authenticate: Digest realm="IP Camera C2134", nonce="a1b2c3", stale="FALSE"
        S: WWW-Authenticate: Basic realm="IP Camera C2134"
        S:
        > DESCRIBE clip 2 | Digest IP Camera C2134 a1b2c3
        < 200 2 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        S| v=0
        S| o=- 1389097367649123 1389097367649123 IN IP4 127.0.0.1
        S| s=Media Presentation
        S| e=NONE
        S| b=AS:5050
        S| t=0 0
        S| a=control:rtsp://{host}/clip/
        S| m=video 0 RTP/AVP 96
        S| b=AS:5000
        S| a=control:rtsp://{host}/clip/trackID=1
        S| a=rtpmap:96 H264/90000
        S| a=fmtp:96 profile-level-id=420029; packetization-mode=1; sprop-parameter-sets=Z00AKZpmA8ARPyzUBAQFAAADA+gAAMNQBA==,aO48gA==
        S| a=Media_header:MEDIAINFO=494D4B48;
        S| a=appversion:1.0
        > SETUP clip/trackID=1 3 | Digest IP Camera C2134 a1b2c3 | TCP 0
        < 200 3 | Session: 5 | TCP 0
        > PLAY clip/ 4 | Digest IP Camera C2134 a1b2c3 | Session: 5 | Range: npt=0.000000-
        < 200 4 | Session: 5
        M$ 0 H264 96
    )"},
    {"BasicBeforeDigest", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        S: RTSP/1.0 401 Unauthorized
        S: CSeq: 1
        S: WWW-Authenticate: Basic realm="cam"
        S: WWW-Authenticate: Digest realm="cam", nonce="a1b2c3"
        S:
        > DESCRIBE clip 2 | Digest cam a1b2c3
        < 200 2 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 3 | Digest cam a1b2c3 | TCP 0
        < 200 3 | Session: 5 | TCP 0
        > PLAY clip/ 4 | Digest cam a1b2c3 | Session: 5 | Range: npt=0.000000-
        < 200 4 | Session: 5
        M$ 0 H264 96
    )"},
    {"DigestThatClosesTheConnection", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        S: RTSP/1.0 401 Unauthorized
        S: CSeq: 1
        S: Connection: close
        S: WWW-Authenticate: Digest realm="cam", nonce="a1b2c3"
        S:
        CLOSE
        ACCEPT
        > DESCRIBE clip 2 | Digest cam a1b2c3
        < 200 2 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 3 | Digest cam a1b2c3 | TCP 0
        < 200 3 | Session: 5 | TCP 0
        > PLAY clip/ 4 | Digest cam a1b2c3 | Session: 5 | Range: npt=0.000000-
        < 200 4 | Session: 5
        M$ 0 H264 96
    )"},
    {"BasicAlone", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        S: RTSP/1.0 401 Unauthorized
        S: CSeq: 1
        S: WWW-Authenticate: Basic realm="/"
        S:
        > DESCRIBE clip 2 | Basic
        < 200 2 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 3 | Basic | TCP 0
        < 200 3 | Session: 5 | TCP 0
        > PLAY clip/ 4 | Basic | Session: 5 | Range: npt=0.000000-
        < 200 4 | Session: 5
        M$ 0 H264 96
    )"},
    {"BasicThatClosesTheConnection", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        S: RTSP/1.0 401 Unauthorized
        S: CSeq: 1
        S: Connection: close
        S: WWW-Authenticate: Basic realm="cam"
        S:
        CLOSE
        ACCEPT
        > DESCRIBE clip 2 | Basic
        < 200 2 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 3 | Basic | TCP 0
        < 200 3 | Session: 5 | TCP 0
        > PLAY clip/ 4 | Basic | Session: 5 | Range: npt=0.000000-
        < 200 4 | Session: 5
        M$ 0 H264 96
    )"},
    {"DigestWithoutBlanks", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        S: RTSP/1.0 401 Unauthorized
        S: CSeq: 1
        S: WWW-Authenticate: Digest realm="cam",nonce="a1b2c3"
        S:
        > DESCRIBE clip 2 | Digest cam a1b2c3
        < 200 2 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 3 | Digest cam a1b2c3 | TCP 0
        < 200 3 | Session: 5 | TCP 0
        > PLAY clip/ 4 | Digest cam a1b2c3 | Session: 5 | Range: npt=0.000000-
        < 200 4 | Session: 5
        M$ 0 H264 96
    )"},
    {"DigestInLowerCase", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        S: RTSP/1.0 401 Unauthorized
        S: CSeq: 1
        S: WWW-Authenticate: digest Realm="Login to 4F1C", Nonce="a1b2c3"
        S:
        > DESCRIBE clip 2 | Digest Login to 4F1C a1b2c3
        < 200 2 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 3 | Digest Login to 4F1C a1b2c3 | TCP 0
        < 200 3 | Session: 5 | TCP 0
        > PLAY clip/ 4 | Digest Login to 4F1C a1b2c3 | Session: 5 | Range: npt=0.000000-
        < 200 4 | Session: 5
        M$ 0 H264 96
    )"},
    {"BothInOneHeader", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        S: RTSP/1.0 401 Unauthorized
        S: CSeq: 1
        S: WWW-Authenticate: Basic realm="cam", Digest realm="cam", nonce="a1b2c3"
        S:
        > DESCRIBE clip 2 | Digest cam a1b2c3
        < 200 2 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 3 | Digest cam a1b2c3 | TCP 0
        < 200 3 | Session: 5 | TCP 0
        > PLAY clip/ 4 | Digest cam a1b2c3 | Session: 5 | Range: npt=0.000000-
        < 200 4 | Session: 5
        M$ 0 H264 96
    )"},
    {"PasswordForTheTracksAlone", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        S: RTSP/1.0 401 Unauthorized
        S: CSeq: 2
        S: WWW-Authenticate: Digest realm="cam", nonce="a1b2c3"
        S:
        > SETUP clip/trackID=1 3 | Digest cam a1b2c3 | TCP 0
        < 200 3 | Session: 5 | TCP 0
        > PLAY clip/ 4 | Digest cam a1b2c3 | Session: 5 | Range: npt=0.000000-
        < 200 4 | Session: 5
        M$ 0 H264 96
    )"},
    {"NewNonceForPlay", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        S: RTSP/1.0 401 Unauthorized
        S: CSeq: 1
        S: WWW-Authenticate: Digest realm="cam", nonce="a1b2c3"
        S:
        > DESCRIBE clip 2 | Digest cam a1b2c3
        < 200 2 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 3 | Digest cam a1b2c3 | TCP 0
        < 200 3 | Session: 5 | TCP 0
        > PLAY clip/ 4 | Digest cam a1b2c3 | Session: 5 | Range: npt=0.000000-
        S: RTSP/1.0 401 Unauthorized
        S: CSeq: 4
        S: WWW-Authenticate: Digest realm="cam", nonce="d4e5f6", stale=TRUE
        S:
        > PLAY clip/ 5 | Digest cam d4e5f6 | Session: 5 | Range: npt=0.000000-
        < 200 5
        M$ 0 H264 96
    )"},
    {"RedirectionBehindThePassword", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        S: RTSP/1.0 401 Unauthorized
        S: CSeq: 1
        S: WWW-Authenticate: Digest realm="cam", nonce="a1b2c3"
        S:
        > DESCRIBE clip 2 | Digest cam a1b2c3
        < 302 2 | Location: rtsp://{host}/clip/1
        > DESCRIBE clip/1 3 | Digest cam a1b2c3
        < 200 3 | Content-Base: rtsp://{host}/clip/1/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/1/trackID=1 4 | Digest cam a1b2c3 | TCP 0
        < 200 4 | Session: 5 | TCP 0
        > PLAY clip/1/ 5 | Digest cam a1b2c3 | Session: 5 | Range: npt=0.000000-
        < 200 5 | Session: 5
        M$ 0 H264 96
    )"},
};

INSTANTIATE_TEST_SUITE_P(Authentication, DeviceTest, testing::ValuesIn(kDevices), HabitOf);

}  // namespace
}  // namespace Player::MediaSessions
