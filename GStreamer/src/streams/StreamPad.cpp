#include "streams/StreamPad.hpp"

#include <atomic>
#include <memory>

#include "debug/Debug.hpp"
#include "threads/Boundary.hpp"

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

GQuark ControllerQuark() {
    return g_quark_from_static_string("virertspsrc-controller");
}

/// What the controller says; false for a pad whose element has let it go.
template <typename Action>
bool AskController(GstPad* aPad, Action aAction) {
    GstObject* const lElement = gst_pad_get_parent(aPad);
    if (nullptr == lElement) { return false; }
    auto* const lController = static_cast<StreamController*>(g_object_get_qdata(G_OBJECT(aPad), ControllerQuark()));
    const bool lAnswer = AtBoundary(aPad, false, [&] { return aAction(*lController); });
    gst_object_unref(lElement);
    return lAnswer;
}

/// A packet may have come just when the stream had looked. What is gathered before playing adds nothing to it: the
/// first buffer is due when it goes out, and those after it come as much earlier as was gathered.
GstClockTime LongestRest(GstPad* aPad) {
    const bool lWaits =
        AskController(aPad, [](StreamController& aController) { return aController.stream_controller_waits(); });
    return (lWaits ? kIdleTime + kGatherTime : kPollInterval) * GST_USECOND;
}

}  // namespace

GstPad* NewStreamPad(unsigned int aTrack, StreamController& aController) {
    auto lDuration = std::make_unique<Duration>(-1);
    gchar* const lName = g_strdup_printf("src%d", static_cast<int>(aTrack));
    GstPad* const lPad = gst_pad_new(lName, GST_PAD_SRC);
    g_free(lName);
    g_object_set_qdata_full(G_OBJECT(lPad), DurationQuark(), lDuration.release(),
                            [](gpointer aDuration) { delete static_cast<Duration*>(aDuration); });
    g_object_set_qdata(G_OBJECT(lPad), ControllerQuark(), &aController);
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

/// Those who ask for what is not done here learn that it did not happen.
gboolean gst_vire_rtsp_stream_event(GstPad* aPad, GstEvent* aEvent) {
    const GstEventType lType = GST_EVENT_TYPE(aEvent);
    if (GST_EVENT_SEEK == lType && AskController(aPad, [&](StreamController& aController) {
            return aController.stream_controller_seek(aEvent);
        })) {
        gst_event_unref(aEvent);
        return TRUE;
    }
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
            // The sockets and queues behind the pad hold any amount.
            gst_query_set_latency(aQuery, TRUE, LongestRest(aPad), GST_CLOCK_TIME_NONE);
            return TRUE;
        case GST_QUERY_SEEKING:
            if (AskController(aPad, [&](StreamController& aController) {
                    return aController.stream_controller_seeking(aQuery);
                })) {
                return TRUE;
            }
            return gst_pad_query_default(aPad, aQuery);
        default: return gst_pad_query_default(aPad, aQuery);
    }
}
