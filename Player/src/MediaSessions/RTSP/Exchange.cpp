#include "MediaSessions/RTSP.hpp"

#include <cerrno>

#include "MediaSessions/RTSP/Headers/URLResolution.hpp"
#include "Player/Exception.hpp"
#include "Player/Report.hpp"
#include "Player/String.hpp"

namespace Player::MediaSessions {

namespace {

constexpr UInt kUnauthorized = 0x401;
constexpr UInt kProxyUnauthorized = 0x407;

/// Places of lines in a request.
constexpr std::size_t kCSeqLine = 1;
constexpr std::ptrdiff_t kBehindUserAgent = 3;

std::string CSeqLine(UInt aCSeq) {
    return StringWithFormat("CSeq: %u", aCSeq);
}

/// The URL of a request line "PLAY rtsp://host/clip RTSP/1.0".
std::string URLOf(const std::string& aRequestLine) {
    const std::size_t lBegin = aRequestLine.find(' ') + 1;
    return aRequestLine.substr(lBegin, aRequestLine.rfind(' ') - lBegin);
}

}  // namespace

void RTSP::Send(const Request& aRequest, const char* aMethod, const std::string& aURL) {
    mSent = {aRequest.Lines(), aMethod, aURL};
    SendLines(mSent.mLines);
}

void RTSP::SendAgain(UInt aCSeq) {
    mSent.mLines[kCSeqLine] = CSeqLine(aCSeq);
    SendLines(mSent.mLines);
}

void RTSP::SendLines(std::vector<std::string> aLines) {
    const auto lAdd = [&](const char* aName, Authenticator& aAuthentication) {
        if (!aAuthentication.IsArmed()) { return; }
        const std::string lAnswer = aAuthentication.Answer(mSent.mMethod, URLOf(aLines[0]));
        aLines.insert(aLines.begin() + kBehindUserAgent, std::string(aName) + ": " + lAnswer);
    };
    lAdd("Proxy-Authorization", mProxyAuthentication);
    lAdd("Authorization", mServerAuthentication);

    mMessages.BeginRequest();
    // Nothing that can fail stands between the writing and the sending: half a request would go out with the next.
    Report(__FILE__, __LINE__, Severity::Info, "Sending RTSP %s for URL: %s", mSent.mMethod.c_str(),
           mSent.mURL.c_str());
    mMessages.NotifySent(mSent.mMethod, URLOf(aLines[0]));
    for (const std::string& lLine : aLines) {
        mConnection.WriteLn(lLine);
    }
    mConnection.WriteLn();
    mConnection.Flush();
    mKeepAlive.Sent(Connection::Clock::now());
}

bool RTSP::Receive(Headers& aHeaders, UInt aCSeq, Severity aRefused) {
    Buffer lBody;
    return Receive(aHeaders, lBody, aCSeq, aRefused);
}

bool RTSP::Receive(Headers& aHeaders, Buffer& aBody, UInt aCSeq, Severity aRefused) {
    // Responses to other requests stand between a pipelined one and its repetition.
    const bool lIsLast = mCSeq == aCSeq;
    const bool lMayBeAsked = lIsLast && mServerAuthentication.HasCredentials();
    const Severity lRefused = lMayBeAsked ? Severity::Info : aRefused;
    const auto lReceive = [&](UInt aTries) {
        return aTries > 0 ? ReceiveAgain(aHeaders, aBody, aCSeq, lRefused)
                          : mMessages.RecvResponse(aHeaders, aBody, aCSeq, lRefused);
    };
    for (UInt lTries = 0; !lReceive(lTries); ++lTries) {
        if (!lIsLast || !CanAnswer(mMessages.LastRefusal(), lTries)) {
            if (aRefused != lRefused) { mMessages.ReportRefusal(aRefused); }
            return false;
        }
        if (ClosesConnection(aHeaders)) { DoConnectionReset(); }
        aCSeq = ++mCSeq;
    }
    mKeepAlive.LearnFrom(aHeaders);
    return true;
}

bool RTSP::ReceiveAgain(Headers& aHeaders, Buffer& aBody, UInt aCSeq, Severity aRefused) {
    try {
        SendAgain(aCSeq);
        if (mMessages.RecvResponse(aHeaders, aBody, aCSeq, aRefused)) { return true; }
        if (!EndedUnanswered()) { return false; }
    } catch (const NetworkErr& lLost) {
        if (ECONNRESET != lLost.SystemError() && EPIPE != lLost.SystemError()) { throw; }
    }
    DoConnectionReset();
    SendAgain(aCSeq);
    return mMessages.RecvResponse(aHeaders, aBody, aCSeq, aRefused);
}

Authenticator* RTSP::Asked(const Refusal& aRefusal) {
    if (kProxyUnauthorized == aRefusal.mStatus && !mConfiguration.mUseProxy.empty()) { return &mProxyAuthentication; }
    return kUnauthorized == aRefusal.mStatus ? &mServerAuthentication : nullptr;
}

bool RTSP::CanAnswer(const Refusal& aRefusal, UInt aTries) {
    Authenticator* const lAuthentication = Asked(aRefusal);
    if (nullptr == lAuthentication) { return false; }
    if (!Crypto::IsAvailable() && lAuthentication->HasCredentials()) {
        Report(__FILE__, __LINE__, Severity::Error, "RTSP::CanAnswer(): %s", "Built without GnuTLS: no authentication");
    }
    return lAuthentication->Accept(aRefusal.mChallenges, aTries);
}

void RTSP::SetCredentials(const std::string& aURL) {
    const auto lOr = [](const Player::URL::UserInfo& aFirst, const Player::URL::UserInfo& aSecond) {
        return aFirst == Player::URL::UserInfo() ? aSecond : aFirst;
    };
    const Player::URL::UserInfo lServer =
        lOr(Player::URL::UserInfoOf(aURL), Player::URL::UserInfo{mConfiguration.mUserName, mConfiguration.mPassword});
    mServerAuthentication.SetCredentials(lServer);
    mProxyAuthentication.SetCredentials(lOr(Player::URL::UserInfoOf(mConfiguration.mUseProxy), lServer));
}

}  // namespace Player::MediaSessions
