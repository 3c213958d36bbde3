#include <gst/gst.h>

#include <mutex>

#undef gst_element_add_pad
#undef gst_pad_query_default

namespace Gst1 {

namespace {

/// A pad without one of its own has its element's, made by the first pad of the start.
std::mutex gGroupMutex;

GQuark CapsQuark() {
    return g_quark_from_static_string("gst1-pad-caps");
}

bool HasGroupId(GstPad* aPad, guint* aGroupId) {
    GstEvent* const lStart = gst_pad_get_sticky_event(aPad, GST_EVENT_STREAM_START, 0);
    if (nullptr == lStart) { return false; }
    const bool lFound = gst_event_parse_group_id(lStart, aGroupId);
    gst_event_unref(lStart);
    return lFound;
}

/// The group id of the element's other streams; a new one for the first. Sticky events go when a pad is
/// deactivated, so every start from READY has an id of its own.
guint GroupId(GstElement* aElement) {
    GST_OBJECT_LOCK(aElement);
    GList* const lPads = g_list_copy_deep(
        aElement->srcpads, [](gconstpointer aPad, gpointer) { return gst_object_ref(const_cast<gpointer>(aPad)); },
        nullptr);
    GST_OBJECT_UNLOCK(aElement);
    guint lGroupId = GST_GROUP_ID_INVALID;
    for (GList* lPad = lPads; nullptr != lPad && !HasGroupId(GST_PAD(lPad->data), &lGroupId); lPad = lPad->next) {}
    g_list_free_full(lPads, gst_object_unref);
    return GST_GROUP_ID_INVALID == lGroupId ? gst_util_group_id_next() : lGroupId;
}

/// The same for the same location and pad at every start.
gchar* StreamId(GstElement* aElement, GstPad* aPad) {
    gchar* const lUri = GST_IS_URI_HANDLER(aElement) ? gst_uri_handler_get_uri(GST_URI_HANDLER(aElement)) : nullptr;
    gchar* const lSum = g_compute_checksum_for_string(G_CHECKSUM_SHA256, nullptr == lUri ? "" : lUri, -1);
    gchar* const lId = g_strdup_printf("%s/%s", lSum, GST_PAD_NAME(aPad));
    g_free(lSum);
    g_free(lUri);
    return lId;
}

/// Keeps the event on the pad; takes it over.
void Store(GstPad* aPad, GstEvent* aEvent) {
    gst_pad_store_sticky_event(aPad, aEvent);
    gst_event_unref(aEvent);
}

void StoreCaps(GstPad* aPad) {
    GstCaps* const lCaps = Caps(aPad);
    if (nullptr == lCaps) { return; }
    GstCaps* const lComplete = gst_caps_copy(lCaps);
    const GstStructure* const lFormat = gst_caps_get_structure(lComplete, 0);
    if (gst_structure_has_name(lFormat, "video/x-h264")) {
        // Parsers refuse "avc" without its configuration, whatever comes within the stream.
        const char* const lStreamFormat = gst_structure_has_field(lFormat, "codec_data") ? "avc" : "avc3";
        gst_caps_set_simple(lComplete, "stream-format", G_TYPE_STRING, lStreamFormat, "alignment", G_TYPE_STRING, "au",
                            nullptr);
    } else if (gst_structure_has_name(lFormat, "audio/mpeg")) {
        gst_caps_set_simple(lComplete, "stream-format", G_TYPE_STRING, "raw", nullptr);
    }
    Store(aPad, gst_event_new_caps(lComplete));
    gst_caps_unref(lComplete);
}

}  // namespace

void BeginStream(GstElement* aElement, GstPad* aPad) {
    const std::lock_guard<std::mutex> lLock(gGroupMutex);
    guint lGroupId = GST_GROUP_ID_INVALID;
    if (HasGroupId(aPad, &lGroupId)) { return; }
    gchar* const lId = StreamId(aElement, aPad);
    GstEvent* const lStart = gst_event_new_stream_start(lId);
    gst_event_set_group_id(lStart, GroupId(aElement));
    g_free(lId);
    Store(aPad, lStart);
    StoreCaps(aPad);
}

void Restart(GstElement* aElement, GstPad* aPad) {
    EndRun(aElement);
    BeginStream(aElement, aPad);
}

gboolean SetCaps(GstPad* aPad, GstCaps* aCaps) {
    g_object_set_qdata_full(G_OBJECT(aPad), CapsQuark(), gst_caps_ref(aCaps),
                            [](gpointer aOld) { gst_caps_unref(static_cast<GstCaps*>(aOld)); });
    if (gst_pad_has_current_caps(aPad)) { StoreCaps(aPad); }
    return TRUE;
}

GstCaps* Caps(GstPad* aPad) {
    return static_cast<GstCaps*>(g_object_get_qdata(G_OBJECT(aPad), CapsQuark()));
}

gboolean AddPad(GstElement* aElement, GstPad* aPad) {
    BeginStream(aElement, aPad);
    return gst_element_add_pad(aElement, aPad);
}

gboolean QueryDefault(GstPad* aPad, GstQuery* aQuery) {
    GstObject* const lParent = gst_pad_get_parent(aPad);
    const gboolean lAnswered = gst_pad_query_default(aPad, lParent, aQuery);
    if (nullptr != lParent) { gst_object_unref(lParent); }
    return lAnswered;
}

}  // namespace Gst1
