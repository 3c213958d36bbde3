#include "MediaSessions/RTSP.hpp"
#include "MediaSessions/RTSP/Headers/URLResolution.hpp"
#include "Player/Exception.hpp"
#include "Player/Report.hpp"
#include "Player/URL.hpp"

namespace Player::MediaSessions {

namespace {

/// It goes into every request.
constexpr std::size_t kLongestLocation = 4096;

}  // namespace

std::string RTSP::RedirectedTo(const Refusal& aRefusal) const {
    if (0 == mHopsLeft || !Speaks().IsRedirection(aRefusal.mStatus)) { return std::string(); }
    const std::string lLocation = HeaderValue(aRefusal.mHeaders, "Location");
    if (lLocation.empty() || lLocation.size() > kLongestLocation) { return std::string(); }
    const std::string lURL = Player::URL::WithoutUserInfo(Player::URL::Resolve(URL(), lLocation));
    const bool lIsRTSP = Speaks().IsSecure(lURL) || "rtsp" == Player::URL::Scheme(lURL);
    return lIsRTSP && !Player::URL::Authority(lURL).empty() ? lURL : std::string();
}

void RTSP::GoTo(const std::string& aURL, bool aIsClosed) {
    --mHopsLeft;
    Report(__FILE__, __LINE__, Severity::Info, "Redirected to URL: %s", aURL.c_str());
    const std::string lAuthority = Player::URL::Authority(aURL);
    const bool lIsSecure = Speaks().IsSecure(aURL);
    const bool lWasSecure = mConnection.IsSecure();
    const bool lIsSameHost =
        Speaks().Address(lAuthority, lIsSecure).first == Speaks().Address(mAuthority, lWasSecure).first;
    const bool lIsSameServer = lIsSameHost && lWasSecure == lIsSecure && Player::URL::Authority(URL()) == lAuthority;
    // Name and password are for the host that they were given for, and are not shown where they were secured before.
    if (!lIsSameHost || (lWasSecure && !lIsSecure)) { mServerAuthentication.SetCredentials({}); }
    if (!lIsSameServer) { ForgetServer(); }
    if (!lIsSameServer || aIsClosed) {
        mServerAuthentication.Reset();
        mConnection.SetSecure(lIsSecure);
        mConnection.DoConnect(lAuthority);
    }
    mAuthority = lAuthority;
    mConnection.SetURL(aURL);
}

void RTSP::StartElsewhere(MediaHandler& aHandler, Time aFrom, const Refusal& aRefusal) {
    const std::string lPlace = RedirectedTo(aRefusal);
    const bool lIsClosed = ClosesConnection(aRefusal.mHeaders);
    // With its connection a server that sends its clients away has left the session, too.
    if (lIsClosed) { mSessionId.clear(); }
    LeaveSession(aHandler);
    ForgetDescription();
    mControlURL.clear();
    GoTo(lPlace, lIsClosed);
    DoDescribe(aHandler);
    DoPlay(aHandler, aFrom, false);
}

}  // namespace Player::MediaSessions
