#pragma once

#include <gst/gst.h>

#include "Player/Exception.hpp"

namespace nsGstVireRtspSrc {

/// What a stream reports; the values are fixed.
enum StreamStatus { kOk = 0, kNoData = 1, kTimedOut = 2 };

/// To whom the streams report, each from its own streaming thread, and their pads from any.
class StreamController {
public:
    virtual ~StreamController() = default;

    virtual void stream_controller_status(StreamStatus aStatus, unsigned int aTrack) = 0;
    /// Whether a stream without a packet looks again as soon as something arrives.
    virtual bool stream_controller_waits() const { return false; }
    /// Reading the track failed: once per run of its task.
    virtual void stream_controller_exception(const Player::Exception& /*aException*/, unsigned int /*aTrack*/) {}
    /// What is linked to the pad of the track has failed, or nothing is linked any more.
    virtual void stream_controller_peer_failed(GstFlowReturn /*aResult*/, unsigned int /*aTrack*/) {}
    /// A seek has come up a pad. Whether it is done; the event stays the caller's.
    virtual bool stream_controller_seek(GstEvent* /*aSeek*/) { return false; }
    /// Answers a query for what can be sought; false when it is left to others.
    virtual bool stream_controller_seeking(GstQuery* /*aQuery*/) { return false; }
};

}  // namespace nsGstVireRtspSrc
