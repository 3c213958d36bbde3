#include "source/Source.hpp"

#include "debug/Debug.hpp"

#define GST_CAT_DEFAULT SourceCategory()

namespace nsGstVireRtspSrc {

gboolean Source::handle_event(GstEvent* aEvent) {
    const Profile& lProfile = m_options.profile();
    const GstEventType lType = GST_EVENT_TYPE(aEvent);
    gboolean lHeeded = TRUE;
    if (GST_EVENT_SEEK == lType && lProfile.heeds_events()) {
        lHeeded = stream_controller_seek(aEvent);
    } else if (GST_EVENT_SEEK == lType) {
        gint64 lStart = -1;
        gst_event_parse_seek(aEvent, nullptr, nullptr, nullptr, nullptr, &lStart, nullptr, nullptr);
        m_requests.ask_seek({lStart, 0, false});
        heed_requests();
    } else if (GST_EVENT_EOS == lType && lProfile.heeds_events()) {
        m_requests.ask_end(gst_event_get_seqnum(aEvent));
        heed_requests();
    } else {
        GST_DEBUG_OBJECT(m_element, "Unhandled event %s", gst_event_type_get_name(lType));
        if (lProfile.prints_notes()) { g_print("Got unhandled event at virertstpsrc!\n"); }
        lHeeded = FALSE;
    }
    gst_event_unref(aEvent);
    return lHeeded;
}

bool Source::stream_controller_seek(GstEvent* aSeek) {
    if (!m_options.profile().heeds_events()) { return false; }
    Seek lSeek;
    if (!m_seeking.find(aSeek, lSeek) || !m_network.available()) {
        GST_INFO_OBJECT(m_element, "A seek that can't be done is refused");
        return false;
    }
    m_requests.ask_seek(lSeek);
    heed_requests();
    return true;
}

bool Source::stream_controller_seeking(GstQuery* aQuery) {
    return m_options.profile().heeds_events() && m_seeking.answer(aQuery);
}

}  // namespace nsGstVireRtspSrc
