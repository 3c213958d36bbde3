#pragma once

#include <gst/gst.h>

#include <functional>
#include <string>

#include "ConfigParamKey.hpp"
#include "Lock.hpp"
#include "Messages.hpp"
#include "Network.hpp"
#include "PlayerAccess.hpp"
#include "Settings.hpp"
#include "Stream.hpp"
#include "StreamController.hpp"

namespace nsGstVireRtspSrc {

/// The element's controller: keeps the server's state in step with the pipeline's, owns the player, the
/// settings and one stream per track.
///
/// Threads: the application's (properties, transitions, events), one per stream (status reports), the system
/// clock's (pause timer).
///
/// Locks, in the order in which they may be taken:
///   1. m_stateMutex      whole transitions; held while the server is waited for.
///   2. a task's lock     GStreamer holds it while the task runs. Whoever takes it has paused or stopped the
///                        task before, to wait for the iteration in progress, and holds 1 alone.
///   3. m_bufferingMutex  a buffering message is decided and posted in one.
///   4. the player mutex  every call into the library.
///   5. leaves            m_streamsMutex (then a stream's status mutex); those inside Settings, Network and
///                        PlayerAccess. Nothing is waited for under them.
/// A streaming thread is inside 2, so it never waits for 1: it tries, again and again, and gives up once its
/// task is no longer meant to run; a transition that waits for the iteration therefore gets it.
/// Setters wait for leaves only, except a new location, which is a transition of its own, and the return of
/// the network, which catches up with the server.
class Source : public StreamController {
public:
    explicit Source(GstElement* aElement);
    ~Source() override;
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    // State changes; false fails them. (SourceTransitions.cpp)
    bool readyToPaused();
    bool pausedToPlaying();
    bool playingToPaused();
    bool pausedToReady();
    bool readyToNull();
    /// Plays the location, or the position of a seek, at once when PLAYING or PAUSED; otherwise false.
    bool new_channel();
    /// Owns the event. True for a seek.
    gboolean handle_event(GstEvent* aEvent);

    // Settings. (Source.cpp)
    void set_config_param(ConfigParamKey aKey, const char* aValue);
    /// No copy, and good as long as the element; null when unset.
    const char* get_config_param(ConfigParamKey aKey) const;
    /// A copy for the caller, which a setter on another thread cannot pull away; null when unset.
    gchar* dup_config_param(ConfigParamKey aKey) const;
    void set_config_boolean_param(ConfigParamKey aKey, int aValue);
    int get_config_boolean_param(ConfigParamKey aKey) const;
    /// No setting is a number.
    void set_config_int_param(ConfigParamKey /*aKey*/, int /*aValue*/) {}
    int get_config_int_param(ConfigParamKey /*aKey*/) const { return 0; }

    /// Tells whether the network may be used. (SourceNetwork.cpp)
    void set_network_available(int aAvailable);

    // From the streaming threads. (SourceReports.cpp)
    void stream_controller_status(StreamStatus aStatus, unsigned int aTrack) override;
    void stream_controller_exception(const Player::Exception& aException, unsigned int aTrack) override;

    /// From the clock's thread: pauses the server of an element that stayed PAUSED. A request that was
    /// cancelled meanwhile does nothing. (SourcePauseTimer.cpp)
    void check_if_paused(GstClockID aId);
    /// The element lets go of others: no timer may find it any more.
    void element_goes();

private:
    enum class Change { kLocation, kSeek };

    // All private operations are called with m_stateMutex held, where nothing else is said.

    bool may_start(const char* aRefusal);
    /// Connects, describes, sets up, plays; false when there is nothing to play.
    bool start_session();
    bool change_channel(Change aChange);
    bool start_channel();
    void resume_server();
    void remember_resume_position();

    // Streams. (SourceStreams.cpp)
    /// Makes the streams fit the player's tracks. False when no track has one.
    bool configure_streams();
    void remove_changed_streams(unsigned int aTracks);
    void create_missing_streams(unsigned int aTracks);
    Stream* create_stream(unsigned int aTrack);
    /// Reads range and duration, and tells them.
    void update_times();
    void delete_all_streams();
    /// Returns when some track has a packet, or none will come.
    void wait_for_packets();
    bool has_packet_or_end();
    Stream* stream_at(unsigned int aTrack) const;
    /// Puts a stream, or null, at the index or behind the last.
    void put_stream(unsigned int aTrack, Stream* aStream);
    void remove_last_stream();
    /// Has what arrives for tracks without a stream dropped. False, with a warning, when no track has one.
    bool settle_unplayed_tracks();
    void for_each_stream(const std::function<void(Stream&)>& aAction);
    /// Pauses the tasks and flushes; no packet is on its way afterwards.
    void halt_streams();
    /// Runs the tasks. Pads that flush stop doing so, with `aFlush` all are told to.
    void run_streams(bool aFlush);

    // Pause timer. (SourcePauseTimer.cpp)
    class PauseRequest;
    static gboolean pause_request_fires(GstClock* aClock, GstClockTime aTime, GstClockID aId, gpointer aRequest);
    void set_check_if_paused_timeout();
    void cancel_check_if_paused();

    // Server-only transitions, made up for when the network returns. (SourceNetwork.cpp)
    void network_lost();
    void network_returned();
    bool s_pausedToPlaying();
    bool s_playingToPaused();
    bool s_pausedToReady();
    bool s_readyToNull();

    // Failures. (SourceReports.cpp)
    void network_timeout();
    /// With any locks but leaves. `aWhat` is what failed: "Playing", "Pausing" ...
    void handle_exception(const Player::Exception* aException, const char* aWhat);
    /// Runs the action; what it throws is told and goes no further. Whether it threw nothing.
    bool guarded(const char* aWhat, const std::function<void()>& aAction);
    void resetPlayerLib();

    // Buffering messages, from any thread. (SourceReports.cpp)
    void report_no_data(unsigned int aTrack);
    void report_ok(unsigned int aTrack);
    void report_timed_out(unsigned int aTrack);
    bool is_task_wanted(unsigned int aTrack) const;
    bool have_all_streams_no_data() const;
    void answer_buffering();

    GstElement* const m_element;  ///< Owns this.
    const Messages m_messages;
    Settings m_settings;
    Network m_network;
    PlayerAccess m_player;

    Mutex m_stateMutex;
    bool m_serverPaused = false;     ///< The server was paused while the element is PAUSED.
    bool m_goesToPlaying = false;    ///< The transition was done; the element's state may still be PAUSED.
    bool m_channelChanged = false;   ///< A channel was started while the server was paused: pads flush.
    bool m_networkTimedOut = false;  ///< The player is worn out; rebuilt on PAUSED to READY.
    bool m_seekPending = false;      ///< m_resumePosition was asked for by a seek while the server was paused.
    gint64 m_streamStartTime = -1;   ///< In ns, as the next three; -1 is unknown.
    gint64 m_streamEndTime = -1;
    gint64 m_streamDuration = -1;  ///< -1 is a live stream.
    gint64 m_resumePosition = -1;  ///< Where to resume or seek; -1 is none.
    GstClockID m_checkIfPausedId = nullptr;
    PauseRequest* m_pauseRequest = nullptr;  ///< The clock's, which keeps it for the id.

    mutable Mutex m_streamsMutex;
    /// One entry per track, null where no stream plays it. Changed under m_stateMutex and m_streamsMutex, so
    /// read under either.
    GPtrArray* const m_streams;

    Mutex m_bufferingMutex;
    bool m_buffering = false;            ///< 0 % was posted since the player was made; under m_bufferingMutex.
    bool m_bufferingUnanswered = false;  ///< 0 % was the last that was posted; under m_bufferingMutex.
};

/// What all of `Source` logs to.
GstDebugCategory* SourceCategory();

}  // namespace nsGstVireRtspSrc
