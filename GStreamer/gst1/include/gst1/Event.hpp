#pragma once

#include <gst/gst.h>

namespace Gst1 {

/// 0.10's position is the stream time of the segment's start. Every segment begins at running time 0, as
/// it does in 0.10 after a flush.
GstEvent* NewSegment(gdouble aRate, GstFormat aFormat, gint64 aStart, gint64 aStop, gint64 aPosition);

}  // namespace Gst1

#define gst_event_new_new_segment(aUpdate, aRate, aFormat, aStart, aStop, aPosition) \
    ::Gst1::NewSegment(aRate, aFormat, aStart, aStop, aPosition)

#define gst_event_new_flush_stop() (gst_event_new_flush_stop)(TRUE)

/// 1.x tells only that it has changed; the pads answer queries with the figure.
#undef gst_message_new_duration
#define gst_message_new_duration(aSource, aFormat, aDuration) \
    (static_cast<void>(aDuration), gst_message_new_duration_changed(aSource))
