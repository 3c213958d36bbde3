#include "Boundary.hpp"
#include "ElementState.hpp"
#include "Source.hpp"

#define GST_CAT_DEFAULT SourceCategory()

namespace nsGstVireRtspSrc {

namespace {

/// A pipeline that prerolls gets to PLAYING sooner; one that stays PAUSED has its server paused.
constexpr GstClockTime kCheckIfPausedAfter = 1500 * GST_MSECOND;

}  // namespace

/// What the clock keeps for a pending request. The element may go meanwhile, and its source with it: it takes the
/// request back before, while its last reference is still there for the clock to add to.
class Source::PauseRequest {
public:
    explicit PauseRequest(Source* aSource) : m_source(aSource), m_element(aSource->m_element) {}

    /// A reference to the element; null when the request was taken back.
    GstElement* TakeElement() const {
        const Lock lLock(m_mutex);
        return nullptr == m_element ? nullptr : GST_ELEMENT(gst_object_ref(m_element));
    }
    void TakeBack() {
        const Lock lLock(m_mutex);
        m_element = nullptr;
    }

    Source* const m_source;

private:
    Mutex m_mutex;  ///< A leaf.
    GstElement* m_element;
};

gboolean Source::pause_request_fires(GstClock* /*aClock*/, GstClockTime /*aTime*/, GstClockID aId, gpointer aData) {
    auto* const lRequest = static_cast<PauseRequest*>(aData);
    GstElement* const lElement = lRequest->TakeElement();
    if (nullptr == lElement) { return TRUE; }
    AtBoundary(lElement, [lRequest, aId] { lRequest->m_source->check_if_paused(aId); });
    gst_object_unref(lElement);
    return TRUE;
}

void Source::set_check_if_paused_timeout() {
    cancel_check_if_paused();
    GstClock* const lClock = gst_system_clock_obtain();
    m_checkIfPausedId = gst_clock_new_single_shot_id(lClock, gst_clock_get_time(lClock) + kCheckIfPausedAfter);
    m_pauseRequest = new PauseRequest(this);
    gst_clock_id_wait_async_full(m_checkIfPausedId, pause_request_fires, m_pauseRequest,
                                 [](gpointer aRequest) { delete static_cast<PauseRequest*>(aRequest); });
    gst_object_unref(lClock);
}

void Source::cancel_check_if_paused() {
    if (nullptr == m_checkIfPausedId) { return; }
    m_pauseRequest->TakeBack();
    m_pauseRequest = nullptr;
    gst_clock_id_unschedule(m_checkIfPausedId);
    gst_clock_id_unref(m_checkIfPausedId);
    m_checkIfPausedId = nullptr;
}

void Source::element_goes() {
    const Lock lState(m_stateMutex);
    cancel_check_if_paused();
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
