#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "Player/Types.hpp"

namespace Virertsp {

/// The requests of a session and their responses.
class Dialogue {
public:
    using Clock = std::chrono::steady_clock;

    struct Exchange {
        std::string mMethod;
        std::string mURL;
        /// 0 when no answer came.
        unsigned mStatus = 0;
        std::string mReason;
        Clock::time_point mSent;
        /// From the request to the whole answer.
        Clock::duration mRoundTrip{0};
    };

    void TakeRequest(const std::string& aMethod, const std::string& aURL, Clock::time_point aNow);
    /// As `Player::MediaHandler::ResponseReceived`.
    void TakeResponse(Player::UInt aStatus, const std::string& aReason, const std::string& aServer,
                      Clock::time_point aNow);
    /// After a failure: the answers that are still awaited will not come.
    void GiveUp() { mAwaited = mExchanges.size(); }

    /// In the order in which the requests were sent.
    const std::vector<Exchange>& Exchanges() const { return mExchanges; }
    /// The last answer names another server or another place, to which no request has gone yet.
    bool IsRedirected() const { return !mExchanges.empty() && 3 == mExchanges.back().mStatus / 100; }
    /// What the server calls itself; empty when it does not.
    const std::string& Server() const { return mServer; }

private:
    std::string mServer;
    std::vector<Exchange> mExchanges;
    /// The first exchange whose answer may still come.
    std::size_t mAwaited = 0;
};

}  // namespace Virertsp
