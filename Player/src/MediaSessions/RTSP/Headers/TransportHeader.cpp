#include "MediaSessions/RTSP/Headers/TransportHeader.hpp"

#include <map>

#include "Player/String.hpp"

namespace Player::MediaSessions {

namespace {

/// The first two ports of a pair such as "6970-6971"; a server may append more.
std::string FirstTwoPorts(const std::string& aPorts) {
    const std::size_t lFirst = aPorts.find('-');
    return std::string::npos == lFirst ? aPorts : aPorts.substr(0, aPorts.find('-', lFirst + 1));
}

/// "[::1]" is found for "::1".
std::string WithoutBrackets(const std::string& aAddress) {
    const bool lHasBrackets = aAddress.size() > 2 && '[' == aAddress.front() && ']' == aAddress.back();
    return lHasBrackets ? aAddress.substr(1, aAddress.size() - 2) : aAddress;
}

}  // namespace

TransportHeader TransportHeader::Parse(const std::string& aValue) {
    std::map<std::string, std::string> lParams;
    SplitToMap(aValue, ';', '=', lParams);
    TransportHeader lHeader;
    const auto lWith = [&lParams](const char* aKey, auto aAction) {
        const auto lParam = lParams.find(aKey);
        if (lParam != lParams.end()) { aAction(lParam->second); }
    };
    lWith("ssrc", [&](const std::string& aText) { lHeader.mSSRC = HexToUInt(aText); });
    lWith("seq", [&](const std::string& aText) { lHeader.mSeq = static_cast<unsigned short>(DecimalToUInt(aText)); });
    lWith("rtptime", [&](const std::string& aText) { lHeader.mRTPTime = DecimalToUInt(aText); });
    lWith("source", [&](const std::string& aText) { lHeader.mSource = WithoutBrackets(aText); });
    lWith("server_port", [&](const std::string& aText) { lHeader.mServerPorts = FirstTwoPorts(aText); });
    lWith("interleaved", [&](const std::string& aText) { lHeader.mChannels = aText; });
    lHeader.mIsMulticast = 0 != lParams.count("multicast") && 0 == lParams.count("unicast");
    return lHeader;
}

}  // namespace Player::MediaSessions
