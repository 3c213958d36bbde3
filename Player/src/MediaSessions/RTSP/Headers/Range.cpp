#include "MediaSessions/RTSP/Headers/Range.hpp"

#include <map>
#include <vector>

#include "Player/String.hpp"

namespace Player::MediaSessions {

namespace {

std::optional<Time> TimeIn(const std::string& aText) {
    if (aText.empty()) { return std::nullopt; }
    return Time::WithDecimalCString(aText.c_str(), false);
}

}  // namespace

std::optional<Range> Range::Parse(const std::string& aValue) {
    std::map<std::string, std::string> lUnits;
    SplitToMap(aValue, ';', '=', lUnits);
    const auto lPlayTime = lUnits.find("npt");
    if (lPlayTime == lUnits.end()) { return std::nullopt; }

    std::vector<std::string> lTexts;
    Split(lPlayTime->second, '-', lTexts);
    lTexts.resize(2);
    Range lRange;
    lRange.mStart = TimeIn(lTexts[0]);
    lRange.mEnd = TimeIn(lTexts[1]);
    return lRange;
}

}  // namespace Player::MediaSessions
