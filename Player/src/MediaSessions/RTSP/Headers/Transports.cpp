#include "MediaSessions/RTSP/Headers/Transports.hpp"

#include <strings.h>

#include <algorithm>
#include <vector>

#include "Player/String.hpp"

namespace Player::MediaSessions {

Transports Transports::Parse(const std::string& aText) {
    std::string lText = aText;
    std::replace(lText.begin(), lText.end(), '+', ',');
    std::vector<std::string> lWords;
    Split(lText, ',', lWords);
    const auto lNames = [&lWords](const char* aName) {
        return std::any_of(lWords.begin(), lWords.end(),
                           [aName](const std::string& aWord) { return 0 == strcasecmp(aWord.c_str(), aName); });
    };
    return {lNames("udp"), lNames("tcp")};
}

}  // namespace Player::MediaSessions
