#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "Player/Report.hpp"

namespace Virertsp {

/// The requests of a session and their answers, as the library reports them. One thread at a time.
class Dialogue : public Player::Reporter {
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

    /// `aEcho`: the reports go to standard error as well.
    explicit Dialogue(bool aEcho) : mEcho(aEcho) {}

    void Report(const char* aFile, Player::UInt aLine, Player::Severity aSeverity, const char* aMessage) override;
    /// Takes one report at a given time.
    void Take(const std::string& aMessage, Clock::time_point aNow);
    /// After a failure: the answers that are still awaited will not come.
    void GiveUp() { mAwaited = mExchanges.size(); }

    /// In the order in which the requests were sent.
    const std::vector<Exchange>& Exchanges() const { return mExchanges; }
    /// What the server calls itself; empty when it does not.
    const std::string& Server() const { return mServer; }

private:
    void TakeRequest(const std::string& aText, Clock::time_point aNow);
    void TakeResponse(const std::string& aText, Clock::time_point aNow);

    bool mEcho;
    std::string mServer;
    std::vector<Exchange> mExchanges;
    /// The first exchange whose answer may still come.
    std::size_t mAwaited = 0;
};

}  // namespace Virertsp
