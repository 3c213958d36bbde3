// How devices write their headers.
#include "MediaSessions/Dialogues/Device.hpp"

namespace Player::MediaSessions {
namespace {

const Device kDevices[] = {
    {"BlanksAroundTheTimeOut", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 2A9F0D7 ; timeout=60 | TCP 0
        > PLAY clip/ 3 | Session: 2A9F0D7 | Range: npt=0.000000-
        < 200 3 | Session: 2A9F0D7 ; timeout=60
        M$ 0 H264 96
    )"},
    {"TimeOutThatIsNoNumber", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 2A9F0D7;timeout=forever | TCP 0
        > PLAY clip/ 3 | Session: 2A9F0D7 | Range: npt=0.000000-
        < 200 3 | Session: 2A9F0D7;timeout=forever
        M$ 0 H264 96
    )"},
    {"TimeOutWithoutAName", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 2A9F0D7;60 | TCP 0
        > PLAY clip/ 3 | Session: 2A9F0D7 | Range: npt=0.000000-
        < 200 3 | Session: 2A9F0D7;60
        M$ 0 H264 96
    )"},
    {"SessionWithOddCharacters", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: k9/+a$-_.= | TCP 0
        > PLAY clip/ 3 | Session: k9/+a$-_.= | Range: npt=0.000000-
        < 200 3 | Session: k9/+a$-_.=
        M$ 0 H264 96
    )"},
    {"LowerCaseHeaders", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        S: RTSP/1.0 200 OK
        S: cseq: 1
        S: content-base: rtsp://{host}/clip/
        S: content-length: {length}
        S:
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        S: RTSP/1.0 200 OK
        S: cseq: 2
        S: session: 5;timeout=60
        S: transport: RTP/AVP/TCP;unicast;interleaved=2-3
        S:
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        S: RTSP/1.0 200 OK
        S: cseq: 3
        S: rtp-info: url=rtsp://{host}/clip/trackID=1;seq=1;rtptime=3000
        S:
        M$ 2 H264 96
    )"},
    {"NoBlankBehindTheColon", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        S: RTSP/1.0 200 OK
        S: CSeq:1
        S: Content-Base:rtsp://{host}/clip/
        S: Content-Length:{length}
        S:
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        S: RTSP/1.0 200 OK
        S: CSeq:2
        S: Session:5
        S: Transport:RTP/AVP/TCP;unicast;interleaved=2-3
        S:
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        S: RTSP/1.0 200 OK
        S: CSeq:3
        S: RTP-Info:url=rtsp://{host}/clip/trackID=1;seq=1;rtptime=3000
        S:
        M$ 2 H264 96
    )"},
    {"BlankBeforeTheColon", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        S: RTSP/1.0 200 OK
        S: CSeq : 1
        S: Content-Base : rtsp://{host}/clip/
        S: Content-Length : {length}
        S:
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        S: RTSP/1.0 200 OK
        S: CSeq : 2
        S: Session : 5
        S: Transport : RTP/AVP/TCP;unicast;interleaved=2-3
        S:
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        S: RTSP/1.0 200 OK
        S: CSeq : 3
        S:
        M$ 2 H264 96
    )"},
    {"NoReason", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        S: RTSP/1.0 200
        S: CSeq: 1
        S: Content-Base: rtsp://{host}/clip/
        S: Content-Length: {length}
        S:
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        S: RTSP/1.0 200
        S: CSeq: 2
        S: Session: 5
        S: Transport: RTP/AVP/TCP;unicast;interleaved=0-1
        S:
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        S: RTSP/1.0 200
        S: CSeq: 3
        S:
        M$ 0 H264 96
    )"},
    {"FoldedHeaders", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        S: RTSP/1.0 200 OK
        S: CSeq: 1
        S: Content-Base:
        S:  rtsp://{host}/clip/
        S: Content-Length: {length}
        S:
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        S: RTSP/1.0 200 OK
        S: CSeq: 2
        S: Session: 5
        S: Transport: RTP/AVP/TCP;unicast;
        S:   interleaved=2-3
        S:
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        S: RTSP/1.0 200 OK
        S: CSeq: 3
        S:
        M$ 2 H264 96
    )"},
    {"ConnectionClosedAfterTheDescription", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Connection: close | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        CLOSE
        ACCEPT
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 0 H264 96
    )"},
    {"NoRTPInfo", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 0 H264 96
    )"},
    {"EmptyRTPInfo", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5 | RTP-Info: ;
        M$ 0 H264 96
    )"},
    {"RTPInfoWithABareName", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5 | RTP-Info: url=trackID=1;seq=1;rtptime=3000
        M$ 0 H264 96
    )"},
    {"RTPInfoWithoutURLs", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5 | RTP-Info: seq=1;rtptime=3000
        M$ 0 H264 96
    )"},
    {"RTPInfoOfZeros", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5 | RTP-Info: url=rtsp://{host}/clip/trackID=1;seq=0;rtptime=0
        M$ 0 H264 96
    )"},
    {"RTPInfoWithoutATime", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5 | RTP-Info: url=rtsp://{host}/clip/trackID=1;seq=1
        M$ 0 H264 96
    )"},
    {"RTPInfoWithQuotesAndBlanks", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5 | RTP-Info: url="rtsp://{host}/clip/trackID=1"; seq=1; rtptime=3000
        M$ 0 H264 96
    )"},
    {"RTPInfoOfAnotherPresentation", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5 | RTP-Info: url=rtsp://192.0.2.1/other/trackID=9;seq=900;rtptime=77
        M$ 0 H264 96
    )"},
    {"RTPInfoWithASlashTooMany", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5 | RTP-Info: url=rtsp://{host}/clip//trackID=1;seq=1;rtptime=3000
        M$ 0 H264 96
    )"},
    {"RangeFromNow", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5 | Range: npt=now- | RTP-Info: url=trackID=1;seq=1;rtptime=3000
        M$ 0 H264 96
    )"},
    {"RangeOfTheClock", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5 | Range: clock=20240101T120000Z- | RTP-Info: url=trackID=1;seq=1;rtptime=3000
        M$ 0 H264 96
    )"},
    {"RangeWithoutAValue", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5 | Range: npt= | RTP-Info: url=trackID=1;seq=1;rtptime=3000
        M$ 0 H264 96
    )"},
};

INSTANTIATE_TEST_SUITE_P(Headers, DeviceTest, testing::ValuesIn(kDevices), HabitOf);

}  // namespace
}  // namespace Player::MediaSessions
