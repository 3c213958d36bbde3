#include "Dialogue.hpp"

#include "Player/String.hpp"

namespace Virertsp {

void Dialogue::TakeRequest(const std::string& aMethod, const std::string& aURL, Clock::time_point aNow) {
    Exchange lExchange;
    lExchange.mMethod = aMethod;
    lExchange.mURL = aURL;
    lExchange.mSent = aNow;
    mExchanges.push_back(lExchange);
}

void Dialogue::TakeResponse(Player::UInt aStatus, const std::string& aReason, const std::string& aServer,
                            Clock::time_point aNow) {
    if (mAwaited >= mExchanges.size()) { return; }
    // Several requests may be under way; they are answered in their order.
    Exchange& lExchange = mExchanges[mAwaited++];
    if (!aServer.empty()) { mServer = aServer; }
    // 0: the connection ended instead.
    if (0 == aStatus) { return; }
    lExchange.mStatus = Player::DecimalToUInt(Player::StringWithFormat("%03x", aStatus));
    lExchange.mReason = aReason;
    lExchange.mRoundTrip = aNow - lExchange.mSent;
}

}  // namespace Virertsp
