// How devices want their sessions to be kept alive.
#include "MediaSessions/Dialogues/Device.hpp"

namespace Player::MediaSessions {
namespace {

const Device kDevices[] = {
    {"KeptAliveByGetParameter", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5;timeout=1 | Public: OPTIONS, DESCRIBE, SETUP, GET_PARAMETER, PLAY | TCP 0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 0 H264 96
        > GET_PARAMETER clip/ 4 | Session: 5
        < 200 4 | Session: 5
    )"},
    {"NoPublic", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5;timeout=1 | TCP 0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 0 H264 96
        > OPTIONS clip/ 4 | Session: 5
        < 200 4 | Public: DESCRIBE, SETUP, TEARDOWN, PLAY
    )"},
    {"SignsOfLifeRefused", "udp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | UDP 0
        < 200 2 | Session: 5;timeout=1 | Public: GET_PARAMETER | UDP 0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        MRTP 0 H264 96
        > GET_PARAMETER clip/ 4 | Session: 5
        < 454 4
        > GET_PARAMETER clip/ 5 | Session: 5
    )"},
    {"SignsOfLifeNotAnswered", "tcp", "clip", {"H264"}, R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://{host}/clip/ | Content-Length: {length}
        VIDEO trackID=1
        > SETUP clip/trackID=1 2 | TCP 0
        < 200 2 | Session: 5;timeout=1 | Public: GET_PARAMETER | TCP 0
        > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | Session: 5
        M$ 0 H264 96
        > GET_PARAMETER clip/ 4 | Session: 5
        > GET_PARAMETER clip/ 5 | Session: 5
    )"},
};

INSTANTIATE_TEST_SUITE_P(Sessions, DeviceTest, testing::ValuesIn(kDevices), HabitOf);

}  // namespace
}  // namespace Player::MediaSessions
