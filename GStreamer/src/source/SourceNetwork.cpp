#include "source/Source.hpp"

#include "debug/Debug.hpp"

#define GST_CAT_DEFAULT SourceCategory()

namespace nsGstVireRtspSrc {

/// A loss waits for nothing: a transition that hangs on the lost network may be under way.
void Source::set_network_available(int aAvailable) {
    if (aAvailable) {
        m_network.returned();
        heed_requests();
    } else if (m_network.lose(state())) {
        m_resumption.network_lost();
        GST_DEBUG_OBJECT(m_element, "Network-available: FALSE");
    }
}

/// Brings the server from the state that the element had to the one that it has.
void Source::network_returned() {
    GstState lFrom = GST_STATE_NULL;
    if (!m_network.regain(lFrom)) { return; }
    GST_DEBUG_OBJECT(m_element, "Network-available: TRUE");
    const GstState lTo = state();
    if (GST_STATE_PAUSED == lFrom && GST_STATE_PLAYING == lTo) {
        s_pausedToPlaying();
    } else if (lTo > lFrom) {
        GST_WARNING_OBJECT(m_element, "Unexpected state transition");
    } else {
        if (GST_STATE_PLAYING <= lFrom && lTo <= GST_STATE_PAUSED) { s_playingToPaused(); }
        if (GST_STATE_PAUSED <= lFrom && lTo <= GST_STATE_READY) { s_pausedToReady(); }
        if (GST_STATE_READY <= lFrom && lTo <= GST_STATE_NULL) { s_readyToNull(); }
    }
}

bool Source::s_pausedToPlaying() {
    GST_DEBUG_OBJECT(m_element, "Server paused => playing");
    if (m_resumption.server_paused()) {
        guarded("Resuming", [this] { go_on(m_resumption.Choose(Resumption::Occasion::kNetworkReturned, is_live())); });
    }
    forget_presentation();
    return true;
}

bool Source::s_playingToPaused() {
    GST_DEBUG_OBJECT(m_element, "Server playing => paused");
    guarded("Pausing", [this] { PlayerAccess::Hold(m_player)->Pause(); });
    return true;
}

bool Source::s_pausedToReady() {
    GST_DEBUG_OBJECT(m_element, "Server paused => ready");
    return true;
}

bool Source::s_readyToNull() {
    GST_DEBUG_OBJECT(m_element, "Server ready => null");
    guarded("Closing", [this] { PlayerAccess::Hold(m_player)->Close(); });
    return true;
}

}  // namespace nsGstVireRtspSrc
