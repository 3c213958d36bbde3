#include "ElementState.hpp"
#include "Source.hpp"

#define GST_CAT_DEFAULT SourceCategory()

namespace nsGstVireRtspSrc {

/// Whether there is something to play and a network to play it over.
bool Source::may_start(const char* aRefusal) {
    if (m_settings.location().empty()) {
        GST_DEBUG_OBJECT(m_element, "No location");
        return false;
    }
    if (!m_network.available()) {
        GST_DEBUG_OBJECT(m_element, "%s", aRefusal);
        return false;
    }
    return true;
}

bool Source::readyToPaused() {
    const Lock lState(m_stateMutex);
    GST_DEBUG_OBJECT(m_element, "Ready -> Paused");
    if (!may_start("Not allowed when network is not available")) { return false; }
    bool lStarted = false;
    guarded("Playing", [this, &lStarted] { lStarted = start_session(); });
    return lStarted;
}

bool Source::start_session() {
    unsigned int lTracks = 0;
    {
        const PlayerAccess::Hold lPlayer(m_player);
        lPlayer->Play(m_settings.location(), Player::Time(0));
        lTracks = lPlayer->GetTrackCount();
    }
    if (0 == lTracks) {
        GST_ERROR_OBJECT(m_element, "No tracks");
        m_messages.warn_no_tracks(m_settings.location());
        return false;
    }
    if (!configure_streams()) { return false; }
    wait_for_packets();
    set_check_if_paused_timeout();
    return true;
}

bool Source::pausedToPlaying() {
    const Lock lState(m_stateMutex);
    GST_DEBUG_OBJECT(m_element, "Paused -> Playing");
    if (!m_network.available()) {
        GST_DEBUG_OBJECT(m_element, "Not allowed when network is not available");
        return false;
    }
    m_goesToPlaying = true;
    if (m_serverPaused) {
        GST_DEBUG_OBJECT(m_element, "Resuming");
        guarded("Resuming", [this] {
            resume_server();
            wait_for_packets();
        });
        run_streams(true);
        m_serverPaused = false;
    } else {
        run_streams(m_channelChanged);
    }
    m_channelChanged = false;
    m_resumePosition = -1;
    m_seekPending = false;
    m_network.clear_lost();
    return true;
}

void Source::resume_server() {
    const bool lSeek = m_seekPending || (m_network.was_lost() && -1 != m_resumePosition);
    const PlayerAccess::Hold lPlayer(m_player);
    if (-1 == m_streamDuration) {
        lPlayer->Play(m_settings.location(), Player::Time(0));
    } else if (lSeek) {
        lPlayer->Seek(Player::Time(m_resumePosition, GST_SECOND));
    } else {
        lPlayer->Resume();
    }
}

bool Source::playingToPaused() {
    const Lock lState(m_stateMutex);
    m_goesToPlaying = false;
    if (m_networkTimedOut) { return true; }
    GST_DEBUG_OBJECT(m_element, "Playing -> Paused");
    halt_streams();
    if (m_network.available()) {
        guarded("Pausing", [this] { PlayerAccess::Hold(m_player)->Pause(); });
    }
    if (-1 != m_streamDuration) { remember_resume_position(); }
    m_serverPaused = true;
    return true;
}

/// The earliest play time that some track has got to.
void Source::remember_resume_position() {
    {
        const PlayerAccess::Hold lPlayer(m_player);
        for (guint lTrack = 0; lTrack < m_streams->len; ++lTrack) {
            const gint64 lPosition =
                (lPlayer->TrackLatestTime(lTrack) - lPlayer->TrackTimeAvailable(lTrack)).NanoSeconds();
            if (-1 == m_resumePosition || lPosition < m_resumePosition) { m_resumePosition = lPosition; }
        }
    }
    const double lSeconds = static_cast<double>(m_resumePosition) / 1000000000.0;
    g_print("Pausing, will resume at %f\n", lSeconds);
    GST_DEBUG_OBJECT(m_element, "Pausing, will resume at %f\n", lSeconds);
}

bool Source::pausedToReady() {
    const Lock lState(m_stateMutex);
    GST_DEBUG_OBJECT(m_element, "Paused -> Ready");
    cancel_check_if_paused();
    m_goesToPlaying = false;
    m_serverPaused = false;
    // The next start may be of another presentation.
    m_seekPending = false;
    for_each_stream([](Stream& aStream) { aStream.task_stop(); });
    if (m_networkTimedOut) { resetPlayerLib(); }
    return true;
}

bool Source::readyToNull() {
    const Lock lState(m_stateMutex);
    GST_DEBUG_OBJECT(m_element, "Ready -> Null");
    cancel_check_if_paused();
    if (m_network.available()) {
        guarded("Closing", [this] { PlayerAccess::Hold(m_player)->Close(); });
    }
    delete_all_streams();
    return true;
}

bool Source::new_channel() {
    const Lock lState(m_stateMutex);
    return change_channel(Change::kLocation);
}

bool Source::change_channel(Change aChange) {
    const GstState lElement = CurrentState(m_element);
    if (GST_STATE_PLAYING != lElement && GST_STATE_PAUSED != lElement) { return false; }
    if (!may_start("Not allowed to change channels when network is not available")) { return false; }
    // A position that was left over belongs to the old location.
    if (Change::kLocation == aChange) { m_resumePosition = -1; }
    if (m_serverPaused) {
        m_serverPaused = false;
        m_channelChanged = true;
        m_resumePosition = -1;
        m_seekPending = false;
    }
    if (!m_channelChanged) { halt_streams(); }
    bool lStarted = false;
    guarded(Change::kSeek == aChange ? "Seeking in" : "Changing the channel to",
            [this, &lStarted] { lStarted = start_channel(); });
    m_resumePosition = -1;
    if (!m_channelChanged) {
        run_streams(true);
    } else if (lStarted) {
        set_check_if_paused_timeout();
    }
    return lStarted;
}

bool Source::start_channel() {
    const bool lSeek = -1 != m_resumePosition;
    {
        const PlayerAccess::Hold lPlayer(m_player);
        if (lSeek) {
            lPlayer->Seek(Player::Time(m_resumePosition, GST_SECOND));
        } else {
            lPlayer->Play(m_settings.location(), Player::Time(0));
        }
    }
    // The new channel may have other tracks.
    if (!lSeek && !configure_streams()) { return false; }
    wait_for_packets();
    return true;
}

gboolean Source::handle_event(GstEvent* aEvent) {
    if (GST_EVENT_SEEK != GST_EVENT_TYPE(aEvent)) {
        g_print("Got unhandled event at virertstpsrc!\n");
        gst_event_unref(aEvent);
        return FALSE;
    }
    gint64 lStart = -1;
    gst_event_parse_seek(aEvent, nullptr, nullptr, nullptr, nullptr, &lStart, nullptr, nullptr);
    gst_event_unref(aEvent);

    const Lock lState(m_stateMutex);
    m_resumePosition = lStart;
    m_seekPending = m_serverPaused && -1 != lStart;
    if (!m_serverPaused) { change_channel(Change::kSeek); }
    return TRUE;
}

}  // namespace nsGstVireRtspSrc
