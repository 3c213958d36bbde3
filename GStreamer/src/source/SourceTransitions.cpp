#include "source/Source.hpp"

#include "debug/Debug.hpp"

#define GST_CAT_DEFAULT SourceCategory()

namespace nsGstVireRtspSrc {

/// Whether there is something to play and a network to play it over.
bool Source::may_start(const char* aRefusal) {
    if (m_settings.location().empty()) {
        m_messages.refuse(GST_RESOURCE_ERROR_NOT_FOUND, "No location");
        return false;
    }
    if (!m_network.available()) {
        m_messages.refuse(GST_RESOURCE_ERROR_OPEN_READ, aRefusal);
        return false;
    }
    return true;
}

/// A handler changes the state on the thread that is inside a change: it would wait for itself.
bool Source::refuse_nested() {
    GST_ERROR_OBJECT(m_element, "A change of state from inside another one is refused");
    return false;
}

bool Source::readyToPaused() {
    const Transition lTransition(*this);
    if (!lTransition.held()) { return refuse_nested(); }
    set_state(GST_STATE_READY);
    GST_DEBUG_OBJECT(m_element, "Ready -> Paused");
    m_profile = &m_options.profile();
    m_peersFailed = false;
    if (!may_start("Not allowed when network is not available")) { return false; }
    bool lStarted = false;
    guarded("Playing", [this, &lStarted] { lStarted = start_session(); });
    if (lStarted) { set_state(GST_STATE_PAUSED); }
    return lStarted;
}

bool Source::start_session() {
    do_go_on(Resumption::Way::kPlay);
    const unsigned int lTracks = [this] { return PlayerAccess::Hold(m_player)->GetTrackCount(); }();
    if (0 == lTracks) {
        GST_ERROR_OBJECT(m_element, "No tracks");
        m_messages.warn_no_tracks(url());
        return false;
    }
    if (!configure_streams()) { return false; }
    wait_for_packets();
    set_check_if_paused_timeout();
    return true;
}

bool Source::pausedToPlaying() {
    const Transition lTransition(*this);
    if (!lTransition.held()) { return refuse_nested(); }
    set_state(GST_STATE_PAUSED);
    GST_DEBUG_OBJECT(m_element, "Paused -> Playing");
    if (!m_network.available()) {
        m_messages.refuse(GST_RESOURCE_ERROR_OPEN_READ, "Not allowed when network is not available");
        return false;
    }
    m_goesToPlaying = true;
    const bool lServerPaused = m_resumption.server_paused();
    if (lServerPaused && has_more()) { resume(); }
    m_resumption.set_server_paused(false);
    forget_presentation();
    if (profile().pauses_in_place()) {
        m_buffering.answer();
        m_streams.go_on();
    } else {
        run_streams(lServerPaused || m_channelChanged);
    }
    m_channelChanged = false;
    set_state(GST_STATE_PLAYING);
    return true;
}

void Source::resume() {
    GST_DEBUG_OBJECT(m_element, "Resuming");
    guarded("Resuming", [this] {
        const Resumption::Way lWay = m_resumption.Choose(Resumption::Occasion::kPlaying, is_live());
        // A presentation that begins anew does not go on with what is still downstream.
        if (Resumption::Way::kPlay == lWay && profile().pauses_in_place()) { m_streams.flush(); }
        go_on(lWay);
        wait_for_packets();
    });
}

/// A clip that was paused at its end stays there: the server has nothing more to send.
bool Source::has_more() {
    return is_live() || !profile().pauses_in_place() || !m_streams.all_have_ended();
}

void Source::forget_presentation() {
    m_resumption.Forget();
    m_networkTimedOut = false;
}

void Source::go_on(Resumption::Way aWay) {
    try {
        do_go_on(aWay);
        return;
    } catch (const Player::Exception& lException) {
        if (Resumption::Way::kSeek != aWay || !IsRefusal(lException)) { throw; }
        handle_exception(&lException, "Seeking in");
        begin_streams_at({});
    }
    do_go_on(is_live() ? Resumption::Way::kPlay : Resumption::Way::kResume);
}

std::string Source::url() const {
    return m_settings.url(m_options.profile().secures());
}

/// Any scheme is taken for rtsp, which may be the cause of what fails then.
void Source::warn_of_scheme() const {
    const std::string lScheme = m_settings.scheme();
    if ("rtsps" == lScheme) {
        if (m_options.profile().secures()) { return; }
        GST_WARNING_OBJECT(m_element, "The profile \"classic\" knows no rtsps: the connection is not secured");
    } else if ("rtsp" != lScheme && "vire" != lScheme && !lScheme.empty()) {
        GST_WARNING_OBJECT(m_element, "The location's scheme is taken for rtsp, though it is %s", lScheme.c_str());
    }
}

void Source::do_go_on(Resumption::Way aWay) {
    const PlayerAccess::Hold lPlayer(m_player);
    switch (aWay) {
        case Resumption::Way::kPlay:
            warn_of_scheme();
            lPlayer->Play(m_requests.take_location([this] { return url(); }), Player::Time(0));
            break;
        case Resumption::Way::kResume: lPlayer->Resume(); break;
        case Resumption::Way::kSeek: lPlayer->Seek(Player::Time(m_resumption.position(), GST_SECOND)); break;
    }
}

bool Source::playingToPaused() {
    const Transition lTransition(*this);
    if (!lTransition.held()) { return refuse_nested(); }
    m_goesToPlaying = false;
    set_state(GST_STATE_PAUSED);
    if (m_networkTimedOut) { return true; }
    GST_DEBUG_OBJECT(m_element, "Playing -> Paused");
    if (profile().pauses_in_place()) {
        m_streams.pause();
    } else {
        m_streams.halt();
    }
    if (m_network.available()) {
        guarded("Pausing", [this] { PlayerAccess::Hold(m_player)->Pause(); });
    }
    if (!is_live()) { remember_resume_position(); }
    m_resumption.set_server_paused(true);
    return true;
}

/// The earliest play time that some track has got to.
void Source::remember_resume_position() {
    {
        const PlayerAccess::Hold lPlayer(m_player);
        for (guint lTrack = 0; lTrack < m_streams.size(); ++lTrack) {
            m_resumption.reached(
                (lPlayer->TrackLatestTime(lTrack) - lPlayer->TrackTimeAvailable(lTrack)).NanoSeconds());
        }
    }
    const double lSeconds = static_cast<double>(m_resumption.position()) / 1000000000.0;
    if (profile().prints_notes()) { g_print("Pausing, will resume at %f\n", lSeconds); }
    GST_DEBUG_OBJECT(m_element, "Pausing, will resume at %f\n", lSeconds);
}

bool Source::pausedToReady() {
    const Transition lTransition(*this);
    if (!lTransition.held()) { return refuse_nested(); }
    GST_DEBUG_OBJECT(m_element, "Paused -> Ready");
    m_pauseTimer.cancel();
    m_goesToPlaying = false;
    m_resumption.set_server_paused(false);
    // Nothing may hang on what is downstream where only the element goes down.
    if (profile().pauses_in_place()) { m_streams.halt(); }
    m_streams.stop();
    m_seeking.forget();
    if (m_networkTimedOut) { resetPlayerLib(); }
    // The next start may be of another presentation.
    forget_presentation();
    set_state(GST_STATE_READY);
    return true;
}

bool Source::readyToNull() {
    const Transition lTransition(*this);
    if (!lTransition.held()) { return refuse_nested(); }
    GST_DEBUG_OBJECT(m_element, "Ready -> Null");
    m_pauseTimer.cancel();
    if (m_network.available()) {
        guarded("Closing", [this] { PlayerAccess::Hold(m_player)->Close(); });
    }
    delete_all_streams();
    set_state(GST_STATE_NULL);
    return true;
}

bool Source::new_channel(Change aChange, const Seek& aSeek) {
    const GstState lState = state();
    if (GST_STATE_PLAYING != lState && GST_STATE_PAUSED != lState) { return false; }
    if (!may_start("Not allowed to change channels when network is not available")) { return false; }
    // What was left over belongs to the old location.
    if (Change::kLocation == aChange) { forget_presentation(); }
    const bool lServerPaused = m_resumption.server_paused();
    if (lServerPaused) {
        m_resumption.set_server_paused(false);
        m_channelChanged = !profile().pauses_in_place();
    }
    if (!m_channelChanged) { m_streams.halt(aSeek.mSeqnum); }
    begin_streams_at(aSeek);
    bool lStarted = false;
    guarded(Change::kSeek == aChange ? "Seeking in" : "Changing the channel to",
            [this, &lStarted] { lStarted = start_channel(); });
    m_resumption.arrived();
    if (!m_channelChanged) { run_streams(true, aSeek.mSeqnum); }
    if (lStarted && (lServerPaused || m_channelChanged)) { set_check_if_paused_timeout(); }
    return lStarted;
}

bool Source::start_channel() {
    const Resumption::Way lWay = m_resumption.Choose(Resumption::Occasion::kChange, is_live());
    go_on(lWay);
    // The new channel may have other tracks.
    if (Resumption::Way::kPlay == lWay && !configure_streams()) { return false; }
    wait_for_packets();
    if (has_packet()) { m_networkTimedOut = false; }
    return true;
}

}  // namespace nsGstVireRtspSrc
