// What devices write into their descriptions.
#include "MediaSessions/Dialogues/Device.hpp"

namespace Player::MediaSessions {
namespace {

const Device kDevices[] = {
    {"MetadataAndABackChannel", "tcp", "clip", {"H264", "mpeg4-generic"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        S| v=0
        S| a=control:*
        S| m=video 0 RTP/AVP 96
        S| a=control:trackID=0
        S| a=rtpmap:96 H264/90000
        S| a=recvonly
        S| m=audio 0 RTP/AVP 97
        S| a=control:trackID=1
        S| a=rtpmap:97 MPEG4-GENERIC/48000
        S| a=fmtp:97 mode=AAC-hbr;sizelength=13;indexlength=3;indexdeltalength=3;config=1408
        S| a=recvonly
        S| m=application 0 RTP/AVP 107
        S| a=control:trackID=4
        S| a=rtpmap:107 vnd.onvif.metadata/90000
        S| a=recvonly
        S| m=audio 0 RTP/AVP 116 115 0 8
        S| a=control:trackID=5
        S| a=rtpmap:116 MPEG4-GENERIC/64000
        S| a=rtpmap:115 MPEG4-GENERIC/48000
        S| a=rtpmap:0 PCMU/8000
        S| a=rtpmap:8 PCMA/8000
        S| a=sendonly
        > SETUP clip/trackID=0 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > SETUP clip/trackID=1 3 | Session: 5 | TCP 1
        < 200 3 | Session: 5 | TCP 1
        > PLAY clip/ 4 | Session: 5 | Range: npt=0.000000-
        < 200 4 | Session: 5
        M$ 0 H264 96
        M$ 2 mpeg4-generic 97
    )"},
    {"OddCaseOfNames", "tcp", "clip", {"H264", "mpeg4-generic"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        S| v=0
        S| m=video 0 RTP/AVP 96
        S| a=rtpmap:96 h264/90000
        S| a=fmtp:96 Packetization-Mode=1;Profile-Level-Id=42e01f;Sprop-Parameter-Sets=Z0LgH9oBQBbs,aM48gA==
        S| a=control:video
        S| m=audio 0 RTP/AVP 97
        S| a=rtpmap:97 Mpeg4-Generic/16000/1
        S| a=fmtp:97 streamType=5; Mode=aac-hbr; SizeLength=13; IndexLength=3; IndexDeltaLength=3; Config=1408
        S| a=control:audio
        > SETUP clip/video 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > SETUP clip/audio 3 | Session: 5 | TCP 1
        < 200 3 | Session: 5 | TCP 1
        > PLAY clip/ 4 | Session: 5 | Range: npt=0.000000-
        < 200 4 | Session: 5
        M$ 0 H264 96
        M$ 2 mpeg4-generic 97
    )"},
    {"StaticTypesBesideDynamicOnes", "tcp", "clip", {"H264", "mpeg4-generic"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        S| v=0
        S| m=video 0 RTP/AVP 26 96
        S| a=rtpmap:96 H264/90000
        S| a=control:video
        S| m=audio 0 RTP/AVP 0 8 97
        S| a=rtpmap:0 PCMU/8000
        S| a=rtpmap:97 mpeg4-generic/16000
        S| a=fmtp:97 mode=AAC-hbr;sizelength=13;indexlength=3;indexdeltalength=3;config=1408
        S| a=control:audio
        > SETUP clip/video 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > SETUP clip/audio 3 | Session: 5 | TCP 1
        < 200 3 | Session: 5 | TCP 1
        > PLAY clip/ 4 | Session: 5 | Range: npt=0.000000-
        < 200 4 | Session: 5
        M$ 0 H264 96
        M$ 2 mpeg4-generic 97
    )"},
    {"BlanksAtTheEndsOfLines", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        S: RTSP/1.0 200 OK{blank}
        S: CSeq: 1{blank}
        S: Content-Base: rtsp://{host}/clip/{blank}
        S: Content-Length: {length}{blank}
        S:
        S| v=0{blank}
        S| m=video 0 RTP/AVP 96{blank}
        S| a=rtpmap:96 H264/90000{blank}
        S| a=fmtp:96  packetization-mode=1 ; profile-level-id=420029{blank}
        S| a=control:trackID=1{blank}
        > SETUP clip/trackID=1 2 | TCP 0
        S: RTSP/1.0 200 OK{blank}
        S: CSeq: 2{blank}
        S: Session: 5{blank}
        S: Transport: RTP/AVP/TCP;unicast;interleaved=0-1{blank}
        S:
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        S: RTSP/1.0 200 OK{blank}
        S: CSeq: 3{blank}
        S: RTP-Info: url=rtsp://{host}/clip/trackID=1;seq=1;rtptime=3000{blank}
        S:
        M$ 0 H264 96
    )"},
    {"LineFeedsAlone", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        S~ RTSP/1.0 200 OK\nCSeq: 1\nContent-Base: rtsp://{host}/clip/\nContent-Length: 68\n\n
        S~ v=0\nm=video 0 RTP/AVP 96\na=rtpmap:96 H264/90000\na=control:trackID=1\n
        > SETUP clip/trackID=1 2 | TCP 0
        S~ RTSP/1.0 200 OK\nCSeq: 2\nSession: 5\nTransport: RTP/AVP/TCP;unicast;interleaved=0-1\n\n
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        S~ RTSP/1.0 200 OK\nCSeq: 3\n\n
        M$ 0 H264 96
    )"},
    {"NoParameterSets", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        S| v=0
        S| m=video 0 RTP/AVP 96
        S| a=rtpmap:96 H264/90000
        S| a=fmtp:96 profile-level-id=420029; packetization-mode=1; sprop-parameter-sets=
        S| a=control:trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 0 H264 96
    )"},
    {"PayloadTypeThatIsNotDynamic", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        S| v=0
        S| m=video 0 RTP/AVP 35
        S| a=rtpmap:35 H264/90000
        S| a=control:video
        S| m=video 0 RTP/AVP 26
        S| a=control:still
        > SETUP clip/video 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 0 H264 35
    )"},
    {"SubtypeInTheMediaLine", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        S| v=0
        S| o=- 14665860 31787219 1 IN IP4 127.0.0.1
        S| s=Session streamed by a camera
        S| t=0 0
        S| m=video 0 RTP/AVP 96
        S| c=IN IP4 0.0.0.0
        S| b=AS:4096
        S| a=range:npt=0-
        S| a=control:track1
        S| a=rtpmap:96 H264/90000
        S| a=fmtp:96 packetization-mode=1; profile-level-id=640028; sprop-parameter-sets=Z2QAKK2EAQwgCGEAQwg=,aO48sA==
        S| m=audio 0 RTP/AVP 8
        S| a=rtpmap:8 PCMA/8000
        S| a=control:track2
        S| m=application/X-SMART 0 RTP/AVP smart/1/90000
        S| a=rtpmap:95 X-SMART/90000
        S| a=control:track3
        > SETUP clip/track1 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 0 H264 96
    )"},
    {"DescriptionOfNothingButTheTrack", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        S| m=video 0 RTP/AVP 96
        S| a=rtpmap:96 H264/90000
        S| a=control:trackID=0
        > SETUP clip/trackID=0 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 0 H264 96
    )"},
    {"EmptyLinesAndATrackDescribedTwice", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        S| v=0
        S| m=video 0 RTP/AVP 96
        S| a=control:track1
        S| a=rtpmap:96 H264/90000
        S|
        S| m=audio 0 RTP/AVP 8
        S| a=rtpmap:8 PCMA/8000
        S| a=control:track2
        S| m=audio 0 RTP/AVP 8
        S| a=rtpmap:8 PCMA/8000
        S| a=control:track2
        S|
        > SETUP clip/track1 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 0 H264 96
    )"},
    {"FilmForTelephones", "tcp", "clip", {"MP4V-ES", "MP4A-LATM"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        S| v=0
        S| c=IN IP4 0.0.0.0
        S| b=AS:84
        S| t=0 0
        S| a=range:npt=0-12.500000
        S| a=X-predecbufsize:51200
        S| m=audio 0 RTP/AVP 98
        S| b=RR:0
        S| a=rtpmap:98 QCELP/8000
        S| a=control:streamid=0
        S| m=video 0 RTP/AVP 96
        S| b=AS:64
        S| a=rtpmap:96 MP4V-ES/90000
        S| a=fmtp:96 profile-level-id=8; config=000001b008000001b50ea020202f000001000000012000c788ba9850584121463f
        S| a=framesize:96 176-144
        S| a=control:streamid=1
        S| m=audio 0 RTP/AVP 97
        S| a=rtpmap:97 MP4A-LATM/44100/2
        S| a=fmtp:97 profile-level-id=15;object=2;cpresent=0;config=400024203fc0
        S| a=control:streamid=2
        > SETUP clip/streamid=1 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > SETUP clip/streamid=2 3 | Session: 5 | TCP 1
        < 200 3 | Session: 5 | TCP 1
        > PLAY clip/ 4 | Session: 5 | Range: npt=0.000000-
        < 200 4 | Session: 5
        M$ 0 MP4V-ES 96
        M$ 2 MP4A-LATM 97
    )"},
    {"OtherMediaBeforeTheVideo", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        S| v=0
        S| m=application 0 RTP/AVP 107
        S| a=rtpmap:107 vnd.onvif.metadata/90000
        S| a=control:trackID=3
        S| m=audio 0 RTP/AVP 97
        S| a=rtpmap:97 G726-32/8000
        S| a=control:trackID=2
        S| m=video 0 RTP/AVP 96
        S| a=rtpmap:96 H264/90000
        S| a=control:trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 0 H264 96
    )"},
    {"TwoVideosOfOneCamera", "tcp", "clip", {"H264", "H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        S| m=video 0 RTP/AVP 96
        S| a=rtpmap:96 H264/90000
        S| a=control:trackID=2
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > SETUP clip/trackID=2 3 | Session: 5 | TCP 1
        < 200 3 | Session: 5 | TCP 1
        > PLAY clip/ 4 | Session: 5 | Range: npt=0.000000-
        < 200 4 | Session: 5
        M$ 0 H264 96
        M$ 2 H264 96
    )"},
};

INSTANTIATE_TEST_SUITE_P(Descriptions, DeviceTest, testing::ValuesIn(kDevices), HabitOf);

}  // namespace
}  // namespace Player::MediaSessions
