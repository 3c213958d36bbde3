#pragma once

#include "Player/Exception.hpp"

namespace nsGstVireRtspSrc {

/// What a stream reports; the values are fixed.
enum StreamStatus { kOk = 0, kNoData = 1, kTimedOut = 2 };

/// To whom the streams report, each from its own streaming thread.
class StreamController {
public:
    virtual ~StreamController() = default;

    virtual void stream_controller_status(StreamStatus aStatus, unsigned int aTrack) = 0;
    /// Whether a stream without a packet looks again as soon as something arrives.
    virtual bool stream_controller_waits() const { return false; }
    /// Reading the track failed: once per run of its task.
    virtual void stream_controller_exception(const Player::Exception& /*aException*/, unsigned int /*aTrack*/) {}
};

}  // namespace nsGstVireRtspSrc
