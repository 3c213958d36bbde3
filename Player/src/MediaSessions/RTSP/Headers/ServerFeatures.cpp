#include "MediaSessions/RTSP/Headers/ServerFeatures.hpp"

namespace Player::MediaSessions {

namespace {

bool Contains(const std::string& aText, const char* aWord) {
    return std::string::npos != aText.find(aWord);
}

}  // namespace

ServerFeatures ServerFeatures::With(const Headers& aHeaders) const {
    ServerFeatures lFeatures = *this;
    const auto lSupported = aHeaders.find("Supported");
    if (lSupported != aHeaders.end()) {
        lFeatures.mPipelined = Contains(lSupported->second, "3gpp-pipelined");
        lFeatures.mSwitchSupported = Contains(lSupported->second, "3gpp-switch-req-sdp");
    }
    const auto lServer = aHeaders.find("Server");
    if (lServer != aHeaders.end()) { lFeatures.mServerIsStrand = Contains(lServer->second, "Quenra Strand"); }
    return lFeatures;
}

}  // namespace Player::MediaSessions
