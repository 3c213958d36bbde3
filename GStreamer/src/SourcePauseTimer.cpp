#include "Boundary.hpp"
#include "ElementState.hpp"
#include "Source.hpp"

#define GST_CAT_DEFAULT SourceCategory()

namespace nsGstVireRtspSrc {

namespace {

/// A pipeline that prerolls gets to PLAYING sooner; one that stays PAUSED has its server paused.
constexpr GstClockTime kCheckIfPausedAfter = 1500 * GST_MSECOND;

/// What the clock keeps for a pending request. The element may go meanwhile, and its source with it.
struct Request {
    explicit Request(GstElement* aElement, Source* aSource) : m_source(aSource) {
        g_weak_ref_init(&m_element, aElement);
    }
    ~Request() { g_weak_ref_clear(&m_element); }
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;

    GWeakRef m_element{};
    Source* const m_source;
};

gboolean vireCheckIfPaused(GstClock* /*aClock*/, GstClockTime /*aTime*/, GstClockID aId, gpointer aData) {
    auto* const lRequest = static_cast<Request*>(aData);
    const gpointer lElement = g_weak_ref_get(&lRequest->m_element);
    if (nullptr == lElement) { return TRUE; }
    AtBoundary(lElement, [lRequest, aId] { lRequest->m_source->check_if_paused(aId); });
    gst_object_unref(lElement);
    return TRUE;
}

}  // namespace

void Source::set_check_if_paused_timeout() {
    cancel_check_if_paused();
    GstClock* const lClock = gst_system_clock_obtain();
    m_checkIfPausedId = gst_clock_new_single_shot_id(lClock, gst_clock_get_time(lClock) + kCheckIfPausedAfter);
    gst_clock_id_wait_async_full(m_checkIfPausedId, vireCheckIfPaused, new Request(m_element, this),
                                 [](gpointer aRequest) { delete static_cast<Request*>(aRequest); });
    gst_object_unref(lClock);
}

void Source::cancel_check_if_paused() {
    if (nullptr == m_checkIfPausedId) { return; }
    gst_clock_id_unschedule(m_checkIfPausedId);
    gst_clock_id_unref(m_checkIfPausedId);
    m_checkIfPausedId = nullptr;
}

void Source::check_if_paused(GstClockID aId) {
    const Lock lState(m_stateMutex);
    // It fired, and before it got here a transition took it back.
    if (aId != m_checkIfPausedId) { return; }
    cancel_check_if_paused();
    // The element's state follows its transition later: to pause the server in between would stop what plays.
    if (m_goesToPlaying || GST_STATE_PAUSED != CurrentState(m_element)) {
        GST_DEBUG_OBJECT(m_element, "Element in PLAYING state -> Continue");
        return;
    }
    GST_DEBUG_OBJECT(m_element, "Element still in PAUSED state -> Pause server");
    if (m_network.available()) {
        guarded("Pausing", [this] { PlayerAccess::Hold(m_player)->Pause(); });
    }
    m_serverPaused = true;
}

}  // namespace nsGstVireRtspSrc
