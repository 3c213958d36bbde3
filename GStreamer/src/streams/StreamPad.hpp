#pragma once

#include <gst/gst.h>

#include "streams/StreamController.hpp"

namespace nsGstVireRtspSrc {

/// How long a track without a packet waits before it looks again, in microseconds.
constexpr int kPollInterval = 100000;
/// For a pad that looks as soon as something arrives. What follows an arrival within this many microseconds is taken
/// along with it: an access unit comes in a burst.
constexpr int kGatherTime = 500;
/// Microseconds between two waits that were ended by something that was not for this track.
constexpr int kIdleTime = 5000;

/// A source pad "src%d" for the track, not yet active. It answers duration and latency queries from a figure
/// that it keeps itself, so that a query never meets a stream that is being deleted. Seeks, and queries for what can
/// be sought, go to the controller, which lives as long as the element that the pad belongs to.
GstPad* NewStreamPad(unsigned int aTrack, StreamController& aController);
/// In ns; -1 for a live stream.
void SetStreamPadDuration(GstPad* aPad, gint64 aDuration);

}  // namespace nsGstVireRtspSrc

gboolean gst_vire_rtsp_stream_activatepush(GstPad* aPad, gboolean aActive);
gboolean gst_vire_rtsp_stream_event(GstPad* aPad, GstEvent* aEvent);
gboolean gst_vire_rtsp_stream_query(GstPad* aPad, GstQuery* aQuery);
