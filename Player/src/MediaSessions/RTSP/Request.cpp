#include "MediaSessions/RTSP/Request.hpp"

#include <iomanip>
#include <locale>
#include <sstream>

#include "Player/String.hpp"

namespace Player::MediaSessions {

namespace {

/// Six decimals and always a point: printf would use the application's locale.
std::string Seconds(Time aTime) {
    std::ostringstream lText;
    lText.imbue(std::locale::classic());
    lText << std::fixed << std::setprecision(6) << aTime.ToSeconds();
    return lText.str();
}

}  // namespace

Request::Request(const char* aMethod, const std::string& aURL, UInt aCSeq, const Configuration& aConfig)
    : mConfig(aConfig) {
    Line(StringWithFormat("%s %s RTSP/1.0", aMethod, aURL.c_str()));
    Line(StringWithFormat("CSeq: %u", aCSeq));
    Line(StringWithFormat("User-Agent: %s/%s (Build/Unknown; Platform/Linux; Device/%s; )",
                          aConfig.mUseUserAgentNameStr.c_str(), aConfig.mUseUserAgentVersionStr.c_str(),
                          aConfig.mUseDeviceStr.c_str()));
}

Request& Request::Line(const std::string& aLine) {
    mLines.push_back(aLine);
    return *this;
}

Request& Request::Optional(const char* aName, const std::string& aValue) {
    return aValue.empty() ? *this : Line(std::string(aName) + ": " + aValue);
}

Request& Request::RangeFrom(Time aFrom) {
    return Line("Range: npt=" + Seconds(aFrom) + "-");
}

std::vector<std::string> Request::Lines() const {
    Request lWhole(*this);
    lWhole.Optional("X-Network-Type", mConfig.mSendNetworkType);
    lWhole.Optional("Referrer", mConfig.mSendReferrer);
    lWhole.Optional("X-WAP-Profile", mConfig.mSendWAPProfile);
    return lWhole.mLines;
}

}  // namespace Player::MediaSessions
