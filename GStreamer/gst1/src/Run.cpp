#include <gst/gst.h>

#include <mutex>

#undef gst_pad_push_event

namespace Gst1 {

namespace {

/// In GLib's memory: C code calls here, through which nothing may be thrown.
struct Run {
    guint64 mBase;      ///< The running time at the first segment.
    guint64 mFirst;     ///< The timestamp with which that began.
    GHashTable* mPads;  ///< Those that have their segment; empty before the first.
};

void FreeRun(gpointer aRun) {
    g_hash_table_unref(static_cast<Run*>(aRun)->mPads);
    g_free(aRun);
}

/// A leaf; guards the runs of all elements.
std::mutex gRunMutex;

GQuark RunQuark() {
    return g_quark_from_static_string("gst1-run");
}

/// The element's; made where there is none. With gRunMutex held.
Run& RunOf(GstElement* aElement) {
    auto* lRun = static_cast<Run*>(g_object_get_qdata(G_OBJECT(aElement), RunQuark()));
    if (nullptr == lRun) {
        lRun = g_new0(Run, 1);
        lRun->mPads = g_hash_table_new(nullptr, nullptr);
        g_object_set_qdata_full(G_OBJECT(aElement), RunQuark(), lRun, FreeRun);
    }
    return *lRun;
}

/// 0 without a clock, and before the pipeline's time begins.
guint64 RunningTimeNow(GstElement* aElement) {
    GstClock* const lClock = gst_element_get_clock(aElement);
    if (nullptr == lClock) { return 0; }
    const GstClockTime lNow = gst_clock_get_time(lClock);
    const GstClockTime lBase = gst_element_get_base_time(aElement);
    gst_object_unref(lClock);
    return lNow > lBase ? lNow - lBase : 0;
}

/// The run with the pad in it. A pad that has had its segment begins another run with the next one, although it
/// did not flush.
Run Join(GstElement* aElement, GstPad* aPad, guint64 aStart) {
    const guint64 lNow = RunningTimeNow(aElement);
    const std::lock_guard<std::mutex> lLock(gRunMutex);
    Run& lRun = RunOf(aElement);
    if (g_hash_table_contains(lRun.mPads, aPad)) { g_hash_table_remove_all(lRun.mPads); }
    if (0 == g_hash_table_size(lRun.mPads)) {
        lRun.mBase = lNow;
        lRun.mFirst = aStart;
    }
    g_hash_table_add(lRun.mPads, aPad);
    return lRun;
}

/// The segment's position is that of its first buffer. What precedes the run's first timestamp has no place in running
/// time: the segment has an offset then.
GstEvent* Placed(GstElement* aElement, GstPad* aPad, GstEvent* aEvent) {
    GstSegment lSegment;
    gst_event_copy_segment(aEvent, &lSegment);
    const Run lRun = Join(aElement, aPad, lSegment.position);
    lSegment.position = lSegment.start;
    lSegment.base = lRun.mBase;
    if (lSegment.start >= lRun.mFirst) {
        lSegment.base += lSegment.start - lRun.mFirst;
    } else {
        lSegment.offset = lRun.mFirst - lSegment.start;
    }
    GstEvent* const lPlaced = gst_event_new_segment(&lSegment);
    gst_event_set_seqnum(lPlaced, gst_event_get_seqnum(aEvent));
    gst_event_unref(aEvent);
    return lPlaced;
}

gboolean PushFrom(GstElement* aElement, GstPad* aPad, GstEvent* aEvent) {
    if (GST_EVENT_FLUSH_START == GST_EVENT_TYPE(aEvent)) {
        EndRun(aElement);
        return gst_pad_push_event(aPad, aEvent);
    }
    // The iteration that a flush caught belongs to no run any more.
    const bool lPlace = GST_EVENT_SEGMENT == GST_EVENT_TYPE(aEvent) && !GST_PAD_IS_FLUSHING(aPad);
    return gst_pad_push_event(aPad, lPlace ? Placed(aElement, aPad, aEvent) : aEvent);
}

}  // namespace

void EndRun(GstElement* aElement) {
    const std::lock_guard<std::mutex> lLock(gRunMutex);
    g_hash_table_remove_all(RunOf(aElement).mPads);
}

gboolean PushEvent(GstPad* aPad, GstEvent* aEvent) {
    GstElement* const lElement = GST_PAD_IS_SRC(aPad) ? gst_pad_get_parent_element(aPad) : nullptr;
    if (nullptr == lElement) { return gst_pad_push_event(aPad, aEvent); }
    const gboolean lPushed = PushFrom(lElement, aPad, aEvent);
    gst_object_unref(lElement);
    return lPushed;
}

}  // namespace Gst1
