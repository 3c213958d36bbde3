#include "MediaSessions/RTSP/Configuration.hpp"

#include "Player/Assert.hpp"
#include "Player/String.hpp"

namespace Player::MediaSessions {

namespace {

void ReadText(const Properties& aConfig, const char* aKey, std::string& aOut) {
    if (!aConfig.Get(aKey).empty()) { aConfig.Get(aKey, aOut); }
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
}

}  // namespace Player::MediaSessions
