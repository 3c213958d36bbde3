// How devices agree on the way for media, and what they send on it.
#include "MediaSessions/Dialogues/Device.hpp"

namespace Player::MediaSessions {
namespace {

const Device kDevices[] = {
    {"ChannelsThatTheServerChooses", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | Transport: RTP/AVP/TCP;unicast;interleaved=4-5
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 4 H264 96
    )"},
    {"OneChannelNamed", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | Transport: RTP/AVP/TCP;unicast;interleaved=0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 0 H264 96
    )"},
    {"NoChannelsNamed", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | Transport: RTP/AVP/TCP;unicast
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 0 H264 96
    )"},
    {"NoTransport", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 0 H264 96
    )"},
    {"SSRCBeforeTheChannels", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | Transport: RTP/AVP/TCP;ssrc=00CA3E7A;interleaved=2-3
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 2 H264 96
    )"},
    {"SSRCThatIsNotThatOfTheMedia", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | Transport: RTP/AVP/TCP;unicast;interleaved=0-1;ssrc=1A2B3C4D
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 0 H264 96
    )"},
    {"SSRCThatIsDecimal", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | Transport: RTP/AVP/TCP;unicast;interleaved=0-1;ssrc=13254266
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 0 H264 96
    )"},
    {"BlanksBetweenTheParameters", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | Transport: RTP/AVP/TCP; unicast; interleaved=2-3; mode="PLAY"
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 2 H264 96
    )"},
    {"MediaBeforeTheAnswerToPlay", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | Transport: RTP/AVP/TCP;unicast;interleaved=0-1
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        M$ 0 H264 96
        < 200 3 | Session: 5
        M$ 0 H264 96 3
    )"},
    {"ReportsBeforeTheMedia", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | Transport: RTP/AVP/TCP;unicast;interleaved=0-1
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        S$ 1 80 c8 00 06 00 ca 3e 7a e9 00 00 00 00 00 00 00 00 00 0b b8 00 00 00 00 00 00 00 00
        M$ 0 H264 96
    )"},
    {"ReportsOnTheChannelOfTheMedia", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | Transport: RTP/AVP/TCP;unicast;interleaved=0-1
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        S$ 0 80 c8 00 06 00 ca 3e 7a e9 00 00 00 00 00 00 00 00 00 0b b8 00 00 00 00 00 00 00 00
        M$ 0 H264 96
    )"},
    {"FramesOnAChannelOfNobody", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | Transport: RTP/AVP/TCP;unicast;interleaved=0-1
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        S$ 9 80 c8 00 06 00 ca 3e 7a
        S$ 6 00
        M$ 0 H264 96
    )"},
    {"EmptyFrames", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5 | Transport: RTP/AVP/TCP;unicast;interleaved=0-1
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        S$ 0
        S$ 1
        M$ 0 H264 96
    )"},
    {"NoServerPort", "udp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | UDP 0
        < 200 2 | Session: 5 | Transport: RTP/AVP;unicast;client_port={client_port0}-{client_port0+1}
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        MRTP 0 H264 96
    )"},
    {"ServerPortOfZero", "udp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | UDP 0
        < 200 2 | Session: 5 | Transport: RTP/AVP;unicast;client_port={client_port0}-{client_port0+1};server_port=0-0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        MRTP 0 H264 96
    )"},
    {"SourceAndDestination", "udp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | UDP 0
        < 200 2 | Session: 5 | Transport: RTP/AVP/UDP;unicast;destination=127.0.0.1;source=127.0.0.1;client_port={client_port0}-{client_port0+1};server_port={server_port0}
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        MRTP 0 H264 96
    )"},
    {"SourceOfNoAddress", "udp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | UDP 0
        < 200 2 | Session: 5 | Transport: RTP/AVP;unicast;source=0.0.0.0;client_port={client_port0}-{client_port0+1};server_port={server_port0}
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        MRTP 0 H264 96
    )"},
    {"SSRCOverUDPThatIsNotThatOfTheMedia", "udp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | UDP 0
        < 200 2 | Session: 5 | Transport: RTP/AVP;unicast;client_port={client_port0}-{client_port0+1};server_port={server_port0};ssrc=00000001
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        MRTP 0 H264 96
    )"},
    {"ReportsOnThePortOfTheMedia", "udp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | UDP 0
        < 200 2 | Session: 5 | Transport: RTP/AVP;unicast;client_port={client_port0}-{client_port0+1};server_port={server_port0}
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        RTP 0 80 c8 00 06 00 ca 3e 7a e9 00 00 00 00 00 00 00 00 00 0b b8 00 00 00 00 00 00 00 00
        MRTP 0 H264 96
    )"},
    {"UDPRefused", "udp,tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | UDP 0
        < 461 2
        > SETUP clip/trackID=1 3 | TCP 0
        < 200 3 | Session: 5 | TCP 0
        > PLAY clip/ 4 | Session: 5 | Range: npt=0.000000-
        < 200 4 | Session: 5
        M$ 0 H264 96
    )"},
    {"UDPRefusedAndTheConnectionClosed", "udp,tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | UDP 0
        < 461 2 | Connection: close
        CLOSE
        ACCEPT
        > SETUP clip/trackID=1 3 | TCP 0
        < 200 3 | Session: 5 | TCP 0
        > PLAY clip/ 4 | Session: 5 | Range: npt=0.000000-
        < 200 4 | Session: 5
        M$ 0 H264 96
    )"},
    {"MulticastOverUDPAndUnicastOverTCP", "udp,tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        S| v=0
        S| c=IN IP4 239.255.0.7/127
        S| m=video 5000 RTP/AVP 96
        S| a=rtpmap:96 H264/90000
        S| a=control:trackID=1
        > SETUP clip/trackID=1 2 | UDP 0
        < 200 2 | Session: 5 | Transport: RTP/AVP;multicast;destination=239.255.0.7;port=5000-5001;ttl=127
        > TEARDOWN clip/ 3 | Session: 5
        < 200 3
        > SETUP clip/trackID=1 4 | TCP 0
        < 200 4 | Session: 6 | TCP 0
        > PLAY clip/ 5 | Session: 6 | Range: npt=0.000000-
        < 200 5 | Session: 6
        M$ 0 H264 96
    )"},
};

INSTANTIATE_TEST_SUITE_P(Transports, DeviceTest, testing::ValuesIn(kDevices), HabitOf);

}  // namespace
}  // namespace Player::MediaSessions
