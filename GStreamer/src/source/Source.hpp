#pragma once

#include <gst/gst.h>

#include <atomic>
#include <functional>
#include <string>

#include "messages/BufferingReports.hpp"
#include "messages/Messages.hpp"
#include "settings/ConfigParamKey.hpp"
#include "settings/Options.hpp"
#include "settings/Settings.hpp"
#include "source/Network.hpp"
#include "source/Requests.hpp"
#include "source/Resumption.hpp"
#include "source/Seeking.hpp"
#include "source/StreamList.hpp"
#include "streams/StreamController.hpp"
#include "threads/PlayerAccess.hpp"
#include "threads/ThreadMark.hpp"
#include "threads/Timer.hpp"
#include "threads/Turn.hpp"

namespace nsGstVireRtspSrc {

/// The element's controller: keeps the server's state in step with the pipeline's, owns the player, the
/// settings and one stream per track.
///
/// Threads: the application's (properties, transitions, events), one per stream (status reports), the system
/// clock's (pause timer).
///
/// One thread at a time changes the session: it has the turn, for as long as the server is waited for. State
/// changes wait for their turn. What else the application asks for (a location, a seek, the return of the network)
/// is done at once when the turn is free, and otherwise remembered and done by the thread that has the turn, at the
/// end of it: those calls wait for no other thread. The same goes for calls from handlers of our signals and
/// messages, on the thread that is inside a transition. Messages are posted when the turn is over; events and pads go
/// out during it, but with no lock held.
///
/// Locks, in the order in which they may be taken:
///   1. a task's lock     GStreamer holds it while the task runs. Whoever takes it has paused or stopped the
///                        task before, to wait for the iteration in progress, and holds none.
///   2. BufferingReports  a message is decided on and put in one.
///   3. the player mutex  every call into the library.
///   4. leaves            those inside StreamList (then a stream's status mutex), Requests (then Settings'),
///                        Network, Timer, Outbox, Turn and PlayerAccess. Nothing is waited for under them.
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
    /// Owns the event. Whether something is done for it. (SourceEvents.cpp)
    gboolean handle_event(GstEvent* aEvent);
    /// Whether the pause that has begun leaves nothing to preroll with.
    bool pauses_in_place() const { return profile().pauses_in_place(); }

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

    // The properties of `Options`.
    void set_option(guint aId, const GValue* aValue);
    void get_option(guint aId, GValue* aValue) const { m_options.get(aId, aValue); }

    /// Figures of each track, for people and tools; the caller's. (SourceStats.cpp)
    GstStructure* stats();

    /// Sets whether the network may be used. (SourceNetwork.cpp)
    void set_network_available(int aAvailable);

    // From the streaming threads. (SourceReports.cpp)
    void stream_controller_status(StreamStatus aStatus, unsigned int aTrack) override;
    /// Not where media are gathered: what comes is due in seconds then, and to look for it now and then costs less.
    bool stream_controller_waits() const override { return !m_gathers && m_options.profile().waits_for_media(); }
    void stream_controller_exception(const Player::Exception& aException, unsigned int aTrack) override;
    void stream_controller_peer_failed(GstFlowReturn aResult, unsigned int aTrack) override;

    // From the pads, on any thread. (SourceEvents.cpp)
    bool stream_controller_seek(GstEvent* aSeek) override;
    bool stream_controller_seeking(GstQuery* aQuery) override;

    /// The element lets go of others: no timer may find it any more.
    void element_goes();

private:
    class Transition;
    enum class Change { kLocation, kSeek };

    /// The state that the element is in, or that the running transition got to: the element's own follows later.
    GstState state() const;
    /// Says that the running transition is done as far as the source is concerned.
    void set_state(GstState aState) { m_reached = aState; }

    // Requests, from any thread. (SourceRequests.cpp)
    /// Does what was asked for, or leaves it to who can.
    void heed_requests();
    bool has_requests() const;
    /// With the turn taken: does what was asked for, posts what was said, and gives the turn away.
    void end_turn() noexcept;

    // All that follows is called by the thread that has the turn, where nothing else is said.

    void do_requests();
    void seek(const Seek& aSeek);
    void seek_end(const Seek& aSeek);
    /// What is begun next begins where the seek leads to, if that has to be met.
    void begin_streams_at(const Seek& aSeek) { m_streams.begin_at(aSeek.mAccurate ? aSeek.mPosition : -1); }
    void end(guint32 aSeqnum);
    /// Pauses the server of an element that stayed PAUSED.
    void check_if_paused(GstClockID aId);

    // (SourceTransitions.cpp)
    bool refuse_nested();
    bool may_start(const char* aRefusal);
    /// Connects, describes, sets up, plays; false when there is nothing to play.
    bool start_session();
    /// Plays the location, or the position of a seek, at once when PLAYING or PAUSED; otherwise false.
    bool new_channel(Change aChange = Change::kLocation, const Seek& aSeek = {});
    bool start_channel();
    void resume();
    bool has_more();
    void remember_resume_position();
    /// What belongs to one presentation, or one pause of it.
    void forget_presentation();
    /// Asks the server to go on in that way. A refused seek leaves it paused: then it goes on where it was.
    void go_on(Resumption::Way aWay);
    /// What is played of the location.
    std::string url() const;
    void warn_of_scheme() const;
    void do_go_on(Resumption::Way aWay);
    bool is_live() const { return -1 == m_streamDuration; }
    /// That with which the presentation was started.
    const Profile& profile() const { return *m_profile; }
    void set_check_if_paused_timeout();

    // Streams. (SourceStreams.cpp)
    /// Makes the streams fit the player's tracks. False when no track has one.
    bool configure_streams();
    void remove_changed_streams(unsigned int aTracks);
    void create_missing_streams(unsigned int aTracks);
    Stream* create_stream(unsigned int aTrack);
    /// Reads range and duration; `tell_times` passes them on.
    void read_times();
    void tell_times();
    void delete_all_streams();
    /// Returns when some track has a packet, or none will come.
    void wait_for_packets();
    bool has_packet_or_end();
    bool has_packet();
    /// Has what arrives for tracks without a stream dropped. False, with a warning, when no track has one.
    bool settle_unplayed_tracks();
    void run_streams(bool aFlush, guint32 aSeqnum = 0);

    // Server-only transitions, made up for when the network returns. (SourceNetwork.cpp)
    void network_returned();
    bool s_pausedToPlaying();
    bool s_playingToPaused();
    bool s_pausedToReady();
    bool s_readyToNull();

    // Settings. (Source.cpp)
    /// Hands the player a text under a key of the library's.
    void give(const char* aKey, const std::string& aText);
    /// Has the session's time-outs follow the properties, or not.
    void give_time_outs();
    /// Has what hangs on the profile while nothing is played follow it.
    void change_profile();
    /// Applied to a player that has no settings yet.
    void give_settings();

    // Failures. (SourceReports.cpp)
    void resetPlayerLib();
    /// Called from any thread, as are the operations below.
    void report_timed_out(unsigned int aTrack);
    void network_timeout(bool aFirst);
    /// `aWhat` is what failed: "Playing", "Pausing" ...
    void handle_exception(const Player::Exception* aException, const char* aWhat);
    /// Runs the action; what it throws is reported and goes no further. Returns whether it threw nothing.
    bool guarded(const char* aWhat, const std::function<void()>& aAction);

    GstElement* const m_element;  ///< Owns this.
    Options m_options;
    const Messages m_messages;
    Settings m_settings;
    Network m_network;
    Seeking m_seeking;
    PlayerAccess m_player;
    StreamList m_streams;
    BufferingReports m_buffering;

    Turn m_turn;
    Requests m_requests;
    Timer m_pauseTimer;
    Timer m_requestTimer;  ///< Brings the clock's thread to requests that a streaming thread left.
    std::atomic<GstState> m_reached{GST_STATE_NULL};

    std::atomic<const Profile*> m_profile{&Profile::Named(Profile::kClassic)};

    // Of the thread that has the turn, but for the time-out.
    Resumption m_resumption;
    bool m_goesToPlaying = false;                ///< The transition was done; the element's state may still be PAUSED.
    bool m_channelChanged = false;               ///< A channel was started while the server was paused: pads flush.
    std::atomic<bool> m_gathers{true};           ///< Before playing. From any thread.
    std::atomic<bool> m_networkTimedOut{false};  ///< The player is worn out; rebuilt on PAUSED to READY.
    std::atomic<bool> m_peersFailed{false};      ///< Was posted since the start.
    gint64 m_streamStartTime = -1;               ///< In ns, as the next two; -1 is unknown.
    gint64 m_streamEndTime = -1;
    gint64 m_streamDuration = -1;  ///< -1 is a live stream.
};

/// The turn of a state change, with all that ends it. Does not wait for the own thread: then it is not held.
class Source::Transition {
public:
    explicit Transition(Source& aSource)
        : m_source(aSource), m_mark(aSource.m_element, ThreadMark::Kind::kTransition), m_held(aSource.m_turn.take()) {}
    ~Transition() {
        if (m_held) { m_source.end_turn(); }
    }
    Transition(const Transition&) = delete;
    Transition& operator=(const Transition&) = delete;

    bool held() const { return m_held; }

private:
    Source& m_source;
    const ThreadMark m_mark;
    const bool m_held;
};

}  // namespace nsGstVireRtspSrc
