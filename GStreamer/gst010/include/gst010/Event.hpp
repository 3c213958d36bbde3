#pragma once

#include <gst/gst.h>

namespace GstLeg {

/// A segment that begins with `aBegin`, in stream time as well, whatever the timestamp of its first buffer is. That is
/// not seen where it comes before the segment.
inline GstEvent* NewSegmentAt(gint64 aBegin, gint64 aStop, GstClockTime /*aFirst*/) {
    return gst_event_new_new_segment(FALSE, 1.0, GST_FORMAT_TIME, aBegin, aStop, aBegin);
}

}  // namespace GstLeg
