#include "Dialogue.hpp"

#include <cstdio>

#include "Player/String.hpp"

namespace Virertsp {

namespace {

constexpr char kRequest[] = "Sending RTSP ";
constexpr char kOfRequest[] = " for URL: ";
constexpr char kResponse[] = "Got RTSP response: ";
constexpr char kServer[] = "RTSP server: ";

/// Takes the words in front off the text, if it begins with them.
bool TakeOff(const char* aWords, std::string& aText) {
    const std::string lWords = aWords;
    if (0 != aText.compare(0, lWords.size(), lWords)) { return false; }
    aText.erase(0, lWords.size());
    return true;
}

}  // namespace

void Dialogue::Report(const char* aFile, Player::UInt aLine, Player::Severity aSeverity, const char* aMessage) {
    Take(aMessage, Clock::now());
    if (!mEcho) { return; }
    std::fprintf(stderr, "<%s: %s:%4u> %s\n", Player::CStrWithSeverity(aSeverity), Player::RelativizeFile(aFile), aLine,
                 aMessage);
}

void Dialogue::Take(const std::string& aMessage, Clock::time_point aNow) {
    std::string lText = aMessage;
    if (TakeOff(kRequest, lText)) {
        TakeRequest(lText, aNow);
    } else if (TakeOff(kResponse, lText)) {
        TakeResponse(lText, aNow);
    } else if (TakeOff(kServer, lText)) {
        mServer = lText;
    }
}

void Dialogue::TakeRequest(const std::string& aText, Clock::time_point aNow) {
    const std::size_t lEnd = aText.find(kOfRequest);
    // Answers to requests of the server are sent, too.
    if (std::string::npos == lEnd) { return; }
    Exchange lExchange;
    lExchange.mMethod = aText.substr(0, lEnd);
    lExchange.mURL = aText.substr(lEnd + sizeof(kOfRequest) - 1);
    lExchange.mURL.erase(lExchange.mURL.find_last_not_of(' ') + 1);
    lExchange.mSent = aNow;
    mExchanges.push_back(lExchange);
}

void Dialogue::TakeResponse(const std::string& aText, Clock::time_point aNow) {
    if (mAwaited >= mExchanges.size()) { return; }
    // Several requests may be under way; they are answered in their order.
    Exchange& lExchange = mExchanges[mAwaited++];
    const unsigned lStatus = Player::DecimalToUInt(aText);
    // That is how the library reports a connection that ended instead.
    if (0 == lStatus) { return; }
    lExchange.mStatus = lStatus;
    const std::size_t lReason = aText.find(' ');
    if (std::string::npos != lReason) { lExchange.mReason = aText.substr(lReason + 1); }
    lExchange.mRoundTrip = aNow - lExchange.mSent;
}

}  // namespace Virertsp
