#include <gst/gst.h>

namespace Gst1 {

GstEvent* NewSegment(gdouble aRate, GstFormat aFormat, gint64 aStart, gint64 aStop, gint64 aPosition) {
    GstSegment lSegment;
    gst_segment_init(&lSegment, aFormat);
    lSegment.rate = aRate;
    lSegment.start = static_cast<guint64>(aStart);
    lSegment.stop = static_cast<guint64>(aStop);  // -1 is "none" in both
    lSegment.time = static_cast<guint64>(aPosition);
    lSegment.position = lSegment.start;
    return gst_event_new_segment(&lSegment);
}

}  // namespace Gst1
