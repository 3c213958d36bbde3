#include "MediaSessions/RTSP/Configuration.hpp"

#include "Player/Assert.hpp"
#include "Player/Report.hpp"
#include "Player/String.hpp"

namespace Player::MediaSessions {

namespace {

void ReadText(const Properties& aConfig, const char* aKey, std::string& aOut) {
    if (!aConfig.Get(aKey).empty()) { aConfig.Get(aKey, aOut); }
}

/// Interleaving was a setting of its own before the ways could be chosen, and still is one.
Transports ReadTransports(const Properties& aConfig, bool aInterleaved, const Dialect& aDialect) {
    const std::string lText = aConfig.Get("RTSP:Transports");
    const Transports lGiven = Transports::Parse(lText);
    if (!lGiven.Empty()) { return lGiven; }
    if (!lText.empty()) {
        Report(__FILE__, __LINE__, Severity::Warning, "No transport in \"%s\", using the default", lText.c_str());
    }
    return aInterleaved ? Transports{false, true} : aDialect.DefaultTransports();
}

void ReadNumber(const Properties& aConfig, const char* aKey, UInt& aOut) {
    aOut = DecimalToUInt(aConfig.Get(aKey), aOut);
}

}  // namespace

Configuration::Configuration(const Properties& aConfig) {
    ReadText(aConfig, "RTSP:UseLocalIP", mUseLocalIP);
    ReadNumber(aConfig, "RTSP:TimeOutAfter", mTimeOutAfter);
    PLAYER_ASSERT(0 != mTimeOutAfter);
    ReadText(aConfig, "RTSP:UseDeviceStr", mUseDeviceStr);
    ReadText(aConfig, "RTSP:UseUserAgentNameStr", mUseUserAgentNameStr);
    ReadText(aConfig, "RTSP:UseUserAgentVersionStr", mUseUserAgentVersionStr);
    ReadText(aConfig, "RTSP:UseProxy", mUseProxy);
    ReadText(aConfig, "RTSP:SendProxyAuth", mSendProxyAuth);
    ReadText(aConfig, "RTSP:SendNetworkType", mSendNetworkType);
    ReadText(aConfig, "RTSP:SendReferrer", mSendReferrer);
    ReadText(aConfig, "RTSP:SendWAPProfile", mSendWAPProfile);
    ReadNumber(aConfig, "RTSP:TargetRTPBuffer", mTargetRTPBuffer);
    ReadNumber(aConfig, "RTSP:UseUDPPortsFrom", mUseUDPPortsFrom);
    mUseUDPPortsFrom &= ~1U;
    PLAYER_ASSERT(mUseUDPPortsFrom < 65536);
    ReadNumber(aConfig, "RTSP:UseUDPPortsTo", mUseUDPPortsTo);
    mUseUDPPortsTo += mUseUDPPortsTo & 1U;
    PLAYER_ASSERT(mUseUDPPortsTo <= 65536 && mUseUDPPortsTo > mUseUDPPortsFrom);
    UInt lTimeOutRTPAfter = 20;
    ReadNumber(aConfig, "RTSP:TimeOutRTPAfter", lTimeOutRTPAfter);
    mTimeOutRTPAfter = Time(lTimeOutRTPAfter, 1);
    mUseInterleavedRTP =
        0 != static_cast<int>(std::strtoll(aConfig.Get("RTSP:UseInterleavedRTP").c_str(), nullptr, 10));
    mDialect = &Dialect::Named(aConfig.Get("RTSP:Profile"));
    ReadText(aConfig, "RTSP:UserName", mUserName);
    ReadText(aConfig, "RTSP:Password", mPassword);
    mTransports = ReadTransports(aConfig, mUseInterleavedRTP, *mDialect);
    ReadNumber(aConfig, "RTSP:UDPBuffer", mUDPBuffer);
    ReadNumber(aConfig, "RTSP:UDPPatience", mUDPPatience);
}

}  // namespace Player::MediaSessions
