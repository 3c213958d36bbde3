#include <gst/gst.h>

namespace {

GstSegment MakeSegment(gdouble aRate, GstFormat aFormat, gint64 aStart, gint64 aStop, gint64 aPosition) {
    GstSegment lSegment;
    gst_segment_init(&lSegment, aFormat);
    lSegment.rate = aRate;
    lSegment.start = static_cast<guint64>(aStart);
    lSegment.stop = static_cast<guint64>(aStop);  // -1 is "none" in both
    lSegment.time = static_cast<guint64>(aPosition);
    lSegment.position = lSegment.start;
    return lSegment;
}

}  // namespace

GstEvent* Gst1::NewSegment(gdouble aRate, GstFormat aFormat, gint64 aStart, gint64 aStop, gint64 aPosition) {
    const GstSegment lSegment = MakeSegment(aRate, aFormat, aStart, aStop, aPosition);
    return gst_event_new_segment(&lSegment);
}

GstEvent* GstLeg::NewSegmentAt(gint64 aBegin, gint64 aStop, GstClockTime aFirst) {
    GstSegment lSegment = MakeSegment(1.0, GST_FORMAT_TIME, aBegin, aStop, aBegin);
    // Until it has its place in running time.
    lSegment.position = aFirst;
    return gst_event_new_segment(&lSegment);
}
