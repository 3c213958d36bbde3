#include "source/Source.hpp"

#include "debug/Debug.hpp"
#include "threads/Boundary.hpp"

#define GST_CAT_DEFAULT SourceCategory()

namespace nsGstVireRtspSrc {

namespace {

/// A pipeline that prerolls gets to PLAYING sooner; one that stays PAUSED has its server paused.
constexpr GstClockTime kCheckIfPausedAfter = 1500 * GST_MSECOND;

}  // namespace

/// A thread that is inside a transition does at its end what a handler asks for on it. A streaming thread can't, for
/// what is asked for may have to wait for it.
void Source::heed_requests() {
    switch (ThreadMark::Of(m_element)) {
        case ThreadMark::Kind::kTransition: return;
        case ThreadMark::Kind::kStreaming: m_requestTimer.start(0); return;
        case ThreadMark::Kind::kNone: break;
    }
    const ThreadMark lMark(m_element, ThreadMark::Kind::kTransition);
    if (m_turn.try_take()) { end_turn(); }
}

bool Source::has_requests() const {
    return m_network.has_returned() || m_requests.any();
}

/// Whoever has the turn looks for requests after it has given it away: none that was left meanwhile is forgotten.
void Source::end_turn() noexcept {
    do {
        AtBoundary(m_element, [this] { do_requests(); });
        m_turn.leave();
        m_messages.send_after();
    } while (has_requests() && m_turn.try_take());
}

void Source::do_requests() {
    network_returned();
    if (m_requests.take_location()) { new_channel(); }
    Seek lSeek;
    if (m_requests.take_seek(lSeek)) { seek(lSeek); }
    guint32 lSeqnum = 0;
    if (m_requests.take_end(lSeqnum)) { end(lSeqnum); }
    GstClockID lId = nullptr;
    if (m_requests.take_pause_check(lId)) { check_if_paused(lId); }
}

/// A server has nothing to send from the end on, and may not say so: there the streams end by themselves.
void Source::seek_end(const Seek& aSeek) {
    m_resumption.arrived();
    m_streams.flush(aSeek.mSeqnum);
    m_streams.end(aSeek.mSeqnum, aSeek.mPosition);
}

void Source::seek(const Seek& aSeek) {
    if (m_options.profile().heeds_events() && m_seeking.is_end(aSeek.mPosition)) {
        seek_end(aSeek);
        return;
    }
    m_resumption.sought(aSeek.mPosition);
    if (!m_resumption.server_paused()) {
        new_channel(Change::kSeek, aSeek);
    } else if (profile().pauses_in_place()) {
        m_streams.flush(aSeek.mSeqnum);
        begin_streams_at(aSeek);
    }
}

void Source::end(guint32 aSeqnum) {
    const GstState lState = state();
    if (GST_STATE_PLAYING == lState || GST_STATE_PAUSED == lState) { m_streams.end(aSeqnum); }
}

void Source::set_check_if_paused_timeout() {
    m_pauseTimer.start(kCheckIfPausedAfter);
}

void Source::element_goes() {
    m_pauseTimer.cancel();
    m_requestTimer.cancel();
}

void Source::check_if_paused(GstClockID aId) {
    // It fired, and before it got here a transition took it back.
    if (!m_pauseTimer.is_current(aId)) { return; }
    m_pauseTimer.cancel();
    // To pause the server of an element whose state is about to follow would stop what plays.
    if (m_goesToPlaying || GST_STATE_PAUSED != state()) {
        GST_DEBUG_OBJECT(m_element, "Element in PLAYING state -> Continue");
        return;
    }
    GST_DEBUG_OBJECT(m_element, "Element still in PAUSED state -> Pause server");
    if (m_network.available()) {
        guarded("Pausing", [this] { PlayerAccess::Hold(m_player)->Pause(); });
    }
    m_resumption.set_server_paused(true);
}

}  // namespace nsGstVireRtspSrc
