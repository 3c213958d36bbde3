#pragma once

#include <gst/gst.h>

#include <string>

/// What tests see differently on GStreamer 1.x; gst010/support has the same for 0.10.
namespace ElementTest {

/// As in 0.10's new-segment event; position is the stream time of the start.
struct Segment {
    bool mUpdate;
    double mRate;
    GstFormat mFormat;
    gint64 mStart;
    gint64 mStop;
    gint64 mPosition;
};

inline bool IsSegment(GstEvent* aEvent) {
    return GST_EVENT_SEGMENT == GST_EVENT_TYPE(aEvent);
}

inline Segment ParseSegment(GstEvent* aEvent) {
    const GstSegment* lSegment = nullptr;
    gst_event_parse_segment(aEvent, &lSegment);
    return {false,
            lSegment->rate,
            lSegment->format,
            static_cast<gint64>(lSegment->start),
            static_cast<gint64>(lSegment->stop),
            static_cast<gint64>(lSegment->time)};
}

inline std::string BufferBytes(GstBuffer* aBuffer) {
    GstMapInfo lMap;
    if (!gst_buffer_map(aBuffer, &lMap, GST_MAP_READ)) { return "(not readable)"; }
    const std::string lBytes(reinterpret_cast<const char*>(lMap.data), lMap.size);
    gst_buffer_unmap(aBuffer, &lMap);
    return lBytes;
}

using Chain = GstFlowReturn (*)(GstPad*, GstBuffer*);

template <Chain kChain>
void SetChain(GstPad* aPad) {
    gst_pad_set_chain_function(aPad,
                               [](GstPad* aSink, GstObject*, GstBuffer* aBuffer) { return kChain(aSink, aBuffer); });
}

/// What downstream gets; to be unreferenced. Null when the pad has none.
inline GstCaps* PadCaps(GstPad* aPad) {
    return gst_pad_get_current_caps(aPad);
}

/// The fields that 1.x's caps have in addition to these.
inline std::string LegCaps(const std::string& aCaps) {
    const std::string lMediaType = aCaps.substr(0, aCaps.find(','));
    if ("video/x-h264" == lMediaType) {
        // Without a configuration the parameter sets come within the stream.
        const bool lHasConfig = std::string::npos != aCaps.find("codec_data");
        return std::string(", alignment=(string)au, stream-format=(string)") + (lHasConfig ? "avc" : "avc3");
    }
    if ("audio/mpeg" == lMediaType) { return ", stream-format=(string)raw"; }
    return "";
}

/// The events that precede the first segment.
inline std::string LegPreamble() {
    return "stream-start caps ";
}

inline bool QueryDuration(GstPad* aPad, gint64& aDuration) {
    return gst_pad_query_duration(aPad, GST_FORMAT_TIME, &aDuration);
}

inline GstEvent* NewQosEvent() {
    return gst_event_new_qos(GST_QOS_TYPE_UNDERFLOW, 1.0, 0, 0);
}

inline GstElement* MakeFromUri(const char* aUri) {
    return gst_element_make_from_uri(GST_URI_SRC, aUri, nullptr, nullptr);
}

/// Empty for none.
inline std::string UriOf(GstURIHandler* aHandler) {
    gchar* const lUri = gst_uri_handler_get_uri(aHandler);
    const std::string lText = nullptr == lUri ? "" : lUri;
    g_free(lUri);
    return lText;
}

inline bool SetUri(GstURIHandler* aHandler, const char* aUri) {
    return gst_uri_handler_set_uri(aHandler, aUri, nullptr);
}

inline void AddLogFunction(GstLogFunction aFunction, gpointer aData) {
    gst_debug_add_log_function(aFunction, aData, nullptr);
}

inline void SetSyncHandler(GstBus* aBus, GstBusSyncHandler aHandler, gpointer aData) {
    gst_bus_set_sync_handler(aBus, aHandler, aData, nullptr);
}

inline const char* FactoryField(GstElementFactory* aFactory, const char* aField) {
    return gst_element_factory_get_metadata(aFactory, aField);
}

/// What an application of this version does before the PLAYING that ends a pause: nothing.
inline void PrepareToResume(GstElement* /*aPipeline*/) {}

/// What an application of this version does around a seek or another location while playing: nothing.
template <typename Action>
void ChangeWhilePlaying(GstElement* /*aPipeline*/, Action aAction) {
    aAction();
}

/// The code of a resource that may not be opened.
constexpr char kNotAuthorized[] = "15 ";

/// Whether pads of a kept track stay through READY.
constexpr bool kPadsSurviveReady = true;

}  // namespace ElementTest
