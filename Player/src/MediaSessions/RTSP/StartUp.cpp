#include "MediaSessions/RTSP.hpp"
#include "MediaSessions/RTSP/Headers/URLResolution.hpp"
#include "Player/String.hpp"
#include "Player/URL.hpp"
#include "RTP/Transports/OverRTSP.hpp"
#include "RTP/Transports/OverUDP.hpp"
#include "Throw.hpp"

namespace Player::MediaSessions {

namespace {

/// As many as there are pairs of interleaved channels, of one byte each; over UDP each takes two descriptors.
constexpr std::size_t kMostTracks = 128;

/// From one place to the next.
constexpr UInt kMostRedirections = 5;

/// "404 Not Found"
constexpr UInt kUnknownURL = 0x404;
/// What a request has for a status that got no answer.
constexpr UInt kUnanswered = 0;

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
    for (UInt lHops = 0;; ++lHops) {
        SendDescribe();
        Headers lHeaders;
        if (RecvDescribe(lHeaders, mCSeq)) { return; }
        const bool lGoesOn =
            lHops < kMostRedirections && Speaks().IsRedirection(mMessages.StatusCode()) && GoTo(lHeaders);
        if (!lGoesOn && ClosesConnection(lHeaders)) { DoFullReset(); }
        if (!lGoesOn) { ThrowRefused("DoDescribe", "DESCRIBE failed"); }
    }
}

bool RTSP::GoTo(const Headers& aHeaders) {
    const std::string lLocation = HeaderValue(aHeaders, "Location");
    if (lLocation.empty()) { return false; }
    const std::string lURL = Player::URL::WithoutUserInfo(Player::URL::Resolve(URL(), lLocation));
    const std::string lAuthority = Player::URL::Authority(lURL);
    const bool lIsSecure = Speaks().IsSecure(lURL);
    if (lAuthority.empty() || (!lIsSecure && "rtsp" != Player::URL::Scheme(lURL))) { return false; }
    Report(__FILE__, __LINE__, Severity::Info, "Redirected to URL: %s", lURL.c_str());
    const bool lWasSecure = mConnection.IsSecure();
    const bool lIsSameHost =
        Speaks().Address(lAuthority, lIsSecure).first == Speaks().Address(mAuthority, lWasSecure).first;
    // Name and password are for the host that they were given for, and are not shown where they were secured before.
    if (!lIsSameHost || (lWasSecure && !lIsSecure)) { mServerAuthentication.SetCredentials({}); }
    if (!lIsSameHost || lWasSecure != lIsSecure || ClosesConnection(aHeaders) ||
        Player::URL::Authority(URL()) != lAuthority) {
        mServerAuthentication.Reset();
        mConnection.SetSecure(lIsSecure);
        mConnection.DoConnect(lAuthority);
    }
    mAuthority = lAuthority;
    mConnection.SetURL(lURL);
    return true;
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
        if (!SetUpTracks()) { return FallOver(aHandler, aFrom, "the server refuses UDP"); }
    }
    if (!mServer.mPipelined) { mTransport->Preflight(); }
    SendPlay(aFrom, aSwitching);
    if (aSwitching) { return FinishSwitch(aHandler, aFrom); }
    Messages::HoldingFrames lEarly(mMessages, Speaks().KeepsEarlyMedia());
    if (!RecvPlay(mCSeq, false)) { ThrowRefused("DoPlay", "PLAY failed"); }
    StartPlaying(aHandler);
    lEarly.Release();
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
    return !lWays.mUDP || (lWays.mTCP && (mUDPFailed || mConnection.IsSecure()));
}

void RTSP::ReleaseTransport() {
    EnterState(Stopped, "Stopped");
    mMessages.SetFrameReceiver(nullptr);
    mTransport.Set(nullptr);
    mTracksAdded = 0;
    mHasMedia = false;
    mTracksSetUp = 0;
}

bool RTSP::SetUpTracks() {
    for (TrackIdx lIdx = 0; lIdx < mStreams.size(); ++lIdx) {
        AddTrack(lIdx);
        // A refusal that another try may mend is none yet. Found out before the request goes, of which the answer must
        // be read.
        const Severity lRefused =
            CanFallOver() || !OtherURL(lIdx, kUnknownURL).empty() ? Severity::Info : Severity::Error;
        SendSetup(lIdx);
        if (mServer.mPipelined || RecvSetupOrSilence(lIdx, lRefused) || SetUpElsewhere(lIdx)) { continue; }
        if (CanFallOver() && IsAboutTransport(mMessages.StatusCode())) { return false; }
        if (Severity::Error != lRefused) { mMessages.ReportRefusal(Severity::Error); }
        ThrowRefused("DoPlay", "SETUP failed");
    }
    return true;
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
    const std::string lOther =
        Speaks().OtherTrackURL(aStatus, mDescription.mSessionProperties->Get("URL"), lTrack.Get("Id"));
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
        // Another try must not be lost with the connection.
        const bool lIsTriedAgain = Severity::Error != aRefused || CanFallOver();
        if (lIsTriedAgain && ClosesConnection(lHeaders)) { DoConnectionReset(); }
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
    if (0 != lHeaders.count("Transport")) { HandleTrackVars(aIdx, lHeaders["Transport"]); }
    ++mTracksSetUp;
    return true;
}

bool RTSP::RecvPlay(UInt aCSeq, bool aSwitching) {
    Headers lHeaders;
    Buffer lBody;
    if (!Receive(lHeaders, lBody, aCSeq)) { return false; }
    if (aSwitching) { HandleSDP(lBody, URL() + "/"); }
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

void RTSP::DoPipelinedPlay(MediaHandler& aHandler, Time aFrom) {
    bool lAllSetUp = true;
    bool lIsUDPRefused = false;
    try {
        SetUpTracks();
        SendPlay(aFrom, false);
        lAllSetUp = RecvPipelinedSetups(lIsUDPRefused);
        if (!lIsUDPRefused) { mTransport->Preflight(); }
    } catch (...) {
        // Answers that are still to come would be taken for those to later requests.
        DoConnectionReset();
        throw;
    }
    if (lIsUDPRefused) {
        // Whether it plays a part of the presentation does not matter any more.
        Headers lHeaders;
        Receive(lHeaders, mCSeq, Severity::Info);
        return FallOver(aHandler, aFrom, "the server refuses UDP");
    }
    if (!RecvPlay(mCSeq, false)) { ThrowRefused("DoPlay", "Pipelined PLAY failed"); }
    if (!lAllSetUp) { GiveUpPipelined(); }
    StartPlaying(aHandler);
}

bool RTSP::RecvPipelinedSetups(bool& aIsUDPRefused) {
    const UInt lTracks = static_cast<UInt>(mStreams.size());
    bool lAllSetUp = true;
    for (TrackIdx lIdx = 0; lIdx < lTracks; ++lIdx) {
        const Severity lRefused = CanFallOver() ? Severity::Info : Severity::Error;
        if (RecvSetup(mCSeq - lTracks + lIdx, lIdx, lRefused)) { continue; }
        lAllSetUp = false;
        if (CanFallOver() && IsAboutTransport(mMessages.StatusCode())) {
            aIsUDPRefused = true;
            continue;
        }
        if (Severity::Error != lRefused) { mMessages.ReportRefusal(Severity::Error); }
        Report(__FILE__, __LINE__, Severity::Error, "RTSP::DoPlay(): %s: %03x %s", "Pipelined SETUP failed",
               mMessages.StatusCode(), mMessages.StatusText().c_str());
    }
    return lAllSetUp;
}

void RTSP::GiveUpPipelined() {
    constexpr char kWords[] = "One or more pipelined SETUP requests failed";
    Report(__FILE__, __LINE__, Severity::Error, "RTSP::DoPlay(): %s", kWords);
    if (!mSessionId.empty()) {
        try {
            SendTeardown();
            RecvTeardown(mCSeq, false);
        } catch (...) {
            // The caller learns why nothing is played. What is still set up is torn down before the next presentation.
        }
    }
    throw RTSPErr(ErrorCode::kPipelinedSetUpFailed, "RTSP::DoPlay(): %s", kWords);
}

void RTSP::StartPlaying(MediaHandler& aHandler) {
    aHandler.PlayingRange(mDescription.mPlayingStart, mDescription.mPlayingEnd);
    EnterState(WaitData, "WaitData");
}

}  // namespace Player::MediaSessions
