// Which URLs are asked for, with all that devices say about the base and the control attributes.
#include "MediaSessions/Dialogues/Device.hpp"

namespace Player::MediaSessions {
namespace {

const Device kDevices[] = {
    {"TracksBelowABaseWithSlash", "tcp", "live/ch0", {"H264", "mpeg4-generic"}, R"(
        > DESCRIBE live/ch0 1
        < 200 1 | Date: Sat, Jan 01 2000 00:00:07 GMT | Content-Base: rtsp://{host}/live/ch0/ | Content-Length: {length}
        S| v=0
        S| o=- 946684807 1 IN IP4 127.0.0.1
        S| s=Session streamed by a camera
        S| t=0 0
        S| a=type:broadcast
        S| a=control:*
        S| a=range:npt=0-
        S| m=video 0 RTP/AVP 96
        S| c=IN IP4 0.0.0.0
        S| b=AS:500
        S| a=rtpmap:96 H264/90000
        S| a=fmtp:96 packetization-mode=1;profile-level-id=4D0028;sprop-parameter-sets=Z00AKJWoHgCJ+VA=,aO48gA==
        S| a=control:track1
        S| m=audio 0 RTP/AVP 97
        S| a=rtpmap:97 MPEG4-GENERIC/16000
        S| a=fmtp:97 streamtype=5;profile-level-id=1;mode=AAC-hbr;sizelength=13;indexlength=3;indexdeltalength=3;config=1408
        S| a=control:track2
        > SETUP live/ch0/track1 2 | TCP 0
        < 200 2 | Transport: RTP/AVP/TCP;unicast;destination=127.0.0.1;source=127.0.0.1;interleaved=0-1 | Session: 2A9F;timeout=65
        > SETUP live/ch0/track2 3 | Session: 2A9F | TCP 1
        < 200 3 | Transport: RTP/AVP/TCP;unicast;destination=127.0.0.1;source=127.0.0.1;interleaved=2-3 | Session: 2A9F;timeout=65
        > PLAY live/ch0/ 4 | Session: 2A9F | Range: npt=0.000000-
        < 200 4 | Range: npt=0.000- | Session: 2A9F | RTP-Info: url=rtsp://{host}/live/ch0/track1;seq=1;rtptime=3000,url=rtsp://{host}/live/ch0/track2;seq=1;rtptime=3000
        M$ 0 H264 96
        M$ 2 mpeg4-generic 97
    )"},
    {"TracksBelowABaseWithoutSlash", "tcp", "live/main", {"H264"}, R"(
        > DESCRIBE live/main 1
        < 200 1 | Content-Base: rtsp://{host}/live/main | Content-Length: {length}
        S| v=0
        S| a=control:*
        S| m=video 0 RTP/AVP 96
        S| a=rtpmap:96 H264/90000
        S| a=control:trackID=1
        > SETUP live/trackID=1 2 | TCP 0
        < 404 2
        > SETUP live/main/trackID=1 3 | TCP 0
        < 200 3 | Session: 5 | TCP 0
        > PLAY live/main 4 | Session: 5 | Range: npt=0.000000-
        < 200 4 | Session: 5
        M$ 0 H264 96
    )"},
    {"ChannelInTheQueryAndASlashBehindIt", "tcp", "cam/realmonitor?channel=1&subtype=0", {"H264"}, R"(
        > DESCRIBE cam/realmonitor?channel=1&subtype=0 1
        < 200 1 | x-Accept-Dynamic-Rate: 1 | Content-Base: rtsp://{host}/cam/realmonitor?channel=1&subtype=0/ | Content-Length: {length}
        S| v=0
        S| o=- 2251938508 2251938508 IN IP4 0.0.0.0
        S| s=Media Server
        S| c=IN IP4 0.0.0.0
        S| t=0 0
        S| a=control:*
        S| a=packetization-supported:X
        S| a=range:npt=now-
        S| m=video 0 RTP/AVP 96
        S| a=control:trackID=0
        S| a=framerate:10.000000
        S| a=rtpmap:96 H264/90000
        S| a=fmtp:96 packetization-mode=1;profile-level-id=4D4028;sprop-parameter-sets=Z01AKKaAeAIn5UAA,aO48gAA=
        S| a=recvonly
        S| m=audio 0 RTP/AVP 8
        S| a=control:trackID=1
        S| a=rtpmap:8 PCMA/8000
        S| a=recvonly
        > SETUP cam/realmonitor?channel=1&subtype=0/trackID=0 2 | TCP 0
        < 200 2 | Session: 718 | Transport: RTP/AVP/TCP;unicast;interleaved=0-1;ssrc=00CA3E7A
        > PLAY cam/realmonitor?channel=1&subtype=0/ 3 | Session: 718 | Range: npt=0.000000-
        < 200 3 | Session: 718 | Range: npt=now- | RTP-Info: url=trackID=0;seq=1;rtptime=3000
        M$ 0 H264 96
    )"},
    {"SettingsInThePathAndABaseThatIsCutOff", "tcp", "user=admin&password=&channel=1&stream=0.sdp?", {"H264"}, R"(
        > DESCRIBE user=admin&password=&channel=1&stream=0.sdp? 1
        S: RTSP/1.0 200 OK
        S: Content-Type: application/sdp
        S: Server: DVR 1.0
        S: Cseq: 1
        S: Content-Base: rtsp://{host}/user=admin&password=&channel=1&stream=0./
        S: x-Accept-Retransmit: our-retransmit
        S: Content-Length: {length}
        S:
        S| v=0
        S| s=RTSP Session
        S| a=control:*
        S| a=range:npt=0-
        S| m=video 0 RTP/AVP 96
        S| a=rtpmap:96 H264/90000
        S| a=range:npt=0-
        S| a=framerate:0S
        S| a=fmtp:96 profile-level-id=4d0033; packetization-mode=1
        S| a=framerate:25
        S| a=control:trackID=3
        > SETUP user=admin&password=&channel=1&stream=0./trackID=3 2 | TCP 0
        S: RTSP/1.0 200 OK
        S: Server: DVR 1.0
        S: Cseq: 2
        S: Session: 1140400452;timeout=60
        S: Transport: RTP/AVP/TCP;unicast;mode=PLAY;source=127.0.0.1;interleaved=0-1;ssrc=00000000
        S:
        
        > PLAY user=admin&password=&channel=1&stream=0./ 3 | Session: 1140400452 | Range: npt=0.000000-
        S: RTSP/1.0 200 OK
        S: Server: DVR 1.0
        S: Cseq: 3
        S: Session: 1140400452
        S: RTP-Info: url=trackID=3;seq=0;rtptime=0
        S:
        M$ 0 H264 96
    )"},
    {"WholeURLsAndNoBase", "tcp", "media/video1", {"H264"}, R"(
        > DESCRIBE media/video1 1
        < 200 1 | Content-Type: application/sdp | Content-Length: {length}
        S| v=0
        S| o=- 1001 1 IN
        S| s=IPC Realtime stream
        S| m=video 0 RTP/AVP 105
        S| c=IN
        S| a=control:rtsp://{host}/media/video1/video
        S| a=rtpmap:105 H264/90000
        S| a=fmtp:105 profile-level-id=640032; packetization-mode=1; sprop-parameter-sets=Z2QAMqw7UBQAWtCAAAH0AABhqEI=,aOqPLA==
        S| a=recvonly
        S| m=application 0 RTP/AVP 107
        S| c=IN
        S| a=control:rtsp://{host}/media/video1/metadata
        S| a=rtpmap:107 vnd.onvif.metadata/90000
        S| a=recvonly
        > SETUP media/video1/video 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY media/video1 3 | Session: 5 | Range: npt=0.000000-
        < 200 3
        M$ 0 H264 105
    )"},
    {"SessionControlWithQuery", "tcp", "media.amp?videocodec=h264", {"H264"}, R"(
        > DESCRIBE media.amp?videocodec=h264 1
        < 200 1 | Content-Base: rtsp://{host}/media.amp/ | Content-Length: {length}
        S| v=0
        S| s=Media Presentation
        S| c=IN IP4 0.0.0.0
        S| a=control:rtsp://{host}/media.amp?videocodec=h264
        S| a=range:npt=0.000000-
        S| m=video 0 RTP/AVP 96
        S| b=AS:50000
        S| a=framerate:30.0
        S| a=transform:1,0,0;0,1,0;0,0,1
        S| a=control:rtsp://{host}/media.amp/trackID=1?videocodec=h264
        S| a=rtpmap:96 H264/90000
        S| a=fmtp:96 packetization-mode=1; profile-level-id=420029; sprop-parameter-sets=Z0IAKeNQFAe2AtwEBAaQeJEV,aM48gA==
        > SETUP media.amp/trackID=1?videocodec=h264 2 | TCP 0
        < 200 2 | Session: 51D8A4F7;timeout=60 | Transport: RTP/AVP/TCP;unicast;interleaved=0-1;ssrc=00CA3E7A;mode="PLAY"
        > PLAY media.amp?videocodec=h264 3 | Session: 51D8A4F7 | Range: npt=0.000000-
        < 200 3 | Session: 51D8A4F7 | Range: npt=0- | RTP-Info: url=rtsp://{host}/media.amp/trackID=1?videocodec=h264;seq=1;rtptime=3000
        M$ 0 H264 96
    )"},
    {"NoSessionControlAndNoBase", "tcp", "tcp/av0_0", {"H264"}, R"(
        > DESCRIBE tcp/av0_0 1
        S: RTSP/1.0 200 OK
        S: Cseq: 1
        S: Content-Length: {length}
        S:
        S| v=0
        S| o=CAM 3836310016 3836310016 IN IP4 127.0.0.1
        S| s=streamed by a camera
        S| e=NONE
        S| c=IN IP4 0.0.0.0
        S| t=0 0
        S| m=video 0 RTP/AVP 96
        S| b=AS:1536
        S| a=control:track0
        S| a=rtpmap:96 H264/90000
        S| a=fmtp:96 packetization-mode=1;sprop-parameter-sets=Z00AKJ2oHgCJ+VA=,aO48gA==
        > SETUP tcp/av0_0/track0 2 | TCP 0
        S: RTSP/1.0 200 OK
        S: Cseq: 2
        S: Session: 1632991860795359396
        S: Transport: RTP/AVP/TCP;unicast;interleaved=0-1
        S:
        
        > PLAY tcp/av0_0 3 | Session: 1632991860795359396 | Range: npt=0.000000-
        S: RTSP/1.0 200 OK
        S: Cseq: 3
        S: Session: 1632991860795359396
        S:
        M$ 0 H264 96
    )"},
    {"TracksBelowTheRequestWithoutABase", "tcp", "live/ch1", {"H264", "mpeg4-generic"}, R"(
        > DESCRIBE live/ch1 1
        < 200 1 | Content-Type: application/sdp | Content-Length: {length}
        VIDEO streamid=0
        S| m=audio 0 RTP/AVP 97
        S| a=rtpmap:97 MPEG4-GENERIC/16000
        S| a=fmtp:97 streamtype=5;profile-level-id=1;mode=AAC-hbr;sizelength=13;indexlength=3;indexdeltalength=3;config=1408
        S| a=control:streamid=1
        > SETUP live/ch1/streamid=0 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > SETUP live/ch1/streamid=1 3 | Session: 5 | TCP 1
        < 200 3 | Session: 5 | TCP 1
        > PLAY live/ch1 4 | Session: 5 | Range: npt=0.000000-
        < 200 4 | Session: 5 | RTP-Info: url=streamid=0;seq=1;rtptime=3000,url=streamid=1;seq=1;rtptime=3000
        M$ 0 H264 96
        M$ 2 mpeg4-generic 97
    )"},
    {"TracksBesideTheRequestWithoutABase", "tcp", "live/ch1.sdp", {"H264"}, R"(
        > DESCRIBE live/ch1.sdp 1
        < 200 1 | Content-Type: application/sdp | Content-Length: {length}
        VIDEO ch1/trackID=1
        > SETUP live/ch1.sdp/ch1/trackID=1 2 | TCP 0
        < 404 2
        > SETUP live/ch1/trackID=1 3 | TCP 0
        < 200 3 | Session: 5 | TCP 0
        > PLAY live/ch1.sdp 4 | Session: 5 | Range: npt=0.000000-
        < 200 4 | Session: 5
        M$ 0 H264 96
    )"},
    {"ConnectionEndedAtAnUnknownURL", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip | Content-Length: {length}
        VIDEO streamid=0
        > SETUP streamid=0 2 | TCP 0
        CLOSE
        ACCEPT
        > SETUP clip/streamid=0 3 | TCP 0
        < 200 3 | Session: 5 | TCP 0
        > PLAY clip 4 | Session: 5 | Range: npt=0.000000-
        < 200 4 | Session: 5
        M$ 0 H264 96
    )"},
    {"SilenceAtAnUnknownURL",
     "tcp",
     "clip",
     {"H264"},
     R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip | Content-Length: {length}
        VIDEO streamid=0
        > SETUP streamid=0 2 | TCP 0
        END
        ACCEPT
        > SETUP clip/streamid=0 3 | TCP 0
        < 200 3 | Session: 5 | TCP 0
        > PLAY clip 4 | Session: 5 | Range: npt=0.000000-
        < 200 4 | Session: 5
        M$ 0 H264 96
    )",
     "1"},
    {"ContentLocationAlone", "tcp", "movie", {"H264"}, R"(
        > DESCRIBE movie 1
        < 200 1 | Content-Location: rtsp://{host}/store/movie.mp4/ | Content-Length: {length}
        VIDEO streamid=0
        > SETUP store/movie.mp4/streamid=0 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY store/movie.mp4/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 0 H264 96
    )"},
    {"StarOfTheOnlyTrack", "tcp", "ch1.h264", {"H264"}, R"(
        > DESCRIBE ch1.h264 1
        < 200 1 | Content-Base: rtsp://{host}/ch1.h264 | Content-Length: {length}
        VIDEO *
        > SETUP ch1.h264 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY ch1.h264 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 0 H264 96
    )"},
    {"NoControlAtAll", "tcp", "ch1.h264", {"H264"}, R"(
        > DESCRIBE ch1.h264 1
        < 200 1 | Content-Length: {length}
        S| v=0
        S| m=video 0 RTP/AVP 96
        S| a=rtpmap:96 H264/90000
        > SETUP ch1.h264 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY ch1.h264 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 0 H264 96
    )"},
    {"EmptySessionControl", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        S| v=0
        S| a=control:
        S| m=video 0 RTP/AVP 96
        S| a=rtpmap:96 H264/90000
        S| a=control:trackID=0
        > SETUP clip/trackID=0 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 0 H264 96
    )"},
    {"AddressOfTheNetworkInside", "tcp", "h264", {"H264"}, R"(
        > DESCRIBE h264 1
        < 200 1 | Content-Base: rtsp://10.0.0.20:554/h264/ | Content-Length: {length}
        VIDEO rtsp://10.0.0.20:554/h264/trackID=1
        > SETUP rtsp://10.0.0.20:554/h264/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY rtsp://10.0.0.20:554/h264/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | RTP-Info: url=rtsp://10.0.0.20:554/h264/trackID=1;seq=1;rtptime=3000
        M$ 0 H264 96
    )"},
    {"ControlFromTheRoot", "tcp", "live/0/main", {"H264"}, R"(
        > DESCRIBE live/0/main 1
        < 200 1 | Content-Base: rtsp://{host}/live/0/main/ | Content-Length: {length}
        VIDEO /live/0/main/trackID=1
        > SETUP live/0/main/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY live/0/main/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 0 H264 96
    )"},
    {"BaseWithoutAScheme", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: {host}/clip/ | Content-Length: {length}
        VIDEO trackID=0
        > SETUP clip/trackID=0 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 0 H264 96
    )"},
    {"QueryBehindTheSlash", "tcp", "channels/101/?transportmode=unicast", {"H264"}, R"(
        > DESCRIBE channels/101/?transportmode=unicast 1
        < 200 1 | Content-Base: rtsp://{host}/channels/101/?transportmode=unicast | Content-Length: {length}
        S| v=0
        S| a=control:*
        S| m=video 0 RTP/AVP 96
        S| a=rtpmap:96 H264/90000
        S| a=control:trackID=1
        > SETUP channels/101/trackID=1?transportmode=unicast 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY channels/101/?transportmode=unicast 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 0 H264 96
    )"},
    {"RedirectionToAnotherPath", "tcp", "live", {"H264"}, R"(
        > DESCRIBE live 1
        < 302 1 | Location: rtsp://{host}/live/stream2
        > DESCRIBE live/stream2 2
        < 200 2 | Content-Base: rtsp://{host}/live/stream2/ | Content-Length: {length}
        VIDEO trackID=0
        > SETUP live/stream2/trackID=0 3 | TCP 0
        < 200 3 | Session: 5 | TCP 0
        > PLAY live/stream2/ 4 | Session: 5 | Range: npt=0.000000-
        < 200 4 | Session: 5
        M$ 0 H264 96
    )"},
    {"RedirectionThatClosesTheConnection", "tcp", "live", {"H264"}, R"(
        > DESCRIBE live 1
        < 302 1 | Connection: close | Location: /live/stream2
        CLOSE
        ACCEPT
        > DESCRIBE live/stream2 2
        < 200 2 | Content-Base: rtsp://{host}/live/stream2/ | Content-Length: {length}
        VIDEO trackID=0
        > SETUP live/stream2/trackID=0 3 | TCP 0
        < 200 3 | Session: 5 | TCP 0
        > PLAY live/stream2/ 4 | Session: 5 | Range: npt=0.000000-
        < 200 4 | Session: 5
        M$ 0 H264 96
    )"},
    {"RedirectionOfTheSetup", "udp,tcp", "live", {"H264"}, R"(
        > DESCRIBE live 1
        < 200 1 | Content-Base: rtsp://{host}/live/ | Content-Length: {length}
        VIDEO trackID=0
        > SETUP live/trackID=0 2 | UDP 0
        < 302 2 | Location: rtsp://{host}/live/edge
        > DESCRIBE live/edge 3
        < 200 3 | Content-Base: rtsp://{host}/live/edge/ | Content-Length: {length}
        VIDEO trackID=0
        > SETUP live/edge/trackID=0 4 | UDP *
        < 461 4
        > SETUP live/edge/trackID=0 5 | TCP 0
        < 200 5 | Session: 5 | TCP 0
        > PLAY live/edge/ 6 | Session: 5 | Range: npt=0.000000-
        < 200 6 | Session: 5
        M$ 0 H264 96
    )"},
    {"RedirectionOfThePlay", "tcp", "live", {"H264"}, R"(
        > DESCRIBE live 1
        < 200 1 | Content-Base: rtsp://{host}/live/ | Content-Length: {length}
        VIDEO trackID=0
        > SETUP live/trackID=0 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > PLAY live/ 3 | Session: 5 | Range: npt=0.000000-
        < 302 3 | Connection: close | Location: rtsp://{host}/live/edge
        CLOSE
        ACCEPT
        > DESCRIBE live/edge 4
        < 200 4 | Content-Base: rtsp://{host}/live/edge/ | Content-Length: {length}
        VIDEO trackID=0
        > SETUP live/edge/trackID=0 5 | TCP 0
        < 200 5 | Session: 6 | TCP 0
        > PLAY live/edge/ 6 | Session: 6 | Range: npt=0.000000-
        < 200 6 | Session: 6
        M$ 0 H264 96
    )"},
};

INSTANTIATE_TEST_SUITE_P(Bases, DeviceTest, testing::ValuesIn(kDevices), HabitOf);

}  // namespace
}  // namespace Player::MediaSessions
