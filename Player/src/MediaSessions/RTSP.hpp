#pragma once

#include <map>
#include <string>
#include <vector>

#include "MediaSessions/RTSP/Authenticator.hpp"
#include "MediaSessions/RTSP/Configuration.hpp"
#include "MediaSessions/RTSP/Connection.hpp"
#include "MediaSessions/RTSP/Description.hpp"
#include "MediaSessions/RTSP/Headers/ServerFeatures.hpp"
#include "MediaSessions/RTSP/Headers/TransportHeader.hpp"
#include "MediaSessions/RTSP/KeepAlive.hpp"
#include "MediaSessions/RTSP/Messages.hpp"
#include "MediaSessions/RTSP/Refusal.hpp"
#include "MediaSessions/RTSP/Request.hpp"
#include "Player/MediaHandler.hpp"
#include "Player/MediaSession.hpp"
#include "Player/Processor.hpp"
#include "Player/Properties.hpp"
#include "Player/Ptr.hpp"
#include "RTP/Transport.hpp"
#include "RTP/Transports/InterleavedConnection.hpp"

namespace Player::MediaSessions {

/// An RTSP/1.0 client session (RFC 2326) with the 3GPP extensions for pipelined start-up and for switching
/// to another presentation without a new set-up (3GPP TS 26.234 section 5.5).
///
/// The class holds what is known of the presentation and decides what is said when; each concern has its
/// file below RTSP/: connection, messages, request texts, start-up, switching, description, play state,
/// control. A failure throws; the session can be played again afterwards.
class RTSP : public MediaSession, public RTP::Transports::InterleavedConnection {
public:
    RTSP();
    ~RTSP() override;

    void Configure(const Properties& aConfig) override;
    void Play(MediaHandler& aHandler, const std::string& aURL, Time aFrom) override;
    void Seek(MediaHandler& aHandler, Time aTo) override;
    void Pause(MediaHandler& aHandler) override;
    void Resume(MediaHandler& aHandler) override;
    void Stop(MediaHandler& aHandler) override;
    void Close(MediaHandler& aHandler) override;
    bool Fill(UInt aTrack) override;
    bool Fetch(UInt aTrack) override;
    bool Produce(UInt aTrack) override;
    void TakeIn() override;
    SInt MediaDescriptor(UInt aTrack) const override;
    bool MediaWaits() const override { return mMessages.HasFrameReceiver(); }
    Reception TrackReception(UInt aTrack) const override;
    Time RoundTrip() const override;

    // What the transport of interleaved tracks asks of its session.
    bool RecvInterleavedPackets() override { return mMessages.RecvInterleavedPackets(); }
    int Send_RR(const void* aData, UInt aSize) override { return mMessages.Send_RR(aData, aSize); }

private:
    /// A track that is set up; its index is that of the transport's track.
    struct Stream {
        SharedPtr<Properties, SharedObject> mProperties;
        /// Head of the depacketizer chain.
        SharedPtr<Processor, SharedObject> mProcessor;
    };

    /// A state whose high byte is 1 is active: the server was asked to send.
    enum PlayState : UInt { Stopped = 0, Paused = 1, WaitData = 0x100, Buffering = 0x101, Playing = 0x102 };

    /// What became of a step of a start. Of several refusals at once the greatest decides.
    enum class Outcome { Accepted, Refused, MulticastOnly, UDPRefused, Redirected, Asked };
    struct Verdict {
        Outcome mOutcome = Outcome::Accepted;
        Refusal mRefusal;
        /// There is nothing else to try or to say.
        bool IsFinal() const { return mOutcome <= Outcome::Refused; }
    };

    // Start-up (StartUp.cpp).
    /// `Close`, whose failure is reported and goes no further.
    void LeaveServer(MediaHandler& aHandler);
    void DoDescribe(MediaHandler& aHandler);
    /// Asks for the description, and asks elsewhere where the server says so.
    void FetchDescription();
    bool RecvDescribe(Headers& aHeaders, UInt aCSeq);
    void OfferTracks(MediaHandler& aHandler);
    /// Has the handler discard the tracks that it accepted, if any.
    void DiscardTracks(MediaHandler& aHandler);
    /// The chains of all offered tracks that are played.
    std::vector<Stream> BuildChains(MediaHandler& aHandler);
    /// Makes the chain of an offered track: depacketizer and consumer. False when there is none for it, or
    /// the handler refuses the track.
    bool BuildChain(MediaHandler& aHandler, const Properties& aOffered, Stream& aStream);
    void DoPlay(MediaHandler& aHandler, Time aFrom, bool aSwitching);
    void CreateTransport();
    /// Whether media comes within the RTSP connection.
    bool Interleaves() const;
    /// The receive buffer of a track that was added.
    void SetReceiveBuffer(TrackIdx aIdx);
    /// Without a transport nothing plays.
    void ReleaseTransport();
    /// Up to the first refusal. Pipelined, no answer is awaited.
    Outcome SetUpTracks();
    /// What the last refusal, of a SETUP or of a PLAY, leads to.
    Outcome OutcomeOfSetUp() const;
    Outcome OutcomeOfPlay() const;
    /// A refusal of a SETUP need not be the end, whatever it is for.
    bool MayGoOn() const;
    /// Starts anew where that helps, else throws what `aWhat` says and the refusal.
    void GoOn(MediaHandler& aHandler, Time aFrom, const Verdict& aVerdict, const char* aWhat);
    /// Makes the transport's track and its reception.
    void AddTrack(TrackIdx aIdx);
    /// Where else to set up a track after that refusal; empty for nowhere.
    std::string OtherURL(TrackIdx aIdx, UInt aStatus) const;
    /// After a refusal; false when there is no other URL to try, or that is refused, too.
    bool SetUpElsewhere(TrackIdx aIdx);
    /// Where another URL is left to try, no answer is a refusal.
    bool RecvSetupOrSilence(TrackIdx aIdx, Severity aRefused);
    bool RecvSetup(UInt aCSeq, TrackIdx aIdx, Severity aRefused = Severity::Error);
    bool RecvPlay(UInt aCSeq, bool aSwitching);
    void StartPlaying(MediaHandler& aHandler);

    // All requests at once (Pipelined.cpp).
    /// Sends all set-ups and the PLAY before it waits for any answer.
    void DoPipelinedPlay(MediaHandler& aHandler, Time aFrom);
    Verdict RecvPipelinedSetups();
    Outcome OutcomeOfPipelinedSetUp();
    void ReportPipelinedRefusal(bool aIsNews) const;
    /// The same as `GoOn`, with the answer to the PLAY still to come.
    void GoOnPipelined(MediaHandler& aHandler, Time aFrom, Verdict aVerdict);
    /// Takes the answer to the PLAY off the connection. It may bring a newer question.
    void DropPipelinedPlay(Verdict& aVerdict);
    /// Ends what the server plays of a presentation that is not set up whole.
    void EndPipelined();
    /// The same, and throws.
    [[noreturn]] void GiveUpPipelined();

    // To another place (Redirection.cpp).
    /// Where a refusal leads to; empty for nowhere.
    std::string RedirectedTo(const Refusal& aRefusal) const;
    void GoTo(const std::string& aURL, bool aIsClosed);
    /// Ends the session, and makes the whole start where a refusal leads to.
    void StartElsewhere(MediaHandler& aHandler, Time aFrom, const Refusal& aRefusal);

    // To another way for media (FallOver.cpp).
    bool CanFallOver() const { return !Interleaves() && mConfiguration.mTransports.mTCP; }
    /// Whether a refusal to set up a track is about UDP.
    bool IsAboutTransport(UInt aStatus) const;
    /// Starts the same tracks anew over TCP, where they were started last.
    void FallOver(MediaHandler& aHandler, Time aFrom, const char* aReason);
    /// Falls over to TCP when the media that should have come by now have not, or will not.
    void FallOverWhenSilent();
    /// Ends the session, and starts the same tracks with another.
    void StartAnew(MediaHandler& aHandler, Time aFrom);
    /// What comes of the TEARDOWN does not matter.
    void LeaveSession(MediaHandler& aHandler);
    /// Remembers what the refusal of a SETUP says of UDP.
    void NoteRefusedWay();
    /// Whether the server gives multicast where unicast was asked for: that counts as a refusal.
    bool IsRefusedOffer(const TransportHeader& aVars);
    /// Whether the last refusal leaves multicast alone.
    bool IsMulticastOnly() const;
    [[noreturn]] static void ThrowMulticastOnly();

    // Switching to another presentation of the same server (Switch.cpp).
    void FinishSwitch(MediaHandler& aHandler, Time aFrom);
    void SwitchTracks(MediaHandler& aHandler);
    void SwitchTrack(MediaHandler& aHandler, TrackIdx aIdx);

    // What the server says about the presentation (TrackSetUp.cpp).
    void HandleSDP(const Buffer& aBody, const BaseURL& aBase);
    void SetTrackVars(TrackIdx aIdx, const TransportHeader& aVars);
    void HandleRange(const std::string& aValue);
    void HandleRTPInfo(const std::string& aValue);
    void ForgetDescription();
    /// What the packets begin with is to be learnt from them.
    void ForgetBases();
    /// What the packets after a pause begin with is to be learnt from them.
    void LearnAnew();
    /// The tracks that are set up, by what an RTP-Info header names them with.
    std::multimap<std::string, TrackIdx> TracksByKey() const;

    // Play state (PlayState.cpp).
    void EnterState(PlayState aState, const char* aName);
    bool IsActive() const { return 1 == mState >> 8; }
    /// The whole presentation is, not just a part of it.
    bool IsSetUp() const { return 0 != mTracksSetUp && mStreams.size() <= mTracksSetUp; }
    /// The server can, and what is set up is what is to be switched.
    bool CanSwitch() const {
        return !mSessionId.empty() && mServer.mSwitchSupported && IsSetUp() && mStreams.size() == mTracksSetUp;
    }
    /// It has ended, or holds all that it may hold.
    bool GetsNoMore(TrackIdx aIdx);
    /// The track gets no more, and media is left to play: nothing is gained by waiting for data.
    bool HoldsTheRest(TrackIdx aIdx);
    /// Whether the track holds enough to start; also when no more will come.
    bool HasBuffered(TrackIdx aIdx);

    // Pause, resume, seek, teardown and the levels of reset (Control.cpp).
    void DoPause();
    /// Opens the ways for media again; time-outs count from now, however long nothing was asked for.
    void Preflight();
    bool RecvPause(UInt aCSeq);
    void DoResume();
    void DoSeek(MediaHandler& aHandler, Time aTo);
    void DoTeardown(MediaHandler& aHandler, bool aReconnect);
    bool RecvTeardown(UInt aCSeq, bool aReconnect);
    void DoConnectionReset() { mConnection.DoConnectionReset(); }
    void DoCommonReset();
    /// Of another one nothing is known.
    void ForgetServer();
    void DoSessionReset();
    void DoFullReset();

    // A request and what becomes of it (Exchange.cpp).
    void Send(const Request& aRequest, const char* aMethod, const std::string& aURL);
    /// The last request again, with another number.
    void SendAgain(UInt aCSeq);
    void SendLines(std::vector<std::string> aLines);
    /// The response to that request, and if it is the last one: the response to it when it was sent again with
    /// the answer that the server, or the proxy, had asked for.
    /// A refusal in the end is reported at severity `aRefused`.
    bool Receive(Headers& aHeaders, Buffer& aBody, UInt aCSeq, Severity aRefused = Severity::Error);
    bool Receive(Headers& aHeaders, UInt aCSeq, Severity aRefused = Severity::Error);
    /// Sends the last request again and takes the response to it. The server may have closed the connection right after
    /// its question: then the request goes out once more, on another one.
    bool ReceiveAgain(Headers& aHeaders, Buffer& aBody, UInt aCSeq, Severity aRefused);
    /// Whether the last response is missing because the connection ended.
    bool EndedUnanswered() const { return 0 == mMessages.StatusCode() && !mConnection.IsUsable(); }
    /// Who knows the answer to the question that a refusal is; null for another refusal.
    Authenticator* Asked(const Refusal& aRefusal);
    /// Whether a refusal is a question, and the request, sent again, has the answer. `aTries` answers went before.
    bool CanAnswer(const Refusal& aRefusal, UInt aTries);
    /// The server's own name and password, else those that are configured.
    void SetCredentials(const std::string& aURL);

    /// Sends a sign of life when one is due. What comes of it ends nothing.
    void StayAlive();

    // Requests (Requests.cpp): each assembles one and sends it; none waits for the response.
    void SendDescribe();
    void SendSetup(TrackIdx aIdx);
    void SendPlay(Time aFrom, bool aSwitching);
    void SendPlayFrom(Time aFrom);
    void SendPlayOn();
    void SendPause();
    void SendTeardown();
    Request NewRequest(const char* aMethod, const std::string& aURL);
    std::string TransportLine(TrackIdx aIdx) const;

    /// Throws the refusal as `aFunction`: `aWhat`, status, reason.
    [[noreturn]] static void ThrowRefused(const char* aFunction, const char* aWhat, const Refusal& aRefusal);
    /// That of the last response.
    [[noreturn]] void ThrowRefused(const char* aFunction, const char* aWhat) const {
        ThrowRefused(aFunction, aWhat, mMessages.LastRefusal());
    }
    const std::string& URL() const { return mConnection.URL(); }
    /// Where the whole presentation is played, paused and ended.
    const std::string& ControlURL() const { return mControlURL.empty() ? URL() : mControlURL; }
    const Dialect& Speaks() const { return *mConfiguration.mDialect; }

    Configuration mConfiguration;
    Connection mConnection;
    Messages mMessages;

    /// CSeq of the last request sent.
    UInt mCSeq = 0;
    UInt mPipelinedRequests = 0;
    /// The last request.
    struct {
        std::vector<std::string> mLines;
        std::string mMethod;
        /// As it stands in the report.
        std::string mURL;
    } mSent;
    KeepAlive mKeepAlive;
    Authenticator mServerAuthentication;
    Authenticator mProxyAuthentication;

    /// Of the URL that was played last, with its user information.
    std::string mAuthority;
    std::string mControlURL;
    ServerFeatures mServer;
    Description mDescription;

    // What is set up.
    std::string mSessionId;
    std::vector<Stream> mStreams;
    ScopedPtr<RTP::Transport> mTransport;
    /// Tracks that the transport has: fewer than streams after a set-up that failed on the way.
    UInt mTracksAdded = 0;
    /// What this server has said of the ways for media, if only by silence.
    struct {
        bool mUDPFailed = false;
        bool mUDPUnsupported = false;
        bool mOffersMulticast = false;
    } mWays;
    // Of a start.
    /// How often it may still be led to another place.
    UInt mHopsLeft = 0;
    /// How often it was made anew to say who the client is.
    UInt mAnswers = 0;
    /// Media has come over this transport.
    bool mHasMedia = false;
    /// The receive buffer that the system gives was reported.
    bool mBufferReported = false;
    /// Tracks whose set-up the server has accepted.
    UInt mTracksSetUp = 0;
    /// The handler has accepted tracks that it has not discarded.
    bool mHandlerHasTracks = false;

    PlayState mState = Stopped;
    /// When `mState` last changed.
    Time mStateTime;
    /// The moment of that change by the monotonic clock.
    Connection::Clock::time_point mStateSince;
    /// Where playing began last, and for whom.
    Time mFrom;
    MediaHandler* mPlaysFor = nullptr;
};

}  // namespace Player::MediaSessions
