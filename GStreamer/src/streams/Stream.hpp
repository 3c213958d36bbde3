#pragma once

#include <gst/gst.h>

#include <atomic>
#include <string>
#include <thread>

#include "Player/Pace.hpp"
#include "settings/Profile.hpp"
#include "streams/StreamController.hpp"
#include "threads/Lock.hpp"
#include "threads/PlayerAccess.hpp"

namespace nsGstVireRtspSrc {

/// One track of the session as GStreamer sees it: a source pad, a task that runs the track's streaming loop,
/// and the track's status. The codec classes supply the caps and the work per packet.
///
/// Made, driven and deleted by who has the `Source`'s turn; the loop runs on the task's thread. What
/// both touch is atomic or under m_statusMutex.
class Stream {
public:
    /// Takes over `aCaps`. Adds the active pad to the element.
    Stream(GstElement* aElement, StreamController* aController, PlayerAccess& aPlayer, unsigned int aTrack,
           GstCaps* aCaps);
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
    /// Ends the task while the codec part that it runs is still there, then deletes the stream and its pad.
    /// The caller holds neither the player nor anything that a loop iteration could wait for.
    static void destroy(Stream* aStream);

    /// Whether the caps made from the track's description now are those of the pad.
    virtual bool caps_are_valid() = 0;
    /// Takes one packet and pushes it; false when there was none. On the streaming thread.
    virtual bool task_process() = 0;

    /// The next buffer starts a new segment, or goes on in the last one if there is one.
    bool task_run(bool aNewSegment = true);
    bool task_pause();
    bool task_stop();
    /// Returns when its thread has left a task that was stopped: one that is started while its thread is on the way out
    /// gets no other. From the thread itself, which can't wait for that, at once.
    void task_join();
    /// Returns when no loop iteration is in progress. The task has been paused or stopped before: while it runs,
    /// GStreamer keeps the lock from one iteration to the next.
    void task_wait();
    bool task_is_running() const;

    /// Pushed since the stream was made.
    guint64 access_units() const { return m_accessUnits; }

    StreamStatus status_get() const;
    void status_set(StreamStatus aStatus);

    /// `aSeqnum`: of the seek that they belong to, as does the segment that follows; 0 for none.
    void flush_start(guint32 aSeqnum = 0);
    void flush_stop(guint32 aSeqnum = 0);
    /// The next segment begins with that position, in ns, whatever its first buffer's is; -1: with that of the buffer.
    /// While the task rests.
    void begin_at(gint64 aPosition) { m_begin = aPosition; }
    /// Between `flush_start` and `flush_stop`.
    bool is_flushing() const { return m_flushing; }
    /// In modern once: nothing follows until a flush, or a run that begins a segment.
    void end_of_stream();
    /// Has the task end the stream as soon as it can, with an event of that number. Where a segment is due it begins
    /// with that position, in ns, if there is one.
    void end(guint32 aSeqnum, gint64 aPosition = -1);
    bool has_ended() const { return m_ended; }
    /// Whether the last push found nothing linked.
    bool is_unlinked() const { return m_unlinked; }
    /// Before the task runs.
    void set_profile(const Profile& aProfile) { m_profile = &aProfile; }
    /// What the pad answers to duration queries.
    void set_duration(gint64 aDuration);

    /// The parameters of an SDP format text such as "a=1; b=2". Pieces without "=" are skipped, keys are
    /// trimmed, values are not. The caller owns the table.
    static GHashTable* split_fmt_params(const std::string& aText);

    /// One iteration of the streaming loop.
    void iterate();

protected:
    virtual ~Stream();

    GstElement* element() const { return m_element; }
    GstPad* pad() const { return m_pad; }
    PlayerAccess& player() const { return m_player; }
    unsigned int track() const { return m_track; }
    /// Whether the next buffer starts a new segment; asking clears it.
    bool take_new_segment() { return m_newSegment.exchange(false); }
    /// Where the segment has to begin, or -1; asking clears it.
    gint64 take_begin() { return m_begin.exchange(-1); }
    /// Whether the task was run again in the segment that there was, and nothing has been pushed since; asking clears
    /// it.
    bool take_resumed() { return m_resumed.exchange(false); }
    /// Pushes the event that starts a segment, with the number of what has led to it.
    void push_segment(GstEvent* aSegment);
    const Profile& profile() const { return *m_profile; }
    /// Reports a push that failed for good; those that find nothing linked once in a row.
    void report_push(GstFlowReturn aResult);
    void count_access_unit() { ++m_accessUnits; }
    /// The loop idles until the next `task_run`.
    void stop_processing() { m_running = false; }

private:
    void task_create();
    void task_destroy();
    /// `task_process`, with a failure reported once and counted as no packet.
    bool process_guarded();
    void handle_got_packet();
    void rest();
    /// Until there may be a packet, for an interval at most. In microseconds.
    int wait_or_rest();
    void handle_no_packet();
    /// Of a stream that has ended: what comes all the same does not pile up.
    void drop_packets();
    void take_rest_or_end(bool aTimedOut);
    void handle_end(bool aTimedOut);
    void end_as_wanted();

    GstElement* const m_element;
    StreamController* const m_controller;
    GstPad* m_pad = nullptr;
    Mutex m_statusMutex;  ///< A leaf.
    std::atomic<bool> m_newSegment{true};
    std::atomic<gint64> m_begin{-1};
    std::atomic<bool> m_resumed{false};
    std::atomic<bool> m_endWanted{false};
    std::atomic<gint64> m_endPosition{-1};
    std::atomic<bool> m_ended{false};  ///< The end of stream is out.
    std::atomic<bool> m_unlinked{false};
    std::atomic<guint32> m_seqnum{0};  ///< Of the next segment or end; 0 for any.
    std::atomic<const Profile*> m_profile{&Profile::Named(Profile::kClassic)};
    PlayerAccess& m_player;
    const unsigned int m_track;
    GstTask* m_task = nullptr;
    GStaticRecMutex m_taskLock{};             ///< Held by GStreamer while the task runs.
    std::atomic<std::thread::id> m_thread{};  ///< Of the last iteration.
    std::atomic<bool> m_running{false};
    StreamStatus m_status VIRE_GUARDED_BY(m_statusMutex) = kOk;
    std::atomic<int> m_noDataTime{0};  ///< Microseconds since the last packet or report.
    std::atomic<guint64> m_accessUnits{0};
    std::atomic<bool> m_failureTold{false};
    Player::Pace m_pace;          ///< Of the looks at the sockets; the loop's own, as the next.
    unsigned int m_received = 0;  ///< Packets, at the last look.
    bool m_wasWoken = false;      ///< Something ended the last wait.
    bool m_flushing = false;      ///< By who has the source's turn.
};

}  // namespace nsGstVireRtspSrc

/// The function of every stream's task.
void gst_vire_rtsp_stream_task_loop(nsGstVireRtspSrc::Stream* aStream);
