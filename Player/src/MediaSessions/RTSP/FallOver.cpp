#include "MediaSessions/RTSP.hpp"
#include "Throw.hpp"

namespace Player::MediaSessions {

namespace {

/// These refuse who asks, or what for; any other way would be refused as well.
constexpr UInt kNotAboutTransport[] = {0x401, 0x402, 0x403, 0x404, 0x407, 0x408, 0x453, 0x454};

constexpr UInt kUnsupportedTransport = 0x461;

}  // namespace

bool RTSP::IsAboutTransport(UInt aStatus) const {
    for (const UInt lOther : kNotAboutTransport) {
        if (lOther == aStatus) { return false; }
    }
    return 4 == aStatus >> 8;
}

void RTSP::FallOver(MediaHandler& aHandler, Time aFrom, const char* aReason) {
    Report(__FILE__, __LINE__, Severity::Warning, "No media over UDP, %s: over TCP now", aReason);
    mWays.mUDPFailed = true;
    StartAnew(aHandler, aFrom);
}

void RTSP::StartAnew(MediaHandler& aHandler, Time aFrom) {
    // What is described has not changed, and the handler keeps its tracks.
    const std::vector<Stream> lStreams = mStreams;
    LeaveSession(aHandler);
    mStreams = lStreams;
    DoPlay(aHandler, aFrom, false);
}

void RTSP::LeaveSession(MediaHandler& aHandler) {
    try {
        if (!mSessionId.empty()) { DoTeardown(aHandler, true); }
    } catch (const Exception& lException) {
        Report(__FILE__, __LINE__, Severity::Info, "Left the session without the server's answer: %s",
               lException.Message());
    }
    DoSessionReset();
}

void RTSP::NoteRefusedWay() {
    if (!Interleaves() && kUnsupportedTransport == mMessages.StatusCode()) { mWays.mUDPUnsupported = true; }
}

bool RTSP::IsRefusedOffer(const TransportHeader& aVars) {
    if (!aVars.mIsMulticast || !Speaks().RefusesMulticast()) { return false; }
    mWays.mOffersMulticast = true;
    mMessages.SetRefused(kUnsupportedTransport, "Multicast Only");
    return true;
}

bool RTSP::IsMulticastOnly() const {
    return Speaks().RefusesMulticast() && kUnsupportedTransport == mMessages.StatusCode() &&
           (mWays.mOffersMulticast || (Interleaves() && mWays.mUDPUnsupported));
}

void RTSP::ThrowMulticastOnly() {
    PLAYER_THROW(RTSPErr, ErrorCode::kMulticastOnly, "RTSP::DoPlay(): %s",
                 "The server offers multicast only, which is not supported");
}

void RTSP::FallOverWhenSilent() {
    if (WaitData != mState || mHasMedia || !CanFallOver() || nullptr == mPlaysFor) { return; }
    if (mTransport->IsRefused()) { return FallOver(*mPlaysFor, mFrom, "the server's port is closed"); }
    const std::chrono::milliseconds lPatience(mConfiguration.mUDPPatience);
    if (Connection::Clock::now() - mStateSince > lPatience) { FallOver(*mPlaysFor, mFrom, "nothing has come"); }
}

void RTSP::SetReceiveBuffer(TrackIdx aIdx) {
    const std::string lType = mStreams[aIdx].mProperties->Get("MediaType");
    const UInt lUsual = Classic().UDPBuffer(lType);
    const UInt lWanted = 0 != mConfiguration.mUDPBuffer ? mConfiguration.mUDPBuffer : Speaks().UDPBuffer(lType);
    if (lWanted == lUsual) { return; }
    const UInt lGiven = mTransport->SetTrackReceiveBuffer(aIdx, lWanted);
    if (0 == lGiven || lGiven >= lWanted || mBufferReported) { return; }
    mBufferReported = true;
    Report(__FILE__, __LINE__, Severity::Warning, "The system gives a receive buffer of %u bytes instead of %u", lGiven,
           lWanted);
}

}  // namespace Player::MediaSessions
