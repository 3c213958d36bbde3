#include "streams/Stream.hpp"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <exception>

#include "debug/Debug.hpp"
#include "streams/StreamPad.hpp"
#include "threads/Boundary.hpp"
#include "threads/ElementState.hpp"
#include "threads/Held.hpp"
#include "threads/ThreadMark.hpp"

#define GST_CAT_DEFAULT StreamCategory()

namespace nsGstVireRtspSrc {

namespace {

GstEvent* Numbered(GstEvent* aEvent, guint32 aSeqnum) {
    if (0 != aSeqnum) { gst_event_set_seqnum(aEvent, aSeqnum); }
    return aEvent;
}

/// A track without data says so this often, in microseconds.
constexpr int kNoDataReportInterval = 500000;

/// Of a track that has ended, packets dropped per interval: more than arrive in it.
constexpr int kDropAtMost = 1000;

/// Whether something arrived, within an interval. The descriptor may have been closed since it was asked for, and
/// even be another's by now: then this is a wait for nothing, once.
bool AwaitArrival(int aDescriptor) {
    pollfd lPoll{aDescriptor, POLLIN, 0};
    if (poll(&lPoll, 1, kPollInterval / 1000) <= 0) { return false; }
    usleep(kGatherTime);
    return true;
}

}  // namespace

Stream::Stream(GstElement* aElement, StreamController* aController, PlayerAccess& aPlayer, unsigned int aTrack,
               GstCaps* aCaps)
    : m_element(aElement), m_controller(aController), m_player(aPlayer), m_track(aTrack) {
    const Held<GstCaps> lCaps(aCaps);
    StreamCategory();
    m_pad = NewStreamPad(aTrack, *aController);
    // A reference of our own: an element that is disposed of lets its pads go before its streams.
    gst_object_ref(m_pad);
    gst_pad_set_caps(m_pad, lCaps.get());
    gst_pad_set_active(m_pad, TRUE);
    gst_element_add_pad(m_element, m_pad);
    task_create();
}

Stream::~Stream() {
    task_destroy();
    gst_pad_set_active(m_pad, FALSE);
    if (GST_OBJECT_PARENT(m_pad) == GST_OBJECT(m_element)) { gst_element_remove_pad(m_element, m_pad); }
    gst_object_unref(m_pad);
}

void Stream::destroy(Stream* aStream) {
    aStream->task_destroy();
    delete aStream;
}

void Stream::task_create() {
    g_static_rec_mutex_init(&m_taskLock);
    m_task = gst_task_create([](gpointer aData) { gst_vire_rtsp_stream_task_loop(static_cast<Stream*>(aData)); }, this);
    // Once for the task's whole life: a task that was stopped may not have left its thread yet when it is run
    // again, and takes no lock then.
    gst_task_set_lock(m_task, &m_taskLock);
}

bool Stream::task_run(bool aNewSegment) {
    m_failureTold = false;
    if (aNewSegment) {
        m_newSegment = true;
        m_endWanted = false;
        m_ended = false;
    }
    m_resumed = !m_newSegment;
    m_unlinked = false;
    m_noDataTime = 0;
    status_set(kOk);
    if (GST_TASK_STOPPED == gst_task_get_state(m_task)) { task_join(); }
    m_running = true;
    gst_task_start(m_task);
    return true;
}

bool Stream::task_pause() {
    gst_task_pause(m_task);
    return true;
}

bool Stream::task_stop() {
    gst_task_stop(m_task);
    begin_at(-1);
    return true;
}

void Stream::task_join() {
    if (m_thread.load() != std::this_thread::get_id()) { gst_task_join(m_task); }
}

void Stream::task_wait() {
    const RLock lIteration(&m_taskLock);
}

void Stream::task_destroy() {
    if (nullptr == m_task) { return; }
    m_running = false;
    gst_task_stop(m_task);
    task_wait();
    gst_task_join(m_task);
    gst_object_unref(m_task);
    m_task = nullptr;
    g_static_rec_mutex_free(&m_taskLock);
}

bool Stream::task_is_running() const {
    return m_running && GST_STATE_PLAYING == CurrentState(m_element);
}

StreamStatus Stream::status_get() const {
    const Lock lLock(m_statusMutex);
    return m_status;
}

void Stream::status_set(StreamStatus aStatus) {
    const Lock lLock(m_statusMutex);
    m_status = aStatus;
}

void Stream::flush_start(guint32 aSeqnum) {
    m_flushing = true;
    gst_pad_push_event(m_pad, Numbered(gst_event_new_flush_start(), aSeqnum));
}

void Stream::flush_stop(guint32 aSeqnum) {
    gst_pad_push_event(m_pad, Numbered(gst_event_new_flush_stop(), aSeqnum));
    m_flushing = false;
    m_newSegment = true;
    m_endWanted = false;
    m_ended = false;
    m_seqnum = aSeqnum;
}

void Stream::push_segment(GstEvent* aSegment) {
    gst_pad_push_event(m_pad, Numbered(aSegment, m_seqnum));
}

void Stream::end_of_stream() {
    if (m_ended.exchange(true) && m_profile.load()->ends_with_its_peer()) { return; }
    gst_pad_push_event(m_pad, Numbered(gst_event_new_eos(), m_seqnum));
}

/// The task is started also in PAUSED, where it pushes nothing else.
void Stream::end(guint32 aSeqnum, gint64 aPosition) {
    m_seqnum = aSeqnum;
    m_endPosition = aPosition;
    m_endWanted = true;
    gst_task_start(m_task);
}

void Stream::report_push(GstFlowReturn aResult) {
    const bool lUnlinked = GST_FLOW_NOT_LINKED == aResult;
    const bool lNewlyUnlinked = lUnlinked && !m_unlinked;
    m_unlinked = lUnlinked;
    // All that is worse than an end.
    if (lNewlyUnlinked || aResult < GST_FLOW_UNEXPECTED) {
        m_controller->stream_controller_peer_failed(aResult, m_track);
    }
}

void Stream::set_duration(gint64 aDuration) {
    SetStreamPadDuration(m_pad, aDuration);
}

GHashTable* Stream::split_fmt_params(const std::string& aText) {
    GHashTable* const lParams = g_hash_table_new_full(g_str_hash, g_str_equal, g_free, g_free);
    gchar** const lPieces = g_strsplit(aText.c_str(), ";", -1);
    for (gchar** lPiece = lPieces; nullptr != *lPiece; ++lPiece) {
        gchar** const lPair = g_strsplit(*lPiece, "=", 2);
        if (2 == g_strv_length(lPair)) {
            g_hash_table_replace(lParams, g_strdup(g_strstrip(lPair[0])), g_strdup(lPair[1]));
        }
        g_strfreev(lPair);
    }
    g_strfreev(lPieces);
    return lParams;
}

void Stream::iterate() {
    m_thread = std::this_thread::get_id();
    const ThreadMark lMark(m_element, ThreadMark::Kind::kStreaming);
    if (m_endWanted && m_running) { end_as_wanted(); }
    if (m_ended && m_profile.load()->ends_with_its_peer()) {
        drop_packets();
        rest();
        return;
    }
    if (!task_is_running()) {
        GST_DEBUG_OBJECT(m_pad, "Unexpected - task is not running\n");
        rest();
        return;
    }
    if (process_guarded()) {
        handle_got_packet();
    } else {
        handle_no_packet();
    }
}

bool Stream::process_guarded() {
    try {
        return task_process();
    } catch (const Player::Exception& lException) {
        if (!m_failureTold.exchange(true)) { m_controller->stream_controller_exception(lException, m_track); }
    } catch (const std::exception& lException) {
        GST_ERROR_OBJECT(m_pad, "Reading the track failed: %s", lException.what());
    } catch (...) { GST_ERROR_OBJECT(m_pad, "Reading the track failed"); }
    return false;
}

void Stream::handle_got_packet() {
    m_noDataTime = 0;
    if (kNoData != status_get()) { return; }
    status_set(kOk);
    m_controller->stream_controller_status(kOk, m_track);
}

/// Sleeps for one interval. A socket holds less of a fast stream than comes in that time, so it is emptied now and
/// then. A server that sends faster than that is done does not make the interval longer.
void Stream::rest() {
    using std::chrono::microseconds;
    using std::chrono::steady_clock;
    const auto lEnd = steady_clock::now() + microseconds(kPollInterval);
    for (microseconds lLeft(kPollInterval); lLeft.count() > 0 && steady_clock::now() < lEnd;) {
        const auto [lReceived, lMediaWaits] = m_player.TakeIn(m_track);
        // Fewer than last time: it was played or sought again.
        const unsigned int lNew = lReceived < m_received ? lReceived : lReceived - m_received;
        m_received = lReceived;
        const microseconds lSleep = std::min<microseconds>(m_pace.Next(lNew, lMediaWaits), lLeft);
        if (lSleep.count() > 0) { usleep(static_cast<useconds_t>(lSleep.count())); }
        lLeft -= lSleep;
    }
}

int Stream::wait_or_rest() {
    using std::chrono::steady_clock;
    const auto lArrival =
        m_controller->stream_controller_waits() ? m_player.NextArrival(m_track) : PlayerAccess::Arrival{-1, 0};
    if (lArrival.mDescriptor < 0) {
        rest();
        return kPollInterval;
    }
    const auto lBegin = steady_clock::now();
    // What brought nothing to this track may be there still, such as the end of a connection.
    if (m_wasWoken && lArrival.mReceived == m_received) { usleep(kIdleTime); }
    m_received = lArrival.mReceived;
    m_wasWoken = AwaitArrival(lArrival.mDescriptor);
    return static_cast<int>(
        std::chrono::duration_cast<std::chrono::microseconds>(steady_clock::now() - lBegin).count());
}

void Stream::end_as_wanted() {
    const gint64 lPosition = m_endPosition;
    if (lPosition >= 0 && take_new_segment()) {
        push_segment(gst_event_new_new_segment(FALSE, 1.0, GST_FORMAT_TIME, lPosition, -1, lPosition));
    }
    end_of_stream();
}

void Stream::drop_packets() {
    try {
        for (int lDropped = 0; lDropped < kDropAtMost && m_player.TakePacket(m_track); ++lDropped) {}
    } catch (const Player::Exception&) {
        // The tracks that go on report it.
    }
}

void Stream::handle_no_packet() {
    m_noDataTime += wait_or_rest();
    bool lEnded = false;
    bool lTimedOut = false;
    {
        const PlayerAccess::Hold lPlayer(m_player);
        lEnded = lPlayer->IsTrackEnded(m_track);
        lTimedOut = lPlayer->HasTrackTimedOut(m_track);
    }
    if (lEnded) {
        take_rest_or_end(lTimedOut);
    } else if (m_noDataTime >= kNoDataReportInterval) {
        m_noDataTime = 0;
        status_set(kNoData);
        m_controller->stream_controller_status(kNoData, m_track);
    }
}

/// Media may have come along with the end, which finishes an access unit that waited for more, or shortly after it:
/// the end of a described range is computed from the clock. So the track ends when another interval brought nothing.
void Stream::take_rest_or_end(bool aTimedOut) {
    rest();
    if (process_guarded()) {
        handle_got_packet();
    } else {
        handle_end(aTimedOut);
    }
}

void Stream::handle_end(bool aTimedOut) {
    if (aTimedOut) {
        GST_DEBUG_OBJECT(m_pad, "RTP/RTCP timed out for track %d\n", static_cast<int>(m_track));
        status_set(kTimedOut);
        m_controller->stream_controller_status(kTimedOut, m_track);
    } else {
        GST_DEBUG_OBJECT(m_pad, "End of stream for track %d\n", static_cast<int>(m_track));
        end_of_stream();
    }
    // In modern the end itself stops the loop, until a flush.
    m_running = !aTimedOut && m_profile.load()->ends_with_its_peer();
}

}  // namespace nsGstVireRtspSrc

void gst_vire_rtsp_stream_task_loop(nsGstVireRtspSrc::Stream* aStream) {
    nsGstVireRtspSrc::AtBoundary(nullptr, [aStream] { aStream->iterate(); });
}
