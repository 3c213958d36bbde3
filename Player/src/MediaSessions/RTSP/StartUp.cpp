#include "MediaSessions/RTSP.hpp"
#include "Player/String.hpp"
#include "Player/URL.hpp"
#include "RTP/Transports/OverRTSP.hpp"
#include "RTP/Transports/OverUDP.hpp"
#include "Throw.hpp"

namespace Player::MediaSessions {

namespace {

/// As many as there are pairs of interleaved channels, of one byte each; over UDP each takes two descriptors.
constexpr std::size_t kMostTracks = 128;

/// Redirections that are followed in one start.
constexpr UInt kMostRedirections = 5;

/// "404 Not Found"
constexpr UInt kUnknownURL = 0x404;
/// What a request has for a status that got no answer.
constexpr UInt kUnanswered = 0;
/// "302 Found"
constexpr UInt kFound = 0x302;

}  // namespace

void RTSP::Play(MediaHandler& aHandler, const std::string& aURL, Time aFrom) {
    const Messages::Listening lListening(mMessages, aHandler);
    const std::string lAuthority = Player::URL::Authority(aURL);
    const std::string lURL = Player::URL::WithoutUserInfo(aURL);
    const bool lIsSecure = Speaks().IsSecure(aURL);
    if (URL().empty() || mAuthority != lAuthority || mConnection.IsSecure() != lIsSecure) {
        LeaveServer(aHandler);
        mServerAuthentication.Reset();
        mConnection.SetSecure(lIsSecure);
        mConnection.DoConnect(lAuthority);
    } else if (mSessionId.empty()) {
        // What is described belongs to the URL that it was fetched for, and its tracks went with their session.
        if (URL() != lURL || mStreams.empty()) { ForgetDescription(); }
    } else if (!CanSwitch()) {
        DoTeardown(aHandler, true);
        ForgetDescription();
    }
    if (URL() != lURL) { mControlURL.clear(); }
    mConnection.SetURL(lURL);
    mAuthority = lAuthority;
    SetCredentials(aURL);
    mPlaysFor = &aHandler;
    mHopsLeft = kMostRedirections;
    mAnswers = 0;

    if (mDescription.mTrackProperties.empty()) { DoDescribe(aHandler); }
    DoPlay(aHandler, aFrom, CanSwitch());
}

void RTSP::LeaveServer(MediaHandler& aHandler) {
    try {
        Close(aHandler);
    } catch (const Exception& lException) {
        // The way to the next server must not depend on the last one.
        Report(__FILE__, __LINE__, Severity::Warning, "Left the RTSP server without its answer: %s",
               lException.Message());
    }
}

void RTSP::DoDescribe(MediaHandler& aHandler) {
    mStreams.clear();
    FetchDescription();
    try {
        OfferTracks(aHandler);
        mStreams = BuildChains(aHandler);
    } catch (...) {
        // Half a presentation is none.
        DiscardTracks(aHandler);
        ForgetDescription();
        throw;
    }
}

std::vector<RTSP::Stream> RTSP::BuildChains(MediaHandler& aHandler) {
    std::vector<Stream> lStreams;
    for (const auto& lOffered : mDescription.mTrackProperties) {
        if (kMostTracks == lStreams.size()) {
            Report(__FILE__, __LINE__, Severity::Warning, "RTSP::DoDescribe(): %s", "Too many tracks");
            break;
        }
        Stream lStream;
        if (BuildChain(aHandler, *lOffered, lStream)) { lStreams.push_back(lStream); }
    }
    return lStreams;
}

void RTSP::FetchDescription() {
    for (Headers lHeaders;; lHeaders.clear()) {
        SendDescribe();
        if (RecvDescribe(lHeaders, mCSeq)) { return; }
        const std::string lPlace = RedirectedTo(mMessages.LastRefusal());
        if (lPlace.empty()) { break; }
        GoTo(lPlace, ClosesConnection(lHeaders));
    }
    const Refusal lRefusal = mMessages.LastRefusal();
    if (ClosesConnection(lRefusal.mHeaders)) { DoFullReset(); }
    ThrowRefused("DoDescribe", "DESCRIBE failed", lRefusal);
}

bool RTSP::RecvDescribe(Headers& aHeaders, UInt aCSeq) {
    Buffer lBody;
    if (!Receive(aHeaders, lBody, aCSeq)) { return false; }
    // What would be sent before its end is seen would be lost.
    if (Speaks().HeedsClose() && ClosesConnection(aHeaders)) { DoConnectionReset(); }
    mServer = mServer.With(aHeaders);
    if (0 != aHeaders.count("Server")) {
        Report(__FILE__, __LINE__, Severity::Info, "RTSP server: %s", aHeaders["Server"].c_str());
    }
    HandleSDP(lBody, Speaks().Base(URL(), aHeaders));
    return true;
}

void RTSP::OfferTracks(MediaHandler& aHandler) {
    DiscardTracks(aHandler);
    aHandler.SelectTracks(mDescription.mSessionProperties, mDescription.mTrackProperties);
    aHandler.AvailableRange(mDescription.mAvailableStart, mDescription.mAvailableEnd);
}

void RTSP::DiscardTracks(MediaHandler& aHandler) {
    if (mHandlerHasTracks) { aHandler.Reset(); }
    mHandlerHasTracks = false;
}

bool RTSP::BuildChain(MediaHandler& aHandler, const Properties& aOffered, Stream& aStream) {
    aStream.mProperties.Set(new Properties(aOffered));
    aStream.mProcessor = Speaks().CreateDepacketizer(*aStream.mProperties);
    if (!aStream.mProcessor) { return false; }
    const SharedPtr<Processor, SharedObject> lConsumer = aHandler.AcceptTrack(aStream.mProperties);
    if (!lConsumer) { return false; }
    mHandlerHasTracks = true;
    aStream.mProcessor->Attach(lConsumer);
    return true;
}

void RTSP::DoPlay(MediaHandler& aHandler, Time aFrom, bool aSwitching) {
    if (mStreams.empty()) { return; }
    mFrom = aFrom;
    if (!aSwitching) {
        CreateTransport();
        if (mServer.mPipelined) { return DoPipelinedPlay(aHandler, aFrom); }
        const Outcome lOutcome = SetUpTracks();
        if (Outcome::Accepted != lOutcome) {
            return GoOn(aHandler, aFrom, {lOutcome, mMessages.LastRefusal()}, "SETUP failed");
        }
    }
    if (!mServer.mPipelined) { mTransport->Preflight(); }
    SendPlay(aFrom, aSwitching);
    if (aSwitching) { return FinishSwitch(aHandler, aFrom); }
    {
        Messages::HoldingFrames lEarly(mMessages, Speaks().KeepsEarlyMedia());
        if (RecvPlay(mCSeq, false)) {
            StartPlaying(aHandler);
            return lEarly.Release();
        }
    }
    GoOn(aHandler, aFrom, {OutcomeOfPlay(), mMessages.LastRefusal()}, "PLAY failed");
}

void RTSP::GoOn(MediaHandler& aHandler, Time aFrom, const Verdict& aVerdict, const char* aWhat) {
    switch (aVerdict.mOutcome) {
        case Outcome::UDPRefused: return FallOver(aHandler, aFrom, "the server refuses UDP");
        case Outcome::Redirected: return StartElsewhere(aHandler, aFrom, aVerdict.mRefusal);
        case Outcome::MulticastOnly: ThrowMulticastOnly();
        default: ThrowRefused("DoPlay", aWhat, aVerdict.mRefusal);
    }
}

RTSP::Outcome RTSP::OutcomeOfSetUp() const {
    if (Outcome::Redirected == OutcomeOfPlay()) { return Outcome::Redirected; }
    if (CanFallOver() && IsAboutTransport(mMessages.StatusCode())) { return Outcome::UDPRefused; }
    return IsMulticastOnly() ? Outcome::MulticastOnly : Outcome::Refused;
}

RTSP::Outcome RTSP::OutcomeOfPlay() const {
    return RedirectedTo(mMessages.LastRefusal()).empty() ? Outcome::Refused : Outcome::Redirected;
}

void RTSP::CreateTransport() {
    ReleaseTransport();
    if (Interleaves()) {
        auto* const lTransport = new RTP::Transports::OverRTSP(this);
        mTransport.Set(lTransport);
        mMessages.SetFrameReceiver(lTransport);
    } else {
        mTransport.Set(new RTP::Transports::OverUDP(mConfiguration.mUseUDPPortsFrom, mConfiguration.mUseUDPPortsTo,
                                                    mConfiguration.mUseLocalIP, mConnection.ServerAddress().Family()));
    }
    if (0 != mConfiguration.mQueueLimit) { mTransport->LimitQueues(std::size_t{mConfiguration.mQueueLimit} << 20); }
}

bool RTSP::Interleaves() const {
    const Transports& lWays = mConfiguration.mTransports;
    // Who asked for a secured connection expects that of the media as well.
    return !lWays.mUDP || (lWays.mTCP && (mWays.mUDPFailed || mConnection.IsSecure()));
}

void RTSP::ReleaseTransport() {
    EnterState(Stopped, "Stopped");
    mMessages.SetFrameReceiver(nullptr);
    mTransport.Set(nullptr);
    mTracksAdded = 0;
    mHasMedia = false;
    mTracksSetUp = 0;
}

RTSP::Outcome RTSP::SetUpTracks() {
    for (TrackIdx lIdx = 0; lIdx < mStreams.size(); ++lIdx) {
        AddTrack(lIdx);
        // A refusal that another try may mend is none yet. Found out before the request goes, of which the answer must
        // be read.
        const bool lMayGoOn = MayGoOn() || !OtherURL(lIdx, kUnknownURL).empty();
        const Severity lRefused = lMayGoOn ? Severity::Info : Severity::Error;
        SendSetup(lIdx);
        if (mServer.mPipelined || RecvSetupOrSilence(lIdx, lRefused) || SetUpElsewhere(lIdx)) { continue; }
        const Outcome lOutcome = OutcomeOfSetUp();
        if (Outcome::Refused == lOutcome && lMayGoOn) { mMessages.ReportRefusal(Severity::Error); }
        return lOutcome;
    }
    return Outcome::Accepted;
}

bool RTSP::MayGoOn() const {
    return CanFallOver() || Speaks().IsRedirection(kFound);
}

bool RTSP::RecvSetupOrSilence(TrackIdx aIdx, Severity aRefused) {
    try {
        return RecvSetup(mCSeq, aIdx, aRefused);
    } catch (const NetworkErr&) {
        // Some servers fall silent, or fall over, at a URL that they do not know.
        if (OtherURL(aIdx, kUnanswered).empty()) { throw; }
        DoConnectionReset();
        mMessages.SetUnanswered();
        return false;
    }
}

std::string RTSP::OtherURL(TrackIdx aIdx, UInt aStatus) const {
    const Properties& lTrack = *mStreams[aIdx].mProperties;
    const std::string lOther = Speaks().OtherTrackURL(aStatus, mDescription.mBase, lTrack.Get("Id"));
    return lTrack.Is("URL", lOther) ? std::string() : lOther;
}

bool RTSP::SetUpElsewhere(TrackIdx aIdx) {
    const std::string lOther = OtherURL(aIdx, mMessages.StatusCode());
    if (lOther.empty()) { return false; }
    mStreams[aIdx].mProperties->Insert("URL", lOther);
    SendSetup(aIdx);
    return RecvSetup(mCSeq, aIdx, Severity::Info);
}

bool RTSP::RecvSetup(UInt aCSeq, TrackIdx aIdx, Severity aRefused) {
    Headers lHeaders;
    if (!Receive(lHeaders, aCSeq, aRefused)) {
        // Another try must not be lost with the connection; but there may be answers left to read.
        const bool lIsTriedAgain = !mServer.mPipelined && (Severity::Error != aRefused || CanFallOver());
        if (lIsTriedAgain && ClosesConnection(lHeaders)) { DoConnectionReset(); }
        NoteRefusedWay();
        return false;
    }
    if (mSessionId.empty()) {
        if (0 == lHeaders.count("Session")) {
            PLAYER_THROW(RTSPErr, ErrorCode::kMalformed, "RTSP::RecvSetup(): %s: %s", "Invalid SETUP response",
                         "Session missing");
        }
        const std::string& lSession = lHeaders["Session"];
        mSessionId = lSession.substr(0, lSession.find(';'));
        if (Speaks().UnfoldsHeaders()) { mSessionId = Trimmed(mSessionId); }
    }
    const TransportHeader lVars = TransportHeader::Parse(HeaderValue(lHeaders, "Transport"));
    if (IsRefusedOffer(lVars)) { return false; }
    SetTrackVars(aIdx, lVars);
    ++mTracksSetUp;
    return true;
}

bool RTSP::RecvPlay(UInt aCSeq, bool aSwitching) {
    Headers lHeaders;
    Buffer lBody;
    if (!Receive(lHeaders, lBody, aCSeq)) { return false; }
    if (aSwitching) { HandleSDP(lBody, {URL() + "/"}); }
    if (Speaks().NeedsRTPInfo() && 0 == lHeaders.count("RTP-Info")) {
        PLAYER_THROW(RTSPErr, ErrorCode::kMalformed, "RTSP::RecvPlay(): %s: %s", "Invalid PLAY response",
                     "RTP-Info missing");
    }
    if (!Speaks().NeedsRTPInfo()) { ForgetBases(); }
    HandleRTPInfo(lHeaders["RTP-Info"]);
    mTransport->Flush();
    if (0 != lHeaders.count("Range")) { HandleRange(lHeaders["Range"]); }
    return true;
}

void RTSP::StartPlaying(MediaHandler& aHandler) {
    // Who watches one presentation is not led to another.
    mHopsLeft = 0;
    mAnswers = 0;
    aHandler.PlayingRange(mDescription.mPlayingStart, mDescription.mPlayingEnd);
    EnterState(WaitData, "WaitData");
}

}  // namespace Player::MediaSessions
