#include "StreamPad.hpp"

#include <atomic>
#include <memory>

#include "StreamDebug.hpp"

namespace nsGstVireRtspSrc {

namespace {

using Duration = std::atomic<gint64>;

GQuark DurationQuark() {
    return g_quark_from_static_string("virertspsrc-duration");
}

Duration* DurationOf(GstPad* aPad) {
    return static_cast<Duration*>(g_object_get_qdata(G_OBJECT(aPad), DurationQuark()));
}

bool AnswerDuration(GstPad* aPad, GstQuery* aQuery) {
    GstFormat lFormat = GST_FORMAT_UNDEFINED;
    gst_query_parse_duration(aQuery, &lFormat, nullptr);
    if (GST_FORMAT_TIME != lFormat) { return false; }
    gst_query_set_duration(aQuery, GST_FORMAT_TIME, DurationOf(aPad)->load());
    return true;
}

}  // namespace

GstPad* NewStreamPad(unsigned int aTrack) {
    auto lDuration = std::make_unique<Duration>(-1);
    gchar* const lName = g_strdup_printf("src%d", static_cast<int>(aTrack));
    GstPad* const lPad = gst_pad_new(lName, GST_PAD_SRC);
    g_free(lName);
    g_object_set_qdata_full(G_OBJECT(lPad), DurationQuark(), lDuration.release(),
                            [](gpointer aDuration) { delete static_cast<Duration*>(aDuration); });
    gst_pad_set_activatepush_function(lPad, gst_vire_rtsp_stream_activatepush);
    gst_pad_set_event_function(lPad, gst_vire_rtsp_stream_event);
    gst_pad_set_query_function(lPad, gst_vire_rtsp_stream_query);
    return lPad;
}

void SetStreamPadDuration(GstPad* aPad, gint64 aDuration) {
    DurationOf(aPad)->store(aDuration);
}

}  // namespace nsGstVireRtspSrc

using namespace nsGstVireRtspSrc;

gboolean gst_vire_rtsp_stream_activatepush(GstPad* /*aPad*/, gboolean /*aActive*/) {
    return TRUE;
}

/// Nothing goes on to the source: seeks reach the element through its send_event. Those who ask for one here
/// learn that it did not happen.
gboolean gst_vire_rtsp_stream_event(GstPad* aPad, GstEvent* aEvent) {
    const GstEventType lType = GST_EVENT_TYPE(aEvent);
    if (GST_EVENT_QOS != lType) {
        GST_CAT_WARNING_OBJECT(StreamCategory(), aPad, "Unhandled event (%s got %s)\n", GST_PAD_NAME(aPad),
                               gst_event_type_get_name(lType));
    }
    gst_event_unref(aEvent);
    return GST_EVENT_QOS == lType || GST_EVENT_LATENCY == lType;
}

gboolean gst_vire_rtsp_stream_query(GstPad* aPad, GstQuery* aQuery) {
    switch (GST_QUERY_TYPE(aQuery)) {
        case GST_QUERY_DURATION: return AnswerDuration(aPad, aQuery);
        case GST_QUERY_LATENCY:
            // A packet may just have missed the last look; the sockets and queues behind it hold any amount.
            gst_query_set_latency(aQuery, TRUE, kPollInterval * GST_USECOND, GST_CLOCK_TIME_NONE);
            return TRUE;
        default: return gst_pad_query_default(aPad, aQuery);
    }
}
