#include "commands/Configuration.hpp"

#include "Failure.hpp"
#include "Player/String.hpp"

namespace Virertsp {

namespace {

struct Setting {
    const char* mKey;
    const char* mMeaning;
};

constexpr char kTimeOut[] = "RTSP:TimeOutAfter";
constexpr char kPortsFrom[] = "RTSP:UseUDPPortsFrom";
constexpr char kPortsTo[] = "RTSP:UseUDPPortsTo";
constexpr unsigned kDefaultPortsFrom = 49152;
constexpr unsigned kDefaultPortsTo = 65536;
constexpr unsigned kDefaultTimeOut = 10;

constexpr Setting kSettings[] = {
    {"RTSP:UseLocalIP", "local address to receive at"},
    {kTimeOut, "seconds to wait for the server (10)"},
    {"RTSP:TimeOutRTPAfter", "seconds without media that end a track (20)"},
    {"RTSP:TargetRTPBuffer", "seconds of media to buffer before playing (3)"},
    {kPortsFrom, "first local UDP port (49152)"},
    {kPortsTo, "end of the local UDP ports (65536)"},
    {"RTSP:UseInterleavedRTP", "1: media over the RTSP connection (0)"},
    {"RTSP:Profile", "modern or classic (modern)"},
    {"RTSP:Transports", "udp, tcp or udp,tcp"},
    {"RTSP:UDPBuffer", "bytes of each UDP socket's buffer"},
    {"RTSP:UserName", "user, for servers that ask"},
    {"RTSP:Password", "password, for servers that ask"},
    {"RTSP:UseProxy", "RTSP proxy, HOST or HOST:PORT"},
    {"RTSP:SendProxyAuth", "value of Proxy-Authorization"},
    {"RTSP:SendNetworkType", "value of X-Network-Type"},
    {"RTSP:SendReferrer", "value of Referrer"},
    {"RTSP:SendWAPProfile", "value of X-WAP-Profile"},
    {"RTSP:UseUserAgentNameStr", "product in User-Agent"},
    {"RTSP:UseUserAgentVersionStr", "version in User-Agent"},
    {"RTSP:UseDeviceStr", "device in User-Agent"},
};

void Take(const std::string& aPair, Values& aValues) {
    const std::size_t lEquals = aPair.find('=');
    if (std::string::npos == lEquals) { throw Failure(kExitUsage, "\"" + aPair + "\" is not KEY=VALUE."); }
    const std::string lKey = aPair.substr(0, lEquals);
    for (const Setting& lSetting : kSettings) {
        if (lKey == lSetting.mKey) {
            aValues[lKey] = aPair.substr(lEquals + 1);
            return;
        }
    }
    throw Failure(kExitUsage, "There is no setting \"" + lKey + "\"; --help lists them.");
}

unsigned Number(const Values& aValues, const char* aKey, unsigned aDefault) {
    const auto lFound = aValues.find(aKey);
    return aValues.end() == lFound ? aDefault : Player::DecimalToUInt(lFound->second, aDefault);
}

/// What the library asserts is ours to refuse.
void Check(const Values& aValues) {
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

std::string ConfigurationHelp() {
    std::string lHelp = "Keys of --config:\n";
    for (const Setting& lSetting : kSettings) {
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
