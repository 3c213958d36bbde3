#include "MediaSessions/RTSP/Configuration.hpp"

#include "Player/Assert.hpp"
#include "Player/Keys.hpp"
#include "Player/Report.hpp"
#include "Player/String.hpp"

namespace Player::MediaSessions {

namespace {

void ReadText(const Properties& aConfig, const char* aKey, std::string& aOut) {
    if (!aConfig.Get(aKey).empty()) { aConfig.Get(aKey, aOut); }
}

/// Interleaving was a setting of its own before the ways could be chosen, and still is one.
Transports ReadTransports(const Properties& aConfig, bool aInterleaved, const Dialect& aDialect) {
    const std::string lText = aConfig.Get(Setting::kTransports);
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
    ReadText(aConfig, Setting::kUseLocalIP, mUseLocalIP);
    ReadNumber(aConfig, Setting::kTimeOutAfter, mTimeOutAfter);
    PLAYER_ASSERT(0 != mTimeOutAfter);
    ReadText(aConfig, Setting::kUseDeviceStr, mUseDeviceStr);
    ReadText(aConfig, Setting::kUseUserAgentNameStr, mUseUserAgentNameStr);
    ReadText(aConfig, Setting::kUseUserAgentVersionStr, mUseUserAgentVersionStr);
    ReadText(aConfig, Setting::kUseProxy, mUseProxy);
    ReadText(aConfig, Setting::kSendProxyAuth, mSendProxyAuth);
    ReadText(aConfig, Setting::kSendNetworkType, mSendNetworkType);
    ReadText(aConfig, Setting::kSendReferrer, mSendReferrer);
    ReadText(aConfig, Setting::kSendWAPProfile, mSendWAPProfile);
    ReadNumber(aConfig, Setting::kTargetRTPBuffer, mTargetRTPBuffer);
    ReadNumber(aConfig, Setting::kUseUDPPortsFrom, mUseUDPPortsFrom);
    mUseUDPPortsFrom &= ~1U;
    PLAYER_ASSERT(mUseUDPPortsFrom < 65536);
    ReadNumber(aConfig, Setting::kUseUDPPortsTo, mUseUDPPortsTo);
    mUseUDPPortsTo += mUseUDPPortsTo & 1U;
    PLAYER_ASSERT(mUseUDPPortsTo <= 65536 && mUseUDPPortsTo > mUseUDPPortsFrom);
    UInt lTimeOutRTPAfter = 20;
    ReadNumber(aConfig, Setting::kTimeOutRTPAfter, lTimeOutRTPAfter);
    mTimeOutRTPAfter = Time(lTimeOutRTPAfter, 1);
    mUseInterleavedRTP =
        0 != static_cast<int>(std::strtoll(aConfig.Get(Setting::kUseInterleavedRTP).c_str(), nullptr, 10));
    mDialect = &Dialect::Named(aConfig.Get(Setting::kProfile));
    ReadText(aConfig, Setting::kUserName, mUserName);
    ReadText(aConfig, Setting::kPassword, mPassword);
    mTransports = ReadTransports(aConfig, mUseInterleavedRTP, *mDialect);
    ReadNumber(aConfig, Setting::kUDPBuffer, mUDPBuffer);
    ReadNumber(aConfig, Setting::kUDPPatience, mUDPPatience);
    ReadText(aConfig, Setting::kTLSAuthorities, mTLSAuthorities);
    ReadNumber(aConfig, Setting::kQueueLimit, mQueueLimit);
}

}  // namespace Player::MediaSessions
