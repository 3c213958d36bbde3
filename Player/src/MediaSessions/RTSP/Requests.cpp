#include <cstdlib>

#include "MediaSessions/RTSP.hpp"
#include "Player/Exception.hpp"
#include "Player/Report.hpp"
#include "Player/String.hpp"

namespace Player::MediaSessions {

namespace {

constexpr char kRequirePipelined[] = "Require: 3gpp-pipelined";

std::string PipelinedRequestsLine(UInt aNumber) {
    return StringWithFormat("Pipelined-Requests: %08u", aNumber);
}

std::string SessionLine(const std::string& aSessionId) {
    return "Session: " + aSessionId;
}

}  // namespace

Request RTSP::NewRequest(const char* aMethod, const std::string& aURL) {
    return Request(aMethod, aURL, ++mCSeq, mConfiguration);
}

void RTSP::SendDescribe() {
    Request lRequest = NewRequest("DESCRIBE", URL());
    lRequest.Line("Supported: 3gpp-pipelined, 3gpp-switch-req-sdp");
    lRequest.Line("Accept: application/sdp");
    const bool lIsAnswered = mProxyAuthentication.IsArmed();
    if (!mConfiguration.mUseProxy.empty() && !lIsAnswered) {
        lRequest.Optional("Proxy-Authorization", mConfiguration.mSendProxyAuth);
    }
    Send(lRequest, "DESCRIBE", URL());
}

void RTSP::AddTrack(TrackIdx aIdx) {
    const Stream& lStream = mStreams[aIdx];
    const TrackIdx lIdx = mTransport->AddTrack();
    PLAYER_ASSERT(lIdx == aIdx);
    ++mTracksAdded;
    mTransport->SetTrackRemoteIP(lIdx, mConnection.ServerAddress().HostAsString(true));

    RTP::Stack& lStack = mTransport->ModifyTrackRTPStack(aIdx);
    lStack.SetExpectedPT(static_cast<unsigned char>(DecimalToUInt(lStream.mProperties->Get("PayloadType"))));
    lStack.SetLocalSSRC(static_cast<UInt>(std::rand()));
    lStack.SetTimeRes(DecimalToUInt(lStream.mProperties->Get("TimeRes")));
    lStack.SetTimeoutTime(mConfiguration.mTimeOutRTPAfter);
    mTransport->AttachTrack(aIdx, lStream.mProcessor);
    SetReceiveBuffer(aIdx);
    // From now on the system keeps what it learns of the server's ports.
    if (CanFallOver()) { mTransport->IsRefused(); }
}

void RTSP::SendSetup(TrackIdx aIdx) {
    const std::string lURL = mStreams[aIdx].mProperties->Get("URL");
    Request lRequest = NewRequest("SETUP", lURL);
    lRequest.Optional("Session", mSessionId);
    if (mServer.mPipelined) {
        // All set-ups of a presentation bear one number, new with its first track.
        if (0 == aIdx) {
            ++mPipelinedRequests;
        } else {
            lRequest.Line(kRequirePipelined);
        }
        lRequest.Line(PipelinedRequestsLine(mPipelinedRequests));
    }
    lRequest.Line(TransportLine(aIdx));
    Send(lRequest, "SETUP", lURL);
}

std::string RTSP::TransportLine(TrackIdx aIdx) const {
    if (mMessages.HasFrameReceiver()) {
        return StringWithFormat("Transport: %s;%s;interleaved=%u-%u", "RTP/AVP/TCP", "unicast", 2 * aIdx, 2 * aIdx + 1);
    }
    return StringWithFormat("Transport: %s;%s;client_port=%s", "RTP/AVP", "unicast",
                            mTransport->GetTrackLocalPorts(aIdx).c_str());
}

void RTSP::SendPlay(Time aFrom, bool aSwitching) {
    Request lRequest = NewRequest("PLAY", ControlURL());
    if (!mServer.mPipelined || aSwitching) {
        lRequest.Line(SessionLine(mSessionId));
        if (aSwitching) { lRequest.Line("Require: 3gpp-switch-req-sdp").Line("SDP-Requested: 1"); }
    } else {
        // The number lets the server bind the PLAY to set-ups that it has not answered yet.
        lRequest.Line(kRequirePipelined).Line(PipelinedRequestsLine(mPipelinedRequests));
    }
    lRequest.RangeFrom(aFrom);
    Send(lRequest, "PLAY", ControlURL());
}

void RTSP::SendPlayFrom(Time aFrom) {
    Request lRequest = NewRequest("PLAY", ControlURL());
    lRequest.Line(SessionLine(mSessionId)).RangeFrom(aFrom);
    Send(lRequest, "PLAY", ControlURL());
}

void RTSP::SendPlayOn() {
    Request lRequest = NewRequest("PLAY", ControlURL());
    lRequest.Line(SessionLine(mSessionId));
    Send(lRequest, "PLAY", ControlURL());
}

void RTSP::SendPause() {
    Request lRequest = NewRequest("PAUSE", ControlURL());
    lRequest.Line(SessionLine(mSessionId));
    Send(lRequest, "PAUSE", ControlURL());
}

void RTSP::StayAlive() {
    if (!Speaks().KeepsAlive() || Stopped == mState || mSessionId.empty()) { return; }
    const Connection::Clock::time_point lNow = Connection::Clock::now();
    if (!mKeepAlive.IsDue(lNow)) { return; }
    mKeepAlive.Sent(lNow);
    try {
        mMessages.DropUnawaited();
        // A nonce that has grown old is found out by no other request for hours.
        CanAnswer(mMessages.TakeUnawaitedRefusal(), 0);
        // Media may well go on without it.
        if (!mConnection.IsUsable()) { return; }
        const char* const lMethod = mKeepAlive.Method();
        Request lRequest = NewRequest(lMethod, ControlURL());
        lRequest.Line(SessionLine(mSessionId));
        Send(lRequest, lMethod, ControlURL());
        mMessages.LeaveUnanswered(mCSeq);
    } catch (const Exception& lException) {
        Report(__FILE__, __LINE__, Severity::Info, "The session could not be kept alive: %s", lException.Message());
    }
}

void RTSP::SendTeardown() {
    Request lRequest = NewRequest("TEARDOWN", ControlURL());
    lRequest.Line(SessionLine(mSessionId));
    // The blank ends this one report only.
    Send(lRequest, "TEARDOWN", ControlURL() + " ");
}

}  // namespace Player::MediaSessions
