#pragma once

#include <gst/gst.h>

namespace Gst1 {

/// 0.10's position is the stream time of the segment's start. Where it begins in running time is settled when
/// it is pushed.
GstEvent* NewSegment(gdouble aRate, GstFormat aFormat, gint64 aStart, gint64 aStop, gint64 aPosition);

}  // namespace Gst1

namespace GstLeg {

/// A segment that begins with `aBegin`, in stream time as well, whatever `aFirst`, the timestamp of its first buffer,
/// is: that buffer is due when the segment is pushed, and not seen where it comes before the segment.
GstEvent* NewSegmentAt(gint64 aBegin, gint64 aStop, GstClockTime aFirst);

}  // namespace GstLeg

#define gst_event_new_new_segment(aUpdate, aRate, aFormat, aStart, aStop, aPosition) \
    ::Gst1::NewSegment(aRate, aFormat, aStart, aStop, aPosition)

/// Running time goes on: with a reset of it the pipeline would begin its time anew for one element among others,
/// and would change states for that, whose lock an application may hold that waits for the element.
#define gst_event_new_flush_stop() (gst_event_new_flush_stop)(FALSE)

/// 1.x says only that it has changed; the pads answer queries with the figure.
#undef gst_message_new_duration
#define gst_message_new_duration(aSource, aFormat, aDuration) \
    (static_cast<void>(aDuration), gst_message_new_duration_changed(aSource))
