#include "commands/Configuration.hpp"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "Failure.hpp"
#include "Player/Keys.hpp"
#include "Player/String.hpp"

namespace Virertsp {

namespace {

namespace Setting = Player::Setting;

struct Option {
    const char* mKey;
    const char* mMeaning;
};

constexpr const char* kTimeOut = Setting::kTimeOutAfter;
constexpr const char* kPortsFrom = Setting::kUseUDPPortsFrom;
constexpr const char* kPortsTo = Setting::kUseUDPPortsTo;
constexpr unsigned kDefaultPortsFrom = 49152;
constexpr unsigned kDefaultPortsTo = 65536;
constexpr unsigned kDefaultTimeOut = 10;

constexpr Option kSettings[] = {
    {Setting::kUseLocalIP, "local address to receive at"},
    {kTimeOut, "seconds to wait for the server (10)"},
    {Setting::kTimeOutRTPAfter, "seconds without media that end a track (20)"},
    {Setting::kTargetRTPBuffer, "seconds of media to buffer before playing (3)"},
    {kPortsFrom, "first local UDP port (49152)"},
    {kPortsTo, "end of the local UDP ports (65536)"},
    {Setting::kUseInterleavedRTP, "1: media over the RTSP connection (0)"},
    {Setting::kProfile, "modern or classic (modern)"},
    {Setting::kTransports, "udp, tcp or udp,tcp"},
    {Setting::kUDPBuffer, "bytes of each UDP socket's buffer"},
    {Setting::kTLSAuthorities, "file of certificates that vouch for servers"},
    {Setting::kUserName, "user, for servers that ask"},
    {Setting::kPassword, "password, for servers that ask"},
    {Setting::kUseProxy, "RTSP proxy, HOST or HOST:PORT"},
    {Setting::kSendProxyAuth, "value of Proxy-Authorization"},
    {Setting::kSendNetworkType, "value of X-Network-Type"},
    {Setting::kSendReferrer, "value of Referrer"},
    {Setting::kSendWAPProfile, "value of X-WAP-Profile"},
    {Setting::kUseUserAgentNameStr, "product in User-Agent"},
    {Setting::kUseUserAgentVersionStr, "version in User-Agent"},
    {Setting::kUseDeviceStr, "device in User-Agent"},
};

constexpr std::string_view kNumbers[] = {
    Setting::kTimeOutAfter,  Setting::kTimeOutRTPAfter,   Setting::kTargetRTPBuffer, Setting::kUseUDPPortsFrom,
    Setting::kUseUDPPortsTo, Setting::kUseInterleavedRTP, Setting::kUDPBuffer,
};

void Take(const std::string& aPair, Values& aValues) {
    const std::size_t lEquals = aPair.find('=');
    if (std::string::npos == lEquals) { throw Failure(kExitUsage, "\"" + aPair + "\" is not KEY=VALUE."); }
    const std::string lKey = aPair.substr(0, lEquals);
    for (const Option& lSetting : kSettings) {
        if (lKey == lSetting.mKey) {
            aValues[lKey] = aPair.substr(lEquals + 1);
            return;
        }
    }
    throw Failure(kExitUsage, "There is no setting \"" + lKey + "\"; --help lists them.");
}

/// The library takes its default for these and says so in a report alone, which is seldom shown.
void CheckSpelling(const Values& aValues) {
    for (const auto& lValue : aValues) {
        const std::string& lText = lValue.second;
        if (Setting::kProfile == lValue.first && !lText.empty() && "modern" != lText && "classic" != lText) {
            throw Failure(kExitUsage, lValue.first + " takes modern or classic.");
        }
        const bool lIsNumber = std::end(kNumbers) != std::find(std::begin(kNumbers), std::end(kNumbers), lValue.first);
        if (lIsNumber && std::string::npos != lText.find_first_not_of("0123456789")) {
            throw Failure(kExitUsage, lValue.first + " takes a whole number.");
        }
    }
}

unsigned Number(const Values& aValues, const char* aKey, unsigned aDefault) {
    const auto lFound = aValues.find(aKey);
    return aValues.end() == lFound ? aDefault : Player::DecimalToUInt(lFound->second, aDefault);
}

/// What the library asserts is ours to refuse.
void Check(const Values& aValues) {
    CheckSpelling(aValues);
    if (0 == Number(aValues, kTimeOut, kDefaultTimeOut)) {
        throw Failure(kExitUsage, std::string(kTimeOut) + " must not be 0.");
    }
    // The range is widened to even ports.
    const unsigned lFrom = Number(aValues, kPortsFrom, kDefaultPortsFrom) & ~1U;
    const unsigned lTo = Number(aValues, kPortsTo, kDefaultPortsTo);
    if (lFrom >= kDefaultPortsTo || lTo > kDefaultPortsTo || lTo <= lFrom) {
        throw Failure(kExitUsage, "The local UDP ports must be a range within 0 to 65536.");
    }
}

}  // namespace

std::vector<std::pair<std::string, std::string>> ConfigurationKeys() {
    std::vector<std::pair<std::string, std::string>> lKeys;
    for (const Option& lSetting : kSettings) {
        lKeys.emplace_back(lSetting.mKey, lSetting.mMeaning);
    }
    return lKeys;
}

std::string ConfigurationHelp() {
    std::string lHelp = "Keys of --config:\n";
    for (const Option& lSetting : kSettings) {
        lHelp += Player::StringWithFormat("  %-29s %s\n", lSetting.mKey, lSetting.mMeaning);
    }
    return lHelp;
}

void Configure(Player::MediaHandler& aPlayer, Values aValues, const char* const* aPairs) {
    for (; nullptr != aPairs && nullptr != *aPairs; ++aPairs) {
        Take(*aPairs, aValues);
    }
    Check(aValues);
    for (const auto& lValue : aValues) {
        aPlayer.SetConfigParam(lValue.first, lValue.second);
    }
}

}  // namespace Virertsp
