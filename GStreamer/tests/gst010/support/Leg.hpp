#pragma once

#include <gst/gst.h>

#include <string>

/// What tests see differently on GStreamer 0.10; gst1/support has the same for 1.x.
namespace ElementTest {

struct Segment {
    bool mUpdate;
    double mRate;
    GstFormat mFormat;
    gint64 mStart;
    gint64 mStop;
    gint64 mPosition;
};

inline bool IsSegment(GstEvent* aEvent) {
    return GST_EVENT_NEWSEGMENT == GST_EVENT_TYPE(aEvent);
}

inline Segment ParseSegment(GstEvent* aEvent) {
    gboolean lUpdate = FALSE;
    Segment lSegment{};
    gst_event_parse_new_segment(aEvent, &lUpdate, &lSegment.mRate, &lSegment.mFormat, &lSegment.mStart, &lSegment.mStop,
                                &lSegment.mPosition);
    lSegment.mUpdate = FALSE != lUpdate;
    return lSegment;
}

inline std::string BufferBytes(GstBuffer* aBuffer) {
    return std::string(reinterpret_cast<const char*>(GST_BUFFER_DATA(aBuffer)), GST_BUFFER_SIZE(aBuffer));
}

using Chain = GstFlowReturn (*)(GstPad*, GstBuffer*);

template <Chain kChain>
void SetChain(GstPad* aPad) {
    gst_pad_set_chain_function(aPad, kChain);
}

/// What downstream gets; to be unreferenced. Null when the pad has none.
inline GstCaps* PadCaps(GstPad* aPad) {
    GstCaps* const lCaps = GST_PAD_CAPS(aPad);
    return nullptr == lCaps ? nullptr : gst_caps_ref(lCaps);
}

inline std::string LegCaps(const std::string& /*aCaps*/) {
    return "";
}

inline std::string LegPreamble() {
    return "";
}

inline bool QueryDuration(GstPad* aPad, gint64& aDuration) {
    GstFormat lFormat = GST_FORMAT_TIME;
    return gst_pad_query_duration(aPad, &lFormat, &aDuration);
}

inline GstEvent* NewQosEvent() {
    return gst_event_new_qos(1.0, 0, 0);
}

inline GstElement* MakeFromUri(const char* aUri) {
    return gst_element_make_from_uri(GST_URI_SRC, aUri, nullptr);
}

/// Empty for none.
inline std::string UriOf(GstURIHandler* aHandler) {
    const gchar* const lUri = gst_uri_handler_get_uri(aHandler);
    return nullptr == lUri ? "" : lUri;
}

inline bool SetUri(GstURIHandler* aHandler, const char* aUri) {
    return gst_uri_handler_set_uri(aHandler, aUri);
}

inline void AddLogFunction(GstLogFunction aFunction, gpointer aData) {
    gst_debug_add_log_function(aFunction, aData);
}

inline void SetSyncHandler(GstBus* aBus, GstBusSyncHandler aHandler, gpointer aData) {
    gst_bus_set_sync_handler(aBus, aHandler, aData);
}

inline const char* FactoryField(GstElementFactory* aFactory, const char* aField) {
    const std::string lField(aField);
    if ("long-name" == lField) { return gst_element_factory_get_longname(aFactory); }
    if ("klass" == lField) { return gst_element_factory_get_klass(aFactory); }
    return gst_element_factory_get_description(aFactory);
}

/// What an application of this version does before the PLAYING that ends a pause: a segment says nothing of running
/// time, which begins anew with it.
inline void PrepareToResume(GstElement* aPipeline) {
    gst_pipeline_set_new_stream_time(GST_PIPELINE(aPipeline), 0);
}

/// What an application of this version does around a seek or another location while playing: it pauses.
template <typename Action>
void ChangeWhilePlaying(GstElement* aPipeline, Action aAction) {
    gst_element_set_state(aPipeline, GST_STATE_PAUSED);
    aAction();
    PrepareToResume(aPipeline);
    gst_element_set_state(aPipeline, GST_STATE_PLAYING);
}

/// 0.10 has none of its own for a resource that may not be opened: the one of those that can't be.
constexpr char kNotAuthorized[] = "5 ";

/// 0.10 clears the caps of an element's pads in READY: they are made anew.
constexpr bool kPadsSurviveReady = false;

}  // namespace ElementTest
