#include "ElementState.hpp"
#include "Source.hpp"

#define GST_CAT_DEFAULT SourceCategory()

namespace nsGstVireRtspSrc {

void Source::set_network_available(int aAvailable) {
    if (aAvailable) {
        network_returned();
    } else {
        network_lost();
    }
}

/// Waits for nothing: a transition that hangs on the lost network may be under way.
void Source::network_lost() {
    if (m_network.lose(CurrentState(m_element))) { GST_DEBUG_OBJECT(m_element, "Network-available: FALSE"); }
}

/// Brings the server from the state that the element had to the one that it has.
void Source::network_returned() {
    if (m_network.available()) { return; }
    const Lock lState(m_stateMutex);
    GstState lFrom = GST_STATE_NULL;
    if (!m_network.regain(lFrom)) { return; }
    GST_DEBUG_OBJECT(m_element, "Network-available: TRUE");
    const GstState lTo = CurrentState(m_element);
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
    if (m_serverPaused) {
        guarded("Resuming", [this] {
            const PlayerAccess::Hold lPlayer(m_player);
            if (-1 == m_streamDuration) {
                lPlayer->Play(m_settings.location(), Player::Time(0));
            } else if (-1 == m_resumePosition) {
                lPlayer->Resume();
            } else {
                lPlayer->Seek(Player::Time(m_resumePosition, GST_SECOND));
            }
        });
    }
    m_resumePosition = -1;
    m_seekPending = false;
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
